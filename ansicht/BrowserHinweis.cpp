#include "ansicht/Inhalt.hpp"

namespace mobilsteg {

Baum browserHinweis(const Zustand& z) {
    Reihe reihe;
    for (const auto& fund : z.browserOhne) {
        Knopf knopf;
        knopf.aktion = {Bedienung::browser, fund.name};
        knopf.text = "In " + fund.name + " hinzufügen";
        knopf.appPfad = fund.appPfad;
        knopf.rahmenlos = true;
        reihe.teile.emplace_back(std::move(knopf));
    }
    Knopf weg;
    weg.aktion.was = Bedienung::hinweisWeg;
    weg.text = "×";
    weg.hilfe = "Hinweis nicht mehr zeigen";
    weg.rahmenlos = true;
    weg.farbe = Farbe::sekundaer;
    reihe.teile.emplace_back(std::move(weg));

    Baum b;
    b.emplace_back(Trenner{});
    b.emplace_back(
        Satz{"fahrtwind fehlt im Browser — die Erweiterung zeigt die Mobilsteg-Leiste über jeder Seite und "
             "spart Daten, wenn es eng wird.",
             Schrift::klein, Farbe::normal});
    b.emplace_back(std::move(reihe));
    return b;
}

} // namespace mobilsteg
