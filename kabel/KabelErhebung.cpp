// What the controller does every n-th tick: surveys, browsers, reports.

#include "kabel/Kabel.hpp"

namespace mobilsteg {

void Kabel::messeVerbindungen() {
    auto verbindungen = erhebung_.verbindungen();
    if (!gezeigteVerbindungen_.neu(verbindungen))
        return;
    speicher_.veroeffentliche([verbindungen = std::move(verbindungen)](Zustand& z) {
        z.vorbei = verbindungen.vorbei;
        z.durch = verbindungen.durch;
    });
}

void Kabel::vpnsLesen() {
    auto vpns = erhebung_.vpns(tunnel_.laeuft());
    if (!gezeigteVpns_.neu(vpns))
        return;
    speicher_.veroeffentliche([vpns = std::move(vpns)](Zustand& z) {
        z.vpnsGesichert = vpns.gesichert;
        z.vpnsOffen = vpns.offen;
    });
}

void Kabel::browserLesen() {
    auto funde = a_.browserFinden();
    std::erase_if(funde, [](const BrowserFund& fund) { return fund.fahrtwind; });
    if (!gezeigteBrowser_.neu(funde))
        return;
    speicher_.veroeffentliche([funde = std::move(funde)](Zustand& z) { z.browserOhne = funde; });
}

void Kabel::fahrtwindHinzufuegen(const BrowserFund& fund) {
    protokoll("fahrtwind: Store/Download in " + fund.name);
    a_.q.async([this, fund] { a_.browserOeffnen(fund); });
}

void Kabel::berichteSenden() {
    if (aufgeraeumt_)
        return;
    Berichte::Angaben angaben;
    angaben.rechner = a_.rechnername;
    angaben.id = id_;
    angaben.ausgabe = variante_.anzeigename();
    angaben.version = a_.buendel.version;
    angaben.bauversion = a_.buendel.bauversion;
    angaben.zeit = a_.uhr.wand();
    angaben.phase = phaseIntern_.text();
    angaben.volltunnel = tunnel_.laeuft();
    angaben.proxy = proxy_.gesetzt();
    berichte_.sende(verbindung_.handy(), angaben);
}

} // namespace mobilsteg
