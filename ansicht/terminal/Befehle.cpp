#include "ansicht/terminal/Befehle.hpp"

#include "ansicht/Ausfuehrung.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace mobilsteg {

namespace {

struct Wort {
    Bedienung was;
    std::string_view wort;
    std::string_view werte; ///< for people; empty: the command stands alone
};

constexpr std::array<Wort, 10> woerter = {{
    {Bedienung::experte, "experte", "an|aus"},
    {Bedienung::proxy, "proxy", ""},
    {Bedienung::automatisch, "automatisch", "an|aus"},
    {Bedienung::volltunnel, "volltunnel", "an|aus"},
    {Bedienung::vpnDurch, "vpn-durch", "an|aus"},
    {Bedienung::nurVPN, "nur-vpn", "an|aus"},
    {Bedienung::profil, "profil", "reise|vpn"},
    {Bedienung::browser, "browser", "NAME"},
    {Bedienung::hinweisWeg, "hinweis", "weg"},
    {Bedienung::beenden, "beenden", ""},
}};

bool istSchalter(std::string_view werte) {
    return werte == "an|aus";
}

/// Whether `wert` can stand behind the command at all, shown or not.
bool passt(const Wort& wort, std::string_view wert) {
    if (istSchalter(wort.werte))
        return wert == "an" || wert == "aus";
    if (wort.was == Bedienung::profil)
        return wert == "reise" || wert == "vpn";
    if (wort.was == Bedienung::browser)
        return !wert.empty();
    return wert == wort.werte;
}

std::string gebrauch(const Wort& wort) {
    return std::string(wort.wort) + (wort.werte.empty() ? "" : " " + std::string(wort.werte));
}

} // namespace

std::string befehl(const Aktion& aktion) {
    const auto* wort =
        std::find_if(woerter.begin(), woerter.end(), [&](const Wort& w) { return w.was == aktion.was; });
    if (aktion.was == Bedienung::hinweisWeg)
        return gebrauch(*wort);
    return std::string(wort->wort) + (aktion.wert.empty() ? "" : " " + aktion.wert);
}

Verstanden verstehe(std::string_view zeile, const Baum& baum) {
    const auto text = beschnitten(zeile);
    const auto blank = text.find(' ');
    const auto erstes = text.substr(0, blank);
    const auto wert = blank == std::string_view::npos ? std::string_view() : beschnitten(text.substr(blank));

    const auto* wort =
        std::find_if(woerter.begin(), woerter.end(), [&](const Wort& w) { return w.wort == erstes; });
    if (wort == woerter.end())
        return {std::nullopt, "Unbekannter Befehl: „" + std::string(text) + "“"};
    if (!passt(*wort, wert))
        return {std::nullopt, "So geht der Befehl: " + gebrauch(*wort)};

    const Aktion aktion{wort->was, wort->was == Bedienung::hinweisWeg ? "" : std::string(wert)};
    const auto liste = angebote(baum);
    if (std::any_of(liste.begin(), liste.end(), [&](const Angebot& a) { return a.aktion == aktion; }))
        return {aktion, ""};
    const bool gezeigt =
        std::any_of(liste.begin(), liste.end(), [&](const Angebot& a) { return a.aktion.was == aktion.was; });
    if (gezeigt && wort->was != Bedienung::browser)
        return {std::nullopt, "„" + std::string(text) + "“ gilt schon"};
    return {std::nullopt,
            "„" + std::string(text) + "“ ist gerade nicht zu bedienen: Das Feld zeigt es nicht"};
}

} // namespace mobilsteg
