#pragma once

#include "ansicht/Baum.hpp"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// Every action that the panel offers right now, in its order: of a switch the one that would change it, of a
/// choice each value that is not chosen. Pure.
struct Angebot {
    Aktion aktion;
    std::string text; ///< the control's own text

    bool operator==(const Angebot&) const = default;
};
[[nodiscard]] std::vector<Angebot> angebote(const Baum& baum);

/// The line by which an action is asked for in the terminal.
[[nodiscard]] std::string befehl(const Aktion& aktion);

/// What came of a typed line: the action, or a German answer why there is none.
struct Verstanden {
    std::optional<Aktion> aktion;
    std::string antwort;
};

/// Reads a line against the panel as it is shown now. Pure.
[[nodiscard]] Verstanden verstehe(std::string_view zeile, const Baum& baum);

/// The panel as text, a line per element and below it every control with its command. Ends with a line end.
/// `farbig`: with the terminal's colours. Pure.
[[nodiscard]] std::string alsText(const Baum& baum, bool farbig);

/// Draws panels to a terminal in place, or one below the other where there is no terminal. Main queue only.
class Terminaltafel {
public:
    explicit Terminaltafel(std::FILE* ausgabe);

    /// Does nothing when this tree is drawn already.
    void zeichne(const Baum& baum);

    /// Says something to the user that is not part of the panel.
    void sage(const std::string& text);

private:
    std::FILE* ausgabe_;
    bool terminal_;
    Baum gezeichnet_;
    std::string gesagt_;
};

} // namespace mobilsteg
