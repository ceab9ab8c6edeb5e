#pragma once

#include "ansicht/Baum.hpp"
#include "plattform/Anschluesse.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

// What the user types, without any terminal. All of it is pure.

/// Every action that the panel offers right now, in its order: of a switch the one that would change it, of a
/// choice each value that is not chosen.
struct Angebot {
    Aktion aktion;
    std::string text; ///< the control's own text

    bool operator==(const Angebot&) const = default;
};
[[nodiscard]] std::vector<Angebot> angebote(const Baum& baum);

/// The line by which an action is asked for in the terminal.
[[nodiscard]] std::string befehl(const Aktion& aktion);

/// Lists the commands; so do "help" and "?".
inline constexpr std::string_view hilfebefehl = "hilfe";

/// What came of a typed line: the action, or a German answer why there is none.
struct Verstanden {
    std::optional<Aktion> aktion;
    std::string antwort;
};

/// Reads a line, in any case, against the panel as it is shown now.
[[nodiscard]] Verstanden verstehe(std::string_view zeile, const Baum& baum);

/// Reads a line, in any case, as the answer to a question: a button's number, its text or a beginning that
/// only one has, "ja" or "nein". Absent: it is none of these.
[[nodiscard]] std::optional<int> antwortAuf(const Frage& frage, std::string_view zeile);

/// Tells the user what can be answered.
[[nodiscard]] std::string moeglicheAntworten(const Frage& frage);

} // namespace mobilsteg
