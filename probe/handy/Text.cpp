#include "probe/handy/Text.hpp"

namespace mobilsteg::probehandy {

namespace {

constexpr std::string_view leerzeichen = " \t\r\n";

std::optional<unsigned> hexWert(char zeichen) {
    unsigned wert = 0;
    const auto [ende, fehler] = std::from_chars(&zeichen, &zeichen + 1, wert, 16);
    return fehler == std::errc() && ende == &zeichen + 1 ? std::optional(wert) : std::nullopt;
}

/// The bytes of the character at the front; 0 if it is not one, or one that would upset a terminal.
std::size_t zeichenlaenge(std::string_view text) {
    const auto erstes = static_cast<unsigned char>(text.front());
    if (erstes < 0x80) {
        return erstes >= 0x20 && erstes != 0x7f ? 1 : 0;
    }
    if (erstes < 0xc2 || erstes > 0xf4) {
        return 0;
    }
    const std::size_t laenge = erstes < 0xe0 ? 2 : erstes < 0xf0 ? 3 : 4;
    for (std::size_t i = 1; i < laenge; ++i) {
        if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xc0U) != 0x80U) {
            return 0;
        }
    }
    return laenge;
}

} // namespace

std::string_view ohneRand(std::string_view text) {
    const auto anfang = text.find_first_not_of(leerzeichen);
    if (anfang == std::string_view::npos) {
        return {};
    }
    return text.substr(anfang, text.find_last_not_of(leerzeichen) - anfang + 1);
}

std::string_view erstesWort(std::string_view& text) {
    text = ohneRand(text);
    const std::string_view wort = text.substr(0, text.find_first_of(leerzeichen));
    text = ohneRand(text.substr(wort.size()));
    return wort;
}

std::string klein(std::string_view text) {
    std::string ergebnis(text);
    for (char& zeichen : ergebnis) {
        if (zeichen >= 'A' && zeichen <= 'Z') {
            zeichen = static_cast<char>(zeichen - 'A' + 'a');
        }
    }
    return ergebnis;
}

std::optional<std::string> entziffereProzent(std::string_view text) {
    std::string ergebnis;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            ergebnis.push_back(text[i]);
            continue;
        }
        if (text.size() - i < 3) {
            return std::nullopt;
        }
        const auto hoch = hexWert(text[i + 1]);
        const auto tief = hexWert(text[i + 2]);
        if (!hoch || !tief) {
            return std::nullopt;
        }
        ergebnis.push_back(static_cast<char>(static_cast<unsigned char>(*hoch * 16 + *tief)));
        i += 2;
    }
    return ergebnis;
}

std::string zeigbar(std::string_view text) {
    constexpr std::size_t hoechstens = 60;
    std::string ergebnis;
    while (!text.empty() && ergebnis.size() < hoechstens) {
        const std::size_t laenge = zeichenlaenge(text);
        ergebnis += laenge == 0 ? "?" : text.substr(0, laenge);
        text.remove_prefix(laenge == 0 ? 1 : laenge);
    }
    return text.empty() ? ergebnis : ergebnis + "…";
}

} // namespace mobilsteg::probehandy
