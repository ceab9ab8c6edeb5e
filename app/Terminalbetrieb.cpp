#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Schirm.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "app/Delegate.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Text.hpp"

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <optional>

namespace mobilsteg {

namespace {

/// Past the streams, which a terminal that is stopped may hold, and only if it takes the text: the process
/// ends now.
void sageZuletzt(const std::string& text) {
    const std::string zeile = einzeilig(text) + "\n";
    pollfd fall{STDOUT_FILENO, POLLOUT, 0};
    if (::poll(&fall, 1, 0) == 1)
        (void)!::write(STDOUT_FILENO, zeile.data(), zeile.size());
}

} // namespace

int terminalbetrieb(const Befehlszeile& zeile, const std::string& kennung) {
    Laufsperre sperre(orteAus(zeile).heim);
    if (nimmHeim(sperre))
        return 1;
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    const auto schirm = Schirm::oeffne(stdin, stdout);
    Terminaltafel terminal(stdout, schirm.get());
    std::function<void(const std::string&)> befehl;
    Eingabe eingabe(
        haupt, [&](const std::string& befehlszeile) { befehl(befehlszeile); },
        [&] {
            if (::isatty(STDIN_FILENO) == 1) // Ctrl-D; else the end of input ends nothing
                haupt.halt();
        });
    Terminaldialog dialog(terminal, eingabe);
    MobilstegBordlotseApp app(zeile, kennung, haupt, dialog, sperre);
    Kabel& kabel = app.kabel();
    const bool bundleB2B = kabel.variante().bundleB2B();

    const auto zeige = [&](const Zustand& z) { terminal.zeichne(inhalt(z, bundleB2B)); };
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

    std::optional<Delegate> delegate;
    const auto beende = [&](int status) {
        if (schirm)
            schirm->ende(delegate->schlusswort());
        else if (::isatty(STDOUT_FILENO) == 1)
            sageZuletzt(delegate->schlusswort());
        beendeProzess(status);
    };
    delegate.emplace(app.einstellungen(), dialog, beende);
    haupt.async([&] {
        delegate->applicationDidFinishLaunching();
        zeige(kabel.speicher().zustand());
        kabel.speicher().beobachte(zeige);
    });
    eingabe.beginne(schirm);
    haupt.laufe();

    if (schirm)
        schirm->sage("Räume auf …");
    delegate->applicationWillTerminate();
    beende(0);
    return 0;
}

} // namespace mobilsteg
