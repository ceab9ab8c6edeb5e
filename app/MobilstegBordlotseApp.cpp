#include "app/MobilstegBordlotseApp.hpp"

#include <cstdio>
#include <cstdlib>

namespace mobilsteg {

Orte orteAus(const Befehlszeile& zeile) {
    return {zeile.heim ? absoluterPfad(*zeile.heim) : eigenesHeim(),
            zeile.wurzel ? absoluterPfad(*zeile.wurzel) : std::string()};
}

MobilstegBordlotseApp::MobilstegBordlotseApp(const Befehlszeile& zeile, const std::string& kennung,
                                             Schlange& haupt, Dialog& dialog)
    : orte_(orteAus(zeile)), buendel_(eigenesBuendel(kennung)),
      einstellungen_(einstellungenFuer(orte_, kennung).speicher), skript_(adminskriptFuer(orte_)),
      browser_(lauf, orte_, *einstellungen_) {
    Kabel::richteEin([this, &haupt, &dialog] { return baueKabel(haupt, dialog); });
}

std::unique_ptr<Kabel> MobilstegBordlotseApp::baueKabel(Schlange& haupt, Dialog& dialog) {
    const auto abbruch = [](const std::string& warum) {
        std::fprintf(stderr, "Programmierfehler: %s\n", warum.c_str());
        std::abort();
    };
    const auto finden = [this] { return browser_.finden(); };
    const auto oeffnen = [this](const BrowserFund& fund) { browser_.hinzufuegen(fund); };
    return std::make_unique<Kabel>(Kabel::Anschluesse{haupt, takt_, volltunnelQ_, uhr_, lauf, http_,
                                                      *einstellungen_, standdienst_, *skript_, dialog, finden,
                                                      oeffnen, buendel_, orte_, rechnername(), abbruch});
}

// No flushing either: whoever prints flushes at once, and a stalled reader of our output could hold us here.
void beendeProzess(int status) {
    std::_Exit(status);
}

} // namespace mobilsteg
