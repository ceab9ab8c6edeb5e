#include "ansicht/terminal/Terminaltafel.hpp"

#include "plattform/Text.hpp"

#include <unistd.h>

#include <algorithm>

namespace mobilsteg {

namespace {

struct Sammler {
    std::vector<Angebot>& liste;

    void operator()(const Schalter& s) const { liste.push_back({{s.was, s.an ? "aus" : "an"}, s.text}); }
    void operator()(const Knopf& k) const { liste.push_back({k.aktion, k.hilfe.empty() ? k.text : k.hilfe}); }
    void operator()(const Wahl& w) const {
        for (const auto& m : w.moeglichkeiten)
            if (m.wert != w.gewaehlt)
                liste.push_back({{w.was, m.wert}, w.bezeichnung + ": " + m.text});
    }
    void operator()(const Reihe& r) const {
        for (const auto& teil : r.teile)
            std::visit(*this, teil.inhalt);
    }
    template <typename Anderes>
    void operator()(const Anderes&) const {}
};

/// Whether `wert` can stand behind the command at all, shown or not.
bool passt(Bedienung was, std::string_view wert) {
    if (was == Bedienung::browser)
        return !wert.empty();
    if (wort(was).werte.empty())
        return wert.empty();
    const auto erlaubt = teile(wort(was).werte, '|');
    return std::find(erlaubt.begin(), erlaubt.end(), wert) != erlaubt.end();
}

std::string gebrauch(Bedienung was) {
    const auto& w = wort(was);
    return std::string(w.wort) + (w.werte.empty() ? "" : " " + std::string(w.werte));
}

constexpr std::size_t breite = 60;

std::string aufgefuellt(const std::string& text, std::size_t spalte) {
    const std::size_t laenge = zeichenzahl(text);
    return text + std::string(laenge < spalte ? spalte - laenge : 0, ' ');
}

const char* farbcode(Farbe farbe) {
    switch (farbe) {
    case Farbe::gruen:
        return "\x1b[32m";
    case Farbe::gelb:
    case Farbe::orange:
        return "\x1b[33m";
    case Farbe::rot:
        return "\x1b[31m";
    case Farbe::sekundaer:
        return "\x1b[2m";
    case Farbe::normal:
        break;
    }
    return "";
}

/// One line never becomes two: a tool's message in the panel may hold anything.
std::string einzeilig(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = ' ';
    return text;
}

const char* symbolzeichen(const std::string& symbol) {
    if (symbol == "shield.slash")
        return "○";
    return symbol == "lock.shield.fill" ? "●" : "✓";
}

class Schreiber {
public:
    Schreiber(std::size_t spalte, bool farbig) : spalte_(spalte), farbig_(farbig) {}

    void operator()(const Kopf& k) { zeile(farbe(k.punkt, "●") + " " + einzeilig(k.titel)); }
    void operator()(const Satz& s) { zeile(farbe(s.farbe, einzeilig(s.text))); }
    void operator()(const Trenner&) {
        std::string strich;
        for (std::size_t i = 0; i < breite; ++i)
            strich += "─";
        zeile(farbe(Farbe::sekundaer, strich));
    }
    void operator()(const Zeile& z) {
        zeile(farbe(Farbe::sekundaer, aufgefuellt(einzeilig(z.bezeichnung), spalte_)) + einzeilig(z.wert));
    }
    void operator()(const Symbolzeile& s) {
        const std::string zusatz = s.zusatz.empty() ? "" : " · " + farbe(s.farbe, s.zusatz);
        zeile(farbe(s.farbe, symbolzeichen(s.symbol)) + " " + einzeilig(s.text) + zusatz);
    }
    void operator()(const Schalter& s) { zeile(kaestchen(s)); }
    void operator()(const Knopf& k) { zeile(knopf(k)); }
    void operator()(const Wahl& w) {
        zeile(w.bezeichnung + ":");
        for (const auto& m : w.moeglichkeiten)
            zeile((m.wert == w.gewaehlt ? "(•) " : "( ) ") + m.text);
    }
    void operator()(const Reihe& r) {
        std::vector<std::string> stuecke;
        for (const auto& teil : r.teile) {
            const auto* schalter = std::get_if<Schalter>(&teil.inhalt);
            stuecke.push_back(schalter != nullptr ? kaestchen(*schalter)
                                                  : knopf(std::get<Knopf>(teil.inhalt)));
        }
        zeile(verbunden(stuecke, "   "));
    }

    void befehle(const std::vector<Angebot>& liste) {
        std::size_t laengster = 0;
        for (const auto& a : liste)
            laengster = std::max(laengster, zeichenzahl(befehl(a.aktion)));
        for (const auto& a : liste)
            zeile(farbe(Farbe::sekundaer,
                        "> " + aufgefuellt(befehl(a.aktion), laengster + 2) + einzeilig(a.text)));
    }

    std::string text;

private:
    static std::string kaestchen(const Schalter& s) { return (s.an ? "[x] " : "[ ] ") + s.text; }
    static std::string knopf(const Knopf& k) { return "[" + einzeilig(k.text) + "]"; }

    [[nodiscard]] std::string farbe(Farbe f, const std::string& inhalt) const {
        if (!farbig_ || f == Farbe::normal)
            return inhalt;
        return farbcode(f) + inhalt + "\x1b[0m";
    }
    void zeile(const std::string& inhalt) { text += inhalt + "\n"; }

    std::size_t spalte_;
    bool farbig_;
};

} // namespace

std::vector<Angebot> angebote(const Baum& baum) {
    std::vector<Angebot> liste;
    for (const auto& element : baum)
        std::visit(Sammler{liste}, element.inhalt);
    return liste;
}

std::string befehl(const Aktion& aktion) {
    if (aktion.was == Bedienung::hinweisWeg)
        return gebrauch(aktion.was);
    return std::string(wort(aktion.was).wort) + (aktion.wert.empty() ? "" : " " + aktion.wert);
}

Verstanden verstehe(std::string_view zeile, const Baum& baum) {
    const auto text = beschnitten(zeile);
    const auto blank = text.find(' ');
    const auto erstes = text.substr(0, blank);
    const auto wert = blank == std::string_view::npos ? std::string_view() : beschnitten(text.substr(blank));

    const auto stelle =
        std::find_if(woerter.begin(), woerter.end(), [&](const Wort& w) { return w.wort == erstes; });
    if (stelle == woerter.end())
        return {std::nullopt, "Unbekannter Befehl: „" + std::string(text) + "“"};
    const auto was = static_cast<Bedienung>(stelle - woerter.begin());
    if (!passt(was, wert))
        return {std::nullopt, "So geht der Befehl: " + gebrauch(was)};

    const Aktion aktion{was, was == Bedienung::hinweisWeg ? "" : std::string(wert)};
    const auto liste = angebote(baum);
    if (std::any_of(liste.begin(), liste.end(), [&](const Angebot& a) { return a.aktion == aktion; }))
        return {aktion, ""};
    const bool gezeigt =
        std::any_of(liste.begin(), liste.end(), [&](const Angebot& a) { return a.aktion.was == was; });
    if (gezeigt && was != Bedienung::browser)
        return {std::nullopt, "„" + std::string(text) + "“ gilt schon"};
    return {std::nullopt,
            "„" + std::string(text) + "“ ist gerade nicht zu bedienen: Das Feld zeigt es nicht"};
}

std::string alsText(const Baum& baum, bool farbig) {
    std::size_t spalte = 0;
    for (const auto& element : baum)
        if (const auto* zeile = std::get_if<Zeile>(&element.inhalt))
            spalte = std::max(spalte, zeichenzahl(zeile->bezeichnung) + 2);
    Schreiber schreiber(spalte, farbig);
    for (const auto& element : baum)
        std::visit(schreiber, element.inhalt);
    schreiber(Trenner{});
    schreiber.befehle(angebote(baum));
    return schreiber.text;
}

Terminaltafel::Terminaltafel(std::FILE* ausgabe)
    : ausgabe_(ausgabe), terminal_(::isatty(::fileno(ausgabe)) == 1) {}

void Terminaltafel::zeichne(const Baum& baum) {
    if (baum == gezeichnet_)
        return;
    gezeichnet_ = baum;
    const std::string text = alsText(baum, terminal_);
    if (terminal_) // home and erase: the panel is drawn in place
        std::fputs(("\x1b[H\x1b[J" + text + (gesagt_.empty() ? "" : gesagt_ + "\n") + "> ").c_str(),
                   ausgabe_);
    else
        std::fputs((text + "\n").c_str(), ausgabe_);
    std::fflush(ausgabe_);
    gesagt_.clear();
}

void Terminaltafel::sage(const std::string& text) {
    gesagt_ = einzeilig(text);
    if (terminal_)
        std::fputs(("\x1b[H\x1b[J" + alsText(gezeichnet_, true) + gesagt_ + "\n> ").c_str(), ausgabe_);
    else
        std::fputs((gesagt_ + "\n\n").c_str(), ausgabe_);
    std::fflush(ausgabe_);
}

} // namespace mobilsteg
