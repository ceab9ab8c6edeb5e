#include "ansicht/Ausfuehrung.hpp"
#include "ansicht/qt/Menueleistenstueck.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Oberflaeche.hpp"

#include <cstdio>
#include <filesystem>
#include <optional>

namespace mobilsteg {

int fensterbetrieb(const Befehlszeile& zeile, const std::string& kennung, int& anzahl, char** worte) {
    if (!QtBetrieb::anzeigeVorhanden()) {
        std::fprintf(stderr, "%s: Keine Anzeige gefunden. Im Terminal läuft das Programm mit --terminal.\n",
                     std::filesystem::path(worte[0]).filename().c_str());
        return 1;
    }
    QtBetrieb qt(anzahl, worte);
    MobilstegBordlotseApp app(zeile, kennung, qt.schlange(), qt.dialog());
    Kabel& kabel = app.kabel();
    Ausfuehrung pult(kabel, [&] { qt.beende(); });
    std::optional<Menueleistenstueck> stueck;

    Delegate delegate(app.einstellungen(), qt.dialog(), beendeProzess);
    qt.schlange().async([&] {
        delegate.applicationDidFinishLaunching();
        stueck.emplace(kabel.speicher(), kabel.variante().bundleB2B(), [&](const Aktion& a) {
            // As a job of the queue: an action may ask back, and then the others have to wait.
            qt.schlange().async([&pult, a] { pult.bediene(a); });
        });
    });
    // At once, not by way of the event loop: the system's request to quit, which comes next, Qt refuses even
    // where it means to quit, and that would hold up the log-out. Whoever cancels it in another program finds
    // us gone: better than going on without what has just been taken back.
    [[maybe_unused]] const auto abmeldung = beiAbmeldung([&] {
        delegate.applicationWillTerminate();
        beendeProzess(0);
    });
    qt.laufe();

    delegate.applicationWillTerminate();
    beendeProzess(0);
}

} // namespace mobilsteg
