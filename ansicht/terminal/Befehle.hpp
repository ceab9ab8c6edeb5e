#pragma once

#include "ansicht/Baum.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// The line by which an action is asked for in the terminal.
[[nodiscard]] std::string befehl(const Aktion& aktion);

/// What came of a typed line: the action, or a German answer why there is none.
struct Verstanden {
    std::optional<Aktion> aktion;
    std::string antwort;
};

/// Reads a line against the panel as it is shown now. Pure.
[[nodiscard]] Verstanden verstehe(std::string_view zeile, const Baum& baum);

} // namespace mobilsteg
