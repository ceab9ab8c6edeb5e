#include "ansicht/terminal/Befehle.hpp"

#include "plattform/Text.hpp"

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

std::string befehlsliste() {
    std::vector<std::string> alle = {std::string(hilfebefehl)};
    for (std::size_t i = 0; i < woerter.size(); ++i)
        if (const auto was = static_cast<Bedienung>(i); was != Bedienung::protokoll) // a click's only
            alle.push_back(gebrauch(was));
    return "Befehle: " + verbunden(alle, " · ") + " — jeder gilt, solange das Panel sein Bedienelement zeigt";
}

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
    const auto klein = inKleinbuchstaben(text);
    const auto erstes = klein.substr(0, klein.find(' '));
    const auto wert = beschnitten(std::string_view(klein).substr(erstes.size()));
    if (klein == hilfebefehl || klein == "help" || klein == "?")
        return {std::nullopt, befehlsliste()};

    const auto stelle =
        std::find_if(woerter.begin(), woerter.end(), [&](const Wort& w) { return w.wort == erstes; });
    if (stelle == woerter.end())
        return {std::nullopt, "Unbekannter Befehl: „" + std::string(text) + "“"};
    const auto was = static_cast<Bedienung>(stelle - woerter.begin());
    if (!passt(was, wert))
        return {std::nullopt, "So geht der Befehl: " + gebrauch(was)};

    bool gezeigt = false;
    for (const auto& angebot : angebote(baum)) {
        if (angebot.aktion.was != was)
            continue;
        if (was == Bedienung::hinweisWeg || inKleinbuchstaben(angebot.aktion.wert) == wert)
            return {angebot.aktion, ""};
        gezeigt = was != Bedienung::browser;
    }
    return {std::nullopt, "„" + std::string(text) + "“ " +
                              (gezeigt ? "ist schon so eingestellt"
                                       : "ist gerade nicht zu bedienen: Das Panel zeigt es nicht")};
}

std::optional<int> antwortAuf(const Frage& frage, std::string_view zeile) {
    const auto text = inKleinbuchstaben(beschnitten(zeile));
    std::vector<int> treffer;
    for (std::size_t i = 0; i < frage.knoepfe.size(); ++i) {
        const auto knopf = inKleinbuchstaben(frage.knoepfe[i]);
        const int nummer = static_cast<int>(i);
        if (text == std::to_string(i + 1) || text == knopf)
            return nummer;
        if (!text.empty() && knopf.starts_with(text))
            treffer.push_back(nummer);
    }
    if (treffer.size() == 1)
        return treffer.front();
    if (treffer.empty() && text == "ja")
        return 0;
    if (treffer.empty() && text == "nein" && frage.knoepfe.size() == 2)
        return 1;
    return std::nullopt;
}

std::string moeglicheAntworten(const Frage& frage) {
    std::vector<std::string> alle;
    for (std::size_t i = 0; i < frage.knoepfe.size(); ++i)
        alle.push_back(std::to_string(i + 1) + " oder „" + frage.knoepfe[i] + "“");
    return "Antworten sind: " + verbunden(alle, ", ");
}

} // namespace mobilsteg
