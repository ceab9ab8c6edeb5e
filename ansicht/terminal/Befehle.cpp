#include "ansicht/terminal/Befehle.hpp"

#include "ansicht/Ausfuehrung.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

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

} // namespace

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

} // namespace mobilsteg
