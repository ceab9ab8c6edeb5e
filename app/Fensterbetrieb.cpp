#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Menueleistenstueck.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "netz/Variante.hpp"
#include "plattform/Oberflaeche.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace mobilsteg {

namespace {

Delegate* endender = nullptr;

/// Qt calls exit itself when the display goes away; nothing else does.
void beimAbbruchDerAnzeige() {
    endender->applicationWillTerminate();
    beendeProzess(1);
}

} // namespace

int fensterbetrieb(const Befehlszeile& zeile, const std::string& kennung, int& anzahl, char** worte) {
    if (!QtBetrieb::moeglich()) {
        std::fprintf(stderr, "%s: Keine Anzeige gefunden. Im Terminal läuft das Programm mit --terminal.\n",
                     std::filesystem::path(worte[0]).filename().c_str());
        return 1;
    }
    QtBetrieb qt(anzahl, worte);
    // The title of questions; from the controller on with the profile.
    QApplication::setApplicationName(qtText(anzeigename(istVpnLotse(kennung), false)));
    Laufsperre sperre(orteAus(zeile).heim);
    if (const auto grund = nimmHeim(sperre)) {
        (void)qt.dialog().frage({"Der Bordlotse " + *grund, "", {"OK"}});
        return 1;
    }
    MobilstegBordlotseApp app(zeile, kennung, qt.schlange(), qt.dialog(), sperre);
    Kabel& kabel = app.kabel();
    QApplication::setApplicationName(qtText(kabel.variante().anzeigename()));
    const bool bundleB2B = kabel.variante().bundleB2B();
    std::optional<Menueleistenstueck> stueck;
    const auto zeige = [&](const Zustand& z) { stueck->zeichne(inhalt(z, bundleB2B), z.symbol, z.kurz); };

    Delegate delegate(app.einstellungen(), qt.dialog(), beendeProzess);
    endender = &delegate;
    std::atexit(beimAbbruchDerAnzeige);
    qt.schlange().async([&] {
        delegate.applicationDidFinishLaunching();
        stueck.emplace([&](const Aktion& aktion) {
            // As a job of the queue: an action may ask back, and then the others have to wait.
            qt.schlange().async([&, aktion] { fuehreAus(aktion, kabel, [&] { qt.beende(); }); });
        });
        zeige(kabel.speicher().zustand());
        kabel.speicher().beobachte(zeige);
        stueck->erscheine();
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
