// The controller's making, and the settings that its user changes.

#include "kabel/Kabel.hpp"
#include "kabel/Stand.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Text.hpp"

namespace mobilsteg {

namespace {

Kabel* gemeinsames = nullptr;

std::string austrittsdienst(const Einstellungen& einstellungen) {
    const auto eigener = einstellungen.text("austritt.dienst");
    return eigener && !eigener->empty() ? *eigener : eingebauterAustrittsdienst();
}

} // namespace

Kabel& Kabel::gemeinsam() {
    return *gemeinsames;
}

void Kabel::setzeGemeinsames(Kabel* kabel) {
    gemeinsames = kabel;
}

Zustand Kabel::anfangszustand(const Einstellungen& einstellungen, const Variante& variante) {
    const bool vpn = variante.aktuell() == Variante::Art::vpn;
    Zustand z;
    z.profil = variante.profil();
    z.proxyAutomatisch = einstellungen.flagge("proxy.automatisch").value_or(true);
    z.experte = einstellungen.flagge("experte").value_or(false);
    z.volltunnelAn = einstellungen.flagge("volltunnel").value_or(vpn);
    z.vpnDurch = einstellungen.flagge("vpnDurch").value_or(vpn);
    z.nurVPN = einstellungen.flagge("nurVPN").value_or(vpn);
    z.browserHinweisWeg = einstellungen.flagge("browser.hinweisWeg").value_or(false);
    return z;
}

Kabel::Kabel(Anschluesse anschluesse)
    : anschluesse_(std::move(anschluesse)), variante_(anschluesse_.buendel, anschluesse_.einstellungen),
      id_(anschluesse_.einstellungen.textOderNeu("kabel.id", neueKennung())),
      standPfad_(anschluesse_.orte.imHeim(standOrt)),
      protokoll_(anschluesse_.orte.imHeim(protokollOrt), anschluesse_.uhr),
      speicher_(anschluesse_.haupt, anfangszustand(anschluesse_.einstellungen, variante_)),
      verbindung_(Adb(anschluesse_.laeufer, anschluesse_.orte, anschluesse_.buendel.ressourcen,
                      anschluesse_.forwardliste),
                  anschluesse_.laeufer, Handy(anschluesse_.http, austrittsdienst(anschluesse_.einstellungen)),
                  anschluesse_.einstellungen),
      proxy_(anschluesse_.laeufer, anschluesse_.orte, anschluesse_.einstellungen),
      tunnel_({anschluesse_.haupt, anschluesse_.uhr, anschluesse_.skript, variante_,
               anschluesse_.buendel.ressourcen, anschluesse_.orte}),
      erhebung_(anschluesse_.laeufer, anschluesse_.orte, tunnel_.stoppPfad() + ".vpns.json"),
      berichte_(anschluesse_.laeufer, anschluesse_.orte, anschluesse_.einstellungen,
                {{"mac-bordlotse.log", protokoll_.pfad()}, {"mac-volltunnel.log", tunnel_.protokollPfad()}}),
      schalterIntern_(static_cast<const Schalterstellungen&>(speicher_.zustand())) {}

/// Shows and stores a switch, and hands it to the work queue, where `folge` runs behind it.
void Kabel::stelle(bool Schalterstellungen::*schalter, bool an, const char* schluessel,
                   void (Kabel::*folge)()) {
    speicher_.aendere([&](Zustand& z) { z.*schalter = an; });
    anschluesse_.einstellungen.setzeFlagge(schluessel, an);
    uebergibSchalter(folge);
}

void Kabel::uebergibSchalter(void (Kabel::*folge)()) {
    const auto stellungen = static_cast<const Schalterstellungen&>(speicher_.zustand());
    aufQ([this, stellungen, folge] {
        schalterIntern_ = stellungen;
        if (folge != nullptr)
            (this->*folge)();
    });
}

void Kabel::setzeProxyAutomatisch(bool an) {
    stelle(&Schalterstellungen::proxyAutomatisch, an, "proxy.automatisch");
}

void Kabel::setzeExperte(bool an) {
    stelle(&Schalterstellungen::experte, an, "experte");
}

void Kabel::setzeVpnDurch(bool an) {
    stelle(&Schalterstellungen::vpnDurch, an, "vpnDurch", &Kabel::volltunnelNeuStarten);
}

void Kabel::setzeNurVPN(bool an) {
    stelle(&Schalterstellungen::nurVPN, an, "nurVPN", &Kabel::volltunnelNeuStarten);
}

void Kabel::setzeProfil(const std::string& profil) {
    speicher_.aendere([&](Zustand& z) { z.profil = profil; });
    anschluesse_.einstellungen.setzeText("profil", profil);
}

void Kabel::profilUebernehmen() {
    const auto gespeichert = [this](const char* name) {
        return anschluesse_.einstellungen.flagge(name).value_or(false);
    };
    const bool an = gespeichert("volltunnel");
    const bool vpnDurch = gespeichert("vpnDurch");
    const bool nurVPN = gespeichert("nurVPN");
    if (speicher_.zustand().volltunnelAn != an)
        setzeVolltunnelAn(an);
    if (speicher_.zustand().vpnDurch != vpnDurch)
        setzeVpnDurch(vpnDurch);
    if (speicher_.zustand().nurVPN != nurVPN)
        setzeNurVPN(nurVPN);
    setzeProfil(anschluesse_.einstellungen.text("profil").value_or(speicher_.zustand().profil));
}

void Kabel::setzeBrowserHinweisWeg(bool weg) {
    speicher_.aendere([&](Zustand& z) { z.browserHinweisWeg = weg; });
    anschluesse_.einstellungen.setzeFlagge("browser.hinweisWeg", weg);
}

} // namespace mobilsteg
