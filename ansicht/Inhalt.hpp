#pragma once

#include "ansicht/Baum.hpp"
#include "kabel/Zustand.hpp"

namespace mobilsteg {

/// The whole panel for a state. `bundleB2B`: this is the edition for company VPNs. Pure.
[[nodiscard]] Baum inhalt(const Zustand& zustand, bool bundleB2B);

/// The part of it that shows which VPNs are carried. Pure.
[[nodiscard]] Baum vpnBlock(const Zustand& zustand);

} // namespace mobilsteg
