#include "ansicht/terminal/Terminaltafel.hpp"

#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Schirm.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr std::size_t strichlaenge = 60; // where no width is given

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

/// The phase without its colour.
const char* punktzeichen(Farbe farbe) {
    if (farbe == Farbe::gruen)
        return "●";
    return farbe == Farbe::gelb ? "◐" : "○";
}

const char* symbolzeichen(const std::string& symbol) {
    if (symbol == "shield.slash")
        return "○";
    return symbol == "lock.shield.fill" ? "●" : "✓";
}

class Schreiber {
public:
    explicit Schreiber(Schriftbild bild, std::size_t spalte = 0) : spalte_(spalte), bild_(bild) {}

    void operator()(const Kopf& k) {
        const std::string punkt = bild_.breite == 0 ? "●" : punktzeichen(k.punkt);
        zeile(k.titel, Farbe::normal, punkt + " ", k.punkt);
    }
    void operator()(const Satz& s) { zeile(s.text, s.farbe); }
    void operator()(const Trenner&) {
        std::string strich;
        for (std::size_t i = 0; i < (bild_.breite == 0 ? strichlaenge : bild_.breite); ++i)
            strich += "─";
        zeile(strich, Farbe::sekundaer);
    }
    void operator()(const Zeile& z) {
        zeile(z.wert, Farbe::normal, aufgefuellt(einzeilig(z.bezeichnung), spalte_), Farbe::sekundaer);
    }
    void operator()(const Symbolzeile& s) {
        zeile(s.text + (s.zusatz.empty() ? "" : " · " + s.zusatz), Farbe::normal,
              std::string(symbolzeichen(s.symbol)) + " ", s.farbe);
    }
    void operator()(const Schalter& s) { zeile(s.text, Farbe::normal, kasten(s)); }
    void operator()(const Knopf& k) { zeile(knopf(k)); }
    void operator()(const Wahl& w) {
        zeile(w.bezeichnung + ":");
        for (const auto& m : w.moeglichkeiten)
            zeile(m.text, Farbe::normal, m.wert == w.gewaehlt ? "(•) " : "( ) ");
    }
    void operator()(const Reihe& r) {
        std::vector<std::string> stuecke;
        for (const auto& teil : r.teile) {
            const auto* schalter = std::get_if<Schalter>(&teil.inhalt);
            stuecke.push_back(schalter != nullptr ? kasten(*schalter) + schalter->text
                                                  : knopf(std::get<Knopf>(teil.inhalt)));
        }
        zeile(verbunden(stuecke, "   "));
    }

    void befehle(const std::vector<Angebot>& liste) {
        std::size_t laengster = 0;
        for (const auto& a : liste)
            laengster = std::max(laengster, zeichenzahl(befehl(a.aktion)));
        for (const auto& a : liste)
            zeile(a.text, Farbe::sekundaer, "> " + aufgefuellt(befehl(a.aktion), laengster + 2),
                  Farbe::sekundaer);
    }

    /// A line, or several below each other where the width does not do; `vorn` has a column of its own.
    void zeile(const std::string& inhalt, Farbe f = Farbe::normal, const std::string& vorn = "",
               Farbe vornFarbe = Farbe::normal) {
        const std::string eine = einzeilig(inhalt);
        const std::size_t einzug = zeichenzahl(vorn);
        const std::size_t platz =
            bild_.breite == 0 ? eine.size() : std::max(bild_.breite, einzug + 8) - einzug;
        std::string_view rest = eine;
        text += farbe(vornFarbe, vorn);
        while (zeichenzahl(rest) > platz) {
            const auto blank = ersteZeichen(rest, platz + 1).rfind(' ');
            const auto teil =
                blank == std::string_view::npos ? ersteZeichen(rest, platz) : rest.substr(0, blank);
            text += farbe(f, teil) + "\n" + std::string(einzug, ' ');
            rest.remove_prefix(teil.size() + (blank == std::string_view::npos ? 0 : 1));
        }
        text += farbe(f, rest) + "\n";
    }

    std::string text;

private:
    static std::string kasten(const Schalter& s) { return s.an ? "[x] " : "[ ] "; }
    static std::string knopf(const Knopf& k) { return "[" + einzeilig(k.text) + "]"; }

    [[nodiscard]] std::string farbe(Farbe f, std::string_view inhalt) const {
        if (!bild_.farbig || f == Farbe::normal)
            return std::string(inhalt);
        return farbcode(f) + std::string(inhalt) + "\x1b[0m";
    }
    std::size_t spalte_;
    Schriftbild bild_;
};

} // namespace

std::string alsText(const Baum& baum, Schriftbild bild) {
    std::size_t spalte = 0;
    for (const auto& element : baum)
        if (const auto* zeile = std::get_if<Zeile>(&element.inhalt))
            spalte = std::max(spalte, zeichenzahl(zeile->bezeichnung) + 2);
    Schreiber schreiber(bild, spalte);
    for (const auto& element : baum)
        std::visit(schreiber, element.inhalt);
    schreiber(Trenner{});
    schreiber.befehle(angebote(baum));
    return schreiber.text;
}

std::string alsText(const Frage& frage, Schriftbild bild) {
    Schreiber schreiber(bild);
    schreiber.zeile(frage.nachricht);
    if (bild.breite > 0)
        schreiber(Trenner{});
    std::string_view rest = frage.erlaeuterung;
    for (std::size_t ende = 0; (ende = rest.find('\n')) != std::string_view::npos;
         rest.remove_prefix(ende + 1))
        schreiber.zeile(std::string(rest.substr(0, ende)));
    schreiber.zeile(std::string(rest));
    for (std::size_t i = 0; i < frage.knoepfe.size(); ++i)
        schreiber.zeile(frage.knoepfe[i], Farbe::normal, std::to_string(i + 1) + ") ");
    return schreiber.text;
}

std::string alsText(const std::string& meldung, Schriftbild bild, Farbe farbe) {
    Schreiber schreiber(bild);
    schreiber.zeile(meldung, farbe);
    return schreiber.text;
}

std::vector<std::string> ausschnitt(const std::string& text, std::size_t hoehe, std::size_t& ab) {
    std::vector<std::string> zeilen;
    for (std::size_t i = 0; i < text.size(); i = text.find('\n', i) + 1)
        zeilen.push_back(text.substr(i, text.find('\n', i) - i));
    const auto strich = std::find_if(zeilen.begin(), zeilen.end(),
                                     [](const auto& z) { return z.find("──") != std::string::npos; });
    const auto fest = static_cast<std::size_t>(strich - zeilen.begin());
    if (zeilen.size() <= hoehe || fest + 2 > hoehe) {
        zeilen.resize(std::min(zeilen.size(), hoehe));
        return zeilen;
    }
    const std::size_t sichtbar = hoehe - fest - 1;
    const std::size_t verborgen = zeilen.size() - fest - sichtbar;
    ab = std::min(ab, verborgen);
    zeilen.erase(strich, strich + static_cast<std::ptrdiff_t>(ab));
    zeilen.resize(hoehe - 1);
    zeilen.push_back("… Bild ↑: " + std::to_string(ab) + ", Bild ↓: " + std::to_string(verborgen - ab) +
                     " weitere Zeilen");
    return zeilen;
}

void Terminaltafel::zeichne(const Baum& baum) {
    if (baum == gezeichnet_)
        return;
    gezeichnet_ = baum;
    zeigePanel();
}

void Terminaltafel::frage(const Frage* frage) {
    if (frage != nullptr)
        zeige([frage = *frage](Schriftbild bild) { return alsText(frage, bild); }, frage->knoepfe);
    else if (schirm_ != nullptr && !gezeichnet_.empty())
        zeigePanel();
}

void Terminaltafel::sage(const std::string& text) {
    if (schirm_ != nullptr)
        return schirm_->sage(text);
    std::fputs((alsText(text, {false, terminalmasse(ausgabe_).breite}) + "\n").c_str(), ausgabe_);
    std::fflush(ausgabe_);
}

void Terminaltafel::zeigePanel() {
    std::vector<std::string> vorschlaege = {std::string(hilfebefehl)};
    for (const auto& angebot : angebote(gezeichnet_))
        vorschlaege.push_back(befehl(angebot.aktion));
    zeige([baum = gezeichnet_](Schriftbild bild) { return alsText(baum, bild); }, std::move(vorschlaege));
}

void Terminaltafel::zeige(Schirm::Text text, std::vector<std::string> vorschlaege) {
    if (schirm_ != nullptr)
        return schirm_->zeige(std::move(text), std::move(vorschlaege));
    std::fputs((text({false, terminalmasse(ausgabe_).breite}) + "\n").c_str(), ausgabe_);
    std::fflush(ausgabe_);
}

} // namespace mobilsteg
