#include "ansicht/Bedienpult.hpp"
#include "ansicht/Inhalt.hpp"
#include "ansicht/Tafel.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"

#include <cstdio>

namespace mobilsteg {

int terminalbetrieb(const Befehlszeile& zeile, const std::string& kennung) {
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    MobilstegBordlotseApp app(zeile, kennung, haupt);
    Kabel& kabel = app.kabel();
    const bool bundleB2B = kabel.variante().bundleB2B();

    Terminaltafel terminal(stdout);
    Tafel tafel(kabel.aushang(), bundleB2B, [&](const Baum& baum) { terminal.zeichne(baum); });
    Bedienpult pult(kabel, [&] { haupt.halt(); });
    Eingabe eingabe(haupt, [&](const std::string& befehlszeile) {
        if (befehlszeile.empty())
            return;
        // Not the drawn tree: two lines may come before it is drawn again.
        const auto verstanden = verstehe(befehlszeile, inhalt(kabel.aushang().zustand(), bundleB2B));
        if (verstanden.aktion)
            pult.bediene(*verstanden.aktion);
        else
            terminal.sage(verstanden.antwort);
    });

    Delegate delegate(beendeProzess);
    eingabe.beginne();
    haupt.async([&] { delegate.applicationDidFinishLaunching(); });
    haupt.laufe();

    delegate.applicationWillTerminate();
    beendeProzess(0);
}

} // namespace mobilsteg
