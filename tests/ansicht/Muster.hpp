#pragma once

#include "ansicht/Baum.hpp"

namespace mobilsteg {

/// A panel of all kinds of elements.
inline Baum muster() {
    const auto knopf = [](const char* wert, const char* text, const char* app) {
        return Element{wert, Knopf{{Bedienung::browser, wert}, text, "", app, true}};
    };
    const Knopf weg{{Bedienung::hinweisWeg, ""}, "×", "Weg damit", "", true, Farbe::sekundaer};
    const Satz satz{"Satz & <b>", Schrift::kleinste, Farbe::rot, Aktion{Bedienung::protokoll, ""}};
    return {{"titel", Kopf{"Titel", Farbe::gelb}},
            {"satz", satz},
            {"strich", Trenner{}},
            {"zeile", Zeile{"Ort", "Heidelberg_Altstadt am Neckar, in dem Tal"}},
            {"offen", Symbolzeile{"shield.slash", Farbe::orange, "Firma in Bonn", "noch nicht gesichert"}},
            {"zu", Symbolzeile{"lock.shield.fill", Farbe::gruen, "Zu", ""}},
            {"an", Schalter{Bedienung::volltunnel, "Ein langer Schalter", true}},
            {"proxy", Knopf{{Bedienung::proxy, ""}, "Weg & da", "", ""}},
            {"wahl", Wahl{Bedienung::profil, "Wahl", {{"reise", "Eins"}, {"vpn", "Zwei"}}, "vpn"}},
            {"reihe", Reihe{{knopf("A", "In A", "/a"),
                             knopf("B", "In BBBB", "/b"),
                             knopf("C", "In C", ""),
                             knopf("D", "D", ""),
                             {"weg", weg}}}}};
}

} // namespace mobilsteg
