#include "ansicht/Ausfuehrung.hpp"
#include "ansicht/Inhalt.hpp"
#include "ansicht/Tafel.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaldialog.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Text.hpp"

#include <cstdio>
#include <optional>

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
    std::optional<Tafel> tafel;
    Ausfuehrung pult(kabel, [&] { haupt.halt(); });
    befehl = [&](const std::string& befehlszeile) {
        if (beschnitten(befehlszeile).empty())
            return;
        // Not the drawn tree: two lines may come before it is drawn again.
        const auto verstanden = verstehe(befehlszeile, inhalt(kabel.speicher().zustand(), bundleB2B));
        if (verstanden.aktion)
            pult.bediene(*verstanden.aktion);
        else
            terminal.sage(verstanden.antwort);
    };

    Delegate delegate(app.einstellungen(), dialog, beendeProzess);
    haupt.async([&] {
        delegate.applicationDidFinishLaunching();
        tafel.emplace(kabel.speicher(), bundleB2B, [&](const Baum& baum) { terminal.zeichne(baum); });
    });
    eingabe.beginne();
    haupt.laufe();

    delegate.applicationWillTerminate();
    beendeProzess(0);
}

} // namespace mobilsteg
