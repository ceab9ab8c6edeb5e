#pragma once

#include "ansicht/Baum.hpp"
#include "ansicht/terminal/Schirm.hpp"
#include "plattform/Anschluesse.hpp"

namespace mobilsteg {

/// The panel as text, a line per element and below it every control with its command; a question with its
/// numbered buttons; one line. They end with a line end. Pure.
[[nodiscard]] std::string alsText(const Baum& baum, Schriftbild bild = {});
[[nodiscard]] std::string alsText(const Frage& frage, Schriftbild bild);
[[nodiscard]] std::string alsText(const std::string& meldung, Schriftbild bild, Farbe farbe = Farbe::normal);

/// The lines of `text`, at most `hoehe`. Of a longer text: what stands before its first rule, of the rest the
/// lines from the `ab`th on, and one that counts the others; an `ab` too large is lowered. Pure.
[[nodiscard]] std::vector<std::string> ausschnitt(const std::string& text, std::size_t hoehe,
                                                  std::size_t& ab);

/// Shows panels, questions and answers: on the screen, or one below the other where there is none. Main queue
/// only.
class Terminaltafel {
public:
    /// `schirm`: null where there is none.
    Terminaltafel(std::FILE* ausgabe, Schirm* schirm) : ausgabe_(ausgabe), schirm_(schirm) {}

    /// Does nothing when this tree is drawn already.
    void zeichne(const Baum& baum);

    /// Shows the question; null: the panel again.
    void frage(const Frage* frage);

    /// Says something to the user that is not part of the panel.
    void sage(const std::string& text);

private:
    void zeigePanel();
    void zeige(Schirm::Text text, std::vector<std::string> vorschlaege);

    std::FILE* ausgabe_;
    Schirm* schirm_;
    Baum gezeichnet_;
};

} // namespace mobilsteg
