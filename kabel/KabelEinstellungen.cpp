// The controller's making, and the settings that its user changes.

#include "kabel/Kabel.hpp"
#include "plattform/Text.hpp"

namespace mobilsteg {

namespace {

std::function<std::unique_ptr<Kabel>()>& erzeuger() {
    static std::function<std::unique_ptr<Kabel>()> einer;
    return einer;
}

std::string austrittsdienst(const Einstellungen& einstellungen) {
    const auto eigener = einstellungen.text("austritt.dienst");
    return eigener && !eigener->empty() ? *eigener : eingebauterAustrittsdienst();
}

} // namespace

Kabel& Kabel::gemeinsam() {
    static const std::unique_ptr<Kabel> eines = erzeuger()();
    return *eines;
}

void Kabel::richteEin(std::function<std::unique_ptr<Kabel>()> neuer) {
    erzeuger() = std::move(neuer);
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
    : a_(std::move(anschluesse)), variante_(a_.buendel, a_.einstellungen),
      id_(a_.einstellungen.textOderNeu("kabel.id", neueKennung())),
      standPfad_(a_.orte.imHeim("/Library/Application Support/Mobilsteg Bordlotse/stand.json")),
      protokoll_(a_.orte.imHeim("/Library/Logs/MobilstegBordlotse.log"), a_.uhr),
      speicher_(a_.haupt, anfangszustand(a_.einstellungen, variante_)),
      verbindung_(Adb(a_.laeufer, a_.orte, a_.buendel.ressourcen), a_.laeufer,
                  Handy(a_.http, austrittsdienst(a_.einstellungen)), a_.einstellungen),
      proxy_(SystemProxy(a_.laeufer, a_.orte, a_.einstellungen)),
      tunnel_({a_.haupt, a_.uhr, a_.skript, variante_, a_.buendel.ressourcen, a_.orte},
              {speicher_.zustand().volltunnelAn, speicher_.zustand().vpnDurch, speicher_.zustand().nurVPN}),
      erhebung_(a_.laeufer, a_.orte, tunnel_.volltunnel().stoppPfad() + ".vpns.json"),
      berichte_(a_.laeufer, a_.orte, a_.einstellungen,
                {{"mac-bordlotse.log", protokoll_.pfad()},
                 {"mac-volltunnel.log", tunnel_.volltunnel().protokollPfad()}}),
      experteIntern_(speicher_.zustand().experte), proxyAutomatisch_(speicher_.zustand().proxyAutomatisch) {}

void Kabel::setzeProxyAutomatisch(bool an) {
    speicher_.aendere([&](Zustand& z) { z.proxyAutomatisch = an; });
    a_.einstellungen.setzeFlagge("proxy.automatisch", an);
    proxyAutomatisch_ = an;
}

void Kabel::setzeExperte(bool an) {
    speicher_.aendere([&](Zustand& z) { z.experte = an; });
    a_.einstellungen.setzeFlagge("experte", an);
    a_.q.async([this, an] { experteIntern_ = an; });
}

void Kabel::setzeProfil(const std::string& profil) {
    speicher_.aendere([&](Zustand& z) { z.profil = profil; });
    a_.einstellungen.setzeText("profil", profil);
}

void Kabel::profilUebernehmen() {
    const auto gespeichert = [this](const char* name) {
        return a_.einstellungen.flagge(name).value_or(false);
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
    setzeProfil(a_.einstellungen.text("profil").value_or(speicher_.zustand().profil));
}

void Kabel::setzeBrowserHinweisWeg(bool weg) {
    speicher_.aendere([&](Zustand& z) { z.browserHinweisWeg = weg; });
    a_.einstellungen.setzeFlagge("browser.hinweisWeg", weg);
}

} // namespace mobilsteg
