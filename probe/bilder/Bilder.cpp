// Draws the pictures of the documentation, and the application icons, with the program's own renderer,
// without a display.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Bild.hpp"
#include "ansicht/qt/Ikone.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "app/Erststart.hpp"
#include "kabel/Kabel.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace mobilsteg;

namespace {

Zustand reise() {
    Zustand z;
    z.phase = Phase::Art::faehrt;
    z.handy = "Samsung Galaxy S23";
    z.klasse = "2. Klasse";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · 61 ms"};
    z.menge = "12,4 MB · 350 kB/s";
    z.rettung = "3 Funklöcher überstanden · 1 Verbindung gerettet";
    z.browserOhne = {{"Chrome", "com.google.Chrome", false, "/Applications/Google Chrome.app"}};
    return z;
}

Zustand vpn() {
    Zustand z = reise();
    z.profil = "vpn";
    z.volltunnelAn = z.nurVPN = z.volltunnelLaeuft = true;
    z.vpnsGesichert = {"Firmen-VPN (Zürich) · 10.1.2.3"};
    z.vpnsOffen = {"OpenVPN"};
    return z;
}

Zustand experte() {
    Zustand z = reise();
    z.browserOhne.clear();
    z.experte = z.proxyGesetzt = true;
    z.austritt = "203.0.113.7";
    z.durch = {"Google Chrome (12)", "curl (1)"};
    z.vorbei = {"Mail (2)"};
    return z;
}

struct Bild {
    const char* name;
    Zustand zustand;
    bool bundleB2B;
};

int maleIkonen(const std::string& ordner) {
    const std::pair<const char*, Ikone> ikonen[] = {
        {"mobilsteg-bordlotse", {"cable.connector", 0x2f9bd6, 0x124f91}},
        {"mobilsteg-vpnlotse", {"lock.shield.fill", 0x4cae7b, 0x135c4a}},
    };
    for (const auto& [name, ikone] : ikonen)
        if (!schreibeIkone(ikone, ordner + "/" + name + ".icns"))
            return 1;
    return 0;
}

} // namespace

int main(int anzahl, char** worte) {
    const bool ikonen = anzahl == 3 && std::string(worte[1]) == "--ikonen";
    if (anzahl != 2 && !ikonen) {
        std::fprintf(stderr, "Aufruf: mobilsteg-bilder [--ikonen] ORDNER\n");
        return 2;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const std::string ordner = worte[anzahl - 1];
    const QtBetrieb qt(anzahl, worte);
    if (ikonen)
        return maleIkonen(ordner);
    constexpr double massstab = 2;
    for (const auto& bild :
         {Bild{"reise", reise(), false}, {"vpn", vpn(), true}, {"experte", experte(), false}}) {
        for (const bool dunkel : {false, true}) {
            const std::string pfad = ordner + "/" + bild.name + (dunkel ? "-dunkel.png" : "-hell.png");
            if (!maleBild(inhalt(bild.zustand, bild.bundleB2B), dunkel, pfad, massstab)) {
                std::fprintf(stderr, "mobilsteg-bilder: %s lässt sich nicht schreiben\n", pfad.c_str());
                return 1;
            }
            std::printf("%s\n", pfad.c_str());
        }
    }
    const std::pair<const char*, Frage> fragen[] = {
        {"frage-profil", profilfrage()},
        {"frage-willkommen", willkommen("Mobilsteg VPN-Lotse")},
        {"frage-volltunnel", tunnelerklaerung()},
    };
    for (const auto& [name, frage] : fragen)
        if (!maleFrage(frage, false, ordner + "/" + name + ".png", massstab))
            return 1;
    return 0;
}
