#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Text.hpp"

#include <cstdio>

namespace mobilsteg {

int terminalbetrieb(const Befehlszeile& zeile, const std::string& kennung) {
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    std::function<void(const std::string&)> befehl;
    Eingabe eingabe(haupt, [&](const std::string& befehlszeile) { befehl(befehlszeile); });
    Terminaldialog dialog(stdout, eingabe);
    MobilstegBordlotseApp app(zeile, kennung, haupt, dialog);
    Kabel& kabel = app.kabel();
    const bool bundleB2B = kabel.variante().bundleB2B();

    Terminaltafel terminal(stdout);
    const auto zeige = [&](const Zustand& z) { terminal.zeichne(inhalt(z, bundleB2B)); };
    Zustandsspeicher::Beobachtung beobachtung;
    befehl = [&](const std::string& befehlszeile) {
        if (beschnitten(befehlszeile).empty())
            return;
        // Not the drawn tree: two lines may come before it is drawn again.
        const auto verstanden = verstehe(befehlszeile, inhalt(kabel.speicher().zustand(), bundleB2B));
        if (verstanden.aktion)
            fuehreAus(*verstanden.aktion, kabel, [&] { haupt.halt(); });
        else
            terminal.sage(verstanden.antwort);
    };

    Delegate delegate(app.einstellungen(), dialog, beendeProzess);
    haupt.async([&] {
        delegate.applicationDidFinishLaunching();
        zeige(kabel.speicher().zustand());
        beobachtung = kabel.speicher().beobachte(zeige);
    });
    eingabe.beginne();
    haupt.laufe();

    delegate.applicationWillTerminate();
    beendeProzess(0);
}

} // namespace mobilsteg
