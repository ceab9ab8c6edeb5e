#include "plattform/Text.hpp"

#include <algorithm>
#include <array>
#include <random>

namespace mobilsteg {

namespace {

constexpr std::string_view ersatzzeichen = "\xEF\xBF\xBD";

bool istFolgebyte(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

struct Folge {
    std::size_t laenge; ///< bytes that belong together
    bool gueltig;
};

/// The sequence that begins `rest`. An invalid one is as long as the longest prefix of something valid, so
/// that a cut-off character becomes one replacement and not several.
Folge naechsteFolge(std::string_view rest) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    const unsigned char erstes = byte(0);
    if (erstes < 0x80)
        return {1, true};
    if (erstes < 0xC2 || erstes > 0xF4)
        return {1, false};
    const std::size_t soll = erstes < 0xE0 ? 2 : (erstes < 0xF0 ? 3 : 4);
    // What lies outside is overlong, half a surrogate pair or beyond the last character.
    const unsigned char unten = erstes == 0xE0 ? 0xA0 : (erstes == 0xF0 ? 0x90 : 0x80);
    const unsigned char oben = erstes == 0xED ? 0x9F : (erstes == 0xF4 ? 0x8F : 0xBF);
    if (rest.size() < 2 || byte(1) < unten || byte(1) > oben)
        return {1, false};
    std::size_t laenge = 2;
    while (laenge < soll && laenge < rest.size() && istFolgebyte(rest[laenge]))
        ++laenge;
    return {laenge, laenge == soll};
}

constexpr std::array<std::string_view, 25> weissraum = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\xC2\x85", "\xC2\xA0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",   "\u2007",   "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

std::size_t weissraumAmAnfang(std::string_view text) {
    for (const auto stueck : weissraum)
        if (text.starts_with(stueck))
            return stueck.size();
    return 0;
}

std::size_t weissraumAmEnde(std::string_view text) {
    for (const auto stueck : weissraum)
        if (text.ends_with(stueck))
            return stueck.size();
    return 0;
}

/// One character: does it end a line, drive a terminal, or turn the direction of what follows?
bool steuert(std::string_view zeichen) {
    if (zeichen.size() == 1)
        return static_cast<unsigned char>(zeichen[0]) < 0x20 || zeichen[0] == 0x7F;
    const auto in = [&](std::string_view von, std::string_view bis) {
        return von <= zeichen && zeichen <= bis;
    };
    return in("\xC2\x80", "\xC2\x9F") || zeichen == "\u061C" || in("\u200E", "\u200F") ||
           in("\u2028", "\u202E") || in("\u2066", "\u2069");
}

} // namespace

std::vector<std::string_view> teile(std::string_view text, char trenner) {
    std::vector<std::string_view> stuecke;
    std::size_t anfang = 0;
    while (anfang < text.size()) {
        const std::size_t ende = std::min(text.find(trenner, anfang), text.size());
        if (ende > anfang)
            stuecke.push_back(text.substr(anfang, ende - anfang));
        anfang = ende + 1;
    }
    return stuecke;
}

std::string_view beschnitten(std::string_view text) {
    while (const auto laenge = weissraumAmAnfang(text))
        text.remove_prefix(laenge);
    while (const auto laenge = weissraumAmEnde(text))
        text.remove_suffix(laenge);
    return text;
}

std::string ohneWeissraum(std::string_view text) {
    std::string rest;
    while (!text.empty()) {
        const auto laenge = weissraumAmAnfang(text);
        if (laenge == 0)
            rest += text.front();
        text.remove_prefix(std::max<std::size_t>(laenge, 1));
    }
    return rest;
}

std::string_view ohneRandblanks(std::string_view text) {
    const std::size_t anfang = text.find_first_not_of(" \t");
    if (anfang == std::string_view::npos)
        return {};
    return text.substr(anfang, text.find_last_not_of(" \t") - anfang + 1);
}

std::string alsUtf8(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const Folge folge = naechsteFolge(bytes);
        text += folge.gueltig ? bytes.substr(0, folge.laenge) : ersatzzeichen;
        bytes.remove_prefix(folge.laenge);
    }
    return text;
}

std::string_view ersteZeichen(std::string_view text, std::size_t anzahl) {
    std::size_t i = 0;
    while (i < text.size() && (istFolgebyte(text[i]) || anzahl-- > 0))
        ++i;
    return text.substr(0, i);
}

std::string einzeilig(std::string_view text, std::size_t hoechstens) {
    const std::string gueltig = alsUtf8(text);
    std::string_view rest = ersteZeichen(gueltig, hoechstens);
    std::string zeile;
    while (!rest.empty()) {
        const auto zeichen = rest.substr(0, naechsteFolge(rest).laenge);
        zeile += steuert(zeichen) ? " " : zeichen;
        rest.remove_prefix(zeichen.size());
    }
    return zeile;
}

std::size_t zeichenzahl(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), istFolgebyte));
}

std::string inGrossbuchstaben(std::string_view text) {
    std::string gross(text);
    for (char& c : gross)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return gross;
}

std::string inKleinbuchstaben(std::string_view text) {
    std::string klein(text);
    for (char& c : klein)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return klein;
}

std::size_t klammertiefe(std::string_view json) {
    std::size_t tiefe = 0;
    std::size_t tiefste = 0;
    bool imText = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (c == '"')
            imText = !imText;
        else if (imText)
            i += c == '\\' ? 1 : 0;
        else if (c == '[' || c == '{')
            tiefste = std::max(tiefste, ++tiefe);
        else if ((c == ']' || c == '}') && tiefe > 0)
            --tiefe;
    }
    return tiefste;
}

std::string verbunden(const std::vector<std::string>& stuecke, std::string_view dazwischen) {
    std::string text;
    for (const auto& stueck : stuecke) {
        if (&stueck != &stuecke.front())
            text += dazwischen;
        text += stueck;
    }
    return text;
}

std::string neueKennung() {
    std::random_device quelle;
    std::string kennung = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    constexpr std::string_view hex = "0123456789abcdef";
    for (char& stelle : kennung) {
        if (stelle == 'x')
            stelle = hex[quelle() % 16];
        else if (stelle == 'y')
            stelle = hex[8 + quelle() % 4];
    }
    return kennung;
}

} // namespace mobilsteg
