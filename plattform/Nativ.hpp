#pragma once

#include "plattform/Adminskript.hpp"
#include "plattform/Buendel.hpp"
#include "plattform/Einstellungen.hpp"

#include <memory>
#include <optional>
#include <string>

namespace mobilsteg {

// What the system's own libraries give. Only a mac's do; elsewhere everything here is absent, and the
// portable adapters do the work (see Adapter.hpp, which decides).

/// The user's defaults of `bereich`, a reverse-domain identifier.
[[nodiscard]] std::unique_ptr<Einstellungen> nativeEinstellungen(const std::string& bereich);

/// Runs scripts inside this process.
[[nodiscard]] std::unique_ptr<Adminskript> nativesSkript();

/// The package in which this program runs; also absent for a bare executable.
[[nodiscard]] std::optional<Buendel> nativesBuendel();

/// The machine's name as its user typed it, with blanks and umlauts.
[[nodiscard]] std::optional<std::string> nativerRechnername();

} // namespace mobilsteg
