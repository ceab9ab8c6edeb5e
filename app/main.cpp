#include "app/Befehlszeile.hpp"
#include "app/Dienste.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "app/Waechter.hpp"
#include "plattform/Dateien.hpp"

#include <csignal>
#include <cstdio>
#include <filesystem>

using namespace mobilsteg;

extern const char* const mobilstegKennung; ///< of the edition that this is linked into

int main(int anzahl, char** worte) {
    sichereStandardstroeme();
    sigset_t keine; // blocked by whoever started us, no signal could end us in order
    sigemptyset(&keine);
    ::sigprocmask(SIG_SETMASK, &keine, nullptr);
    std::signal(SIGCHLD, SIG_DFL); // ignored by whoever started us, no tool's status could be had
    std::signal(SIGPIPE, SIG_IGN); // a reader of our output that goes away must not take the clean-up with it

    const std::string programm = std::filesystem::path(worte[0]).filename().string();
    const auto zeile = Befehlszeile::lies({worte + 1, worte + anzahl});
    if (!zeile.fehler.empty()) {
        std::fprintf(stderr, "%s: %s\nHilfe: %s --hilfe\n", programm.c_str(), zeile.fehler.c_str(),
                     programm.c_str());
        return 2;
    }
    switch (zeile.tat) {
    case Befehlszeile::Tat::hilfe:
        std::fputs(hilfetext(programm).c_str(), stdout);
        return 0;
    case Befehlszeile::Tat::version:
        std::printf("%s %s\n", programm.c_str(), MOBILSTEG_VERSION);
        return 0;
    case Befehlszeile::Tat::terminal:
        return terminalbetrieb(zeile, mobilstegKennung);
    case Befehlszeile::Tat::stand:
        return standauskunft(zeile);
    case Befehlszeile::Tat::anmelden:
        return anmeldestart(zeile, mobilstegKennung);
    case Befehlszeile::Tat::aufraeumen:
    case Befehlszeile::Tat::anmeldung:
        return aufraeumdienst(zeile, mobilstegKennung);
    case Befehlszeile::Tat::waechter:
        return waechterdienst(zeile, mobilstegKennung);
    case Befehlszeile::Tat::selbsttest:
        return selbsttest(zeile, mobilstegKennung);
    case Befehlszeile::Tat::menueleiste:
        break;
    }
    return fensterbetrieb(zeile, mobilstegKennung, anzahl, worte);
}
