#pragma once

#include "plattform/Dialog.hpp"
#include "plattform/Einstellungen.hpp"

namespace mobilsteg {

class Kabel;

/// The questions of the first start: the profile, once, unless the edition or an answer tells it; then, in
/// the profile for company VPNs, the welcome, once. Main queue; blocks until they are answered.
void erststart(Kabel& kabel, Einstellungen& einstellungen, Dialog& dialog);

} // namespace mobilsteg
