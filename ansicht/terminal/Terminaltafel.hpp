#pragma once

#include "ansicht/Baum.hpp"

#include <cstdio>
#include <string>

namespace mobilsteg {

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
