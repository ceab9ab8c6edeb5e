#pragma once

#include "ansicht/Baum.hpp"
#include "kabel/Zustand.hpp"

#include <functional>

namespace mobilsteg {

class Kabel;

/// The whole panel for a state. `bundleB2B`: this is the edition for company VPNs. Pure.
[[nodiscard]] Baum inhalt(const Zustand& zustand, bool bundleB2B);

/// The part of it that shows which VPNs are carried. Pure.
[[nodiscard]] Baum vpnBlock(const Zustand& zustand);

/// Carries the action out on the controller; `beende` asks the program to quit. Main queue only, returns at
/// once.
void fuehreAus(const Aktion& aktion, Kabel& kabel, const std::function<void()>& beende);

} // namespace mobilsteg
