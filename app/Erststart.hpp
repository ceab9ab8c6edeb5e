#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/Einstellungen.hpp"

namespace mobilsteg {

class Kabel;

/// Which profile is it to be?
[[nodiscard]] Frage profilfrage();

/// The welcome to the profile for company VPNs, under the edition's name.
[[nodiscard]] Frage willkommen(const std::string& anzeigename);

/// The questions of the first start: the profile, once, unless the edition or an answer tells it; then, in
/// the profile for company VPNs, the welcome, once. Main queue; blocks until they are answered.
void erststart(Kabel& kabel, Einstellungen& einstellungen, Dialog& dialog);

} // namespace mobilsteg
