#include "app/MobilstegBordlotseApp.hpp"

#include "handy/Adbserver.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace mobilsteg {

namespace {

void brichAb(const std::string& warum) {
    std::fprintf(stderr, "Programmierfehler: %s\n", warum.c_str());
    std::abort();
}

} // namespace

Orte orteAus(const Befehlszeile& zeile) {
    return {zeile.heim ? absoluterPfad(*zeile.heim) : eigenesHeim(),
            zeile.wurzel ? absoluterPfad(*zeile.wurzel) : std::string()};
}

MobilstegBordlotseApp::MobilstegBordlotseApp(const Befehlszeile& zeile, const std::string& kennung,
                                             Schlange& haupt, Dialog& dialog, Laufsperre& sperre)
    : orte_(orteAus(zeile)), waechter_(zeile, sperre),
      einstellungen_(einstellungenFuer(orte_, kennung).speicher), skript_(adminskriptFuer(orte_)),
      browser_(lauf, orte_, *einstellungen_),
      kabel_({haupt,
              takt_,
              volltunnelQ_,
              uhr_,
              lauf,
              http_,
              *einstellungen_,
              standdienst_,
              *skript_,
              dialog,
              [this] { return browser_.finden(); },
              [this](const BrowserFund& fund) { browser_.hinzufuegen(fund); },
              eigenesBuendel(kennung),
              orte_,
              rechnername(),
              brichAb,
              [this] { geraetewache_.halte(); },
              [this] { waechter_.halte(); },
              [this] { waechter_.schickeHeim(); },
              forwardsVomServer}) {
    Kabel::setzeGemeinsames(&kabel_);
}

std::optional<std::string> nimmHeim(Laufsperre& sperre) {
    const auto anderer = sperre.nimm();
    if (!anderer)
        return std::nullopt;
    auto text = anderer->laeufer > 0 ? "läuft schon (Prozess " + std::to_string(anderer->laeufer) + ")"
                                     : "räumt noch nach einem früheren Lauf auf";
    std::fprintf(stderr, "%s: %s\n", std::filesystem::path(eigenesProgramm()).filename().c_str(),
                 text.c_str());
    return text;
}

// No flushing either: whoever prints flushes at once, and a stalled reader of our output could hold us here.
void beendeProzess(int status) {
    std::_Exit(status);
}

} // namespace mobilsteg
