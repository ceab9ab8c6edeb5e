#include "ansicht/terminal/Terminaldialog.hpp"

#include "plattform/Text.hpp"

#include <string>

namespace mobilsteg {

int Terminaldialog::frage(const Frage& frage) {
    std::string text = frage.nachricht + "\n" + frage.erlaeuterung + "\n";
    for (std::size_t i = 0; i < frage.knoepfe.size(); ++i)
        text += std::to_string(i + 1) + ") " + frage.knoepfe[i] + "\n";
    std::fputs((text + "\n").c_str(), ausgabe_);
    std::fflush(ausgabe_);

    // Whatever else was typed is an answer, too: that of somebody who does not choose the first button.
    const auto zeile = eingabe_.naechste();
    const auto antwort = beschnitten(zeile ? std::string_view(*zeile) : std::string_view());
    for (std::size_t i = 0; i < frage.knoepfe.size(); ++i)
        if (antwort == std::to_string(i + 1) || antwort == frage.knoepfe[i])
            return static_cast<int>(i);
    return -1;
}

} // namespace mobilsteg
