// Draws the pictures of the documentation with the program's own renderer, without a display.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "app/Delegate.hpp"
#include "kabel/Kabel.hpp"
#include "plattform/Dateien.hpp"

#include <QImage>

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

// A palette of our own, so that the pictures do not depend on the platform's setting.
QPalette palette(const QColor& fenster, const QColor& feld, const QColor& knopf, const QColor& text) {
    QPalette p(text, knopf, knopf.lighter(130), knopf.darker(150), knopf.darker(115), text, text, feld,
               fenster);
    p.setColor(QPalette::Highlight, QColor(0x2f, 0x7c, 0xf6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    return p;
}

QPalette palette(bool dunkel) {
    if (dunkel)
        return palette({0x29, 0x29, 0x2b}, {0x3c, 0x3c, 0x3f}, {0x50, 0x50, 0x53}, {0xf2, 0xf2, 0xf4});
    return palette({0xf2, 0xf2, 0xf2}, Qt::white, {0xfc, 0xfc, 0xfc}, {0x1d, 0x1d, 0x1f});
}

/// Writes what the window shows as a PNG file, without ever showing it.
bool speichere(QWidget& fenster, const std::string& pfad) {
    const double dichte = fenster.devicePixelRatio();
    QImage bild((QSizeF(fenster.size()) * dichte).toSize(), QImage::Format_ARGB32_Premultiplied);
    bild.setDevicePixelRatio(dichte);
    bild.fill(Qt::transparent);
    fenster.render(&bild);
    std::printf("%s\n", pfad.c_str());
    return bild.save(qtText(pfad), "PNG");
}

bool malePanel(const Baum& baum, bool dunkel, const std::string& pfad) {
    Panelfenster panel([](const Aktion&) {});
    panel.setPalette(palette(dunkel));
    panel.zeichne(baum);
    return speichere(panel, pfad);
}

bool maleFrage(const Frage& frage, const std::string& pfad) {
    Fragefenster fenster(frage);
    fenster.setPalette(palette(false));
    fenster.ensurePolished();
    fenster.setAttribute(Qt::WA_DontShowOnScreen); // it takes its final size only when it is shown
    fenster.show();
    return speichere(fenster, pfad);
}

bool maleBilder(const std::string& ordner) {
    const Bild bilder[] = {{"reise", reise(), false}, {"vpn", vpn(), true}, {"experte", experte(), false}};
    for (const auto& [name, zustand, bundleB2B] : bilder)
        for (const bool dunkel : {false, true})
            if (!malePanel(inhalt(zustand, bundleB2B), dunkel,
                           ordner + "/" + name + (dunkel ? "-dunkel.png" : "-hell.png")))
                return false;
    return maleFrage(profilfrage(), ordner + "/frage-profil.png") &&
           maleFrage(willkommen("Mobilsteg VPN-Lotse"), ordner + "/frage-willkommen.png") &&
           maleFrage(tunnelerklaerung(), ordner + "/frage-volltunnel.png");
}

} // namespace

int main(int anzahl, char** worte) {
    if (anzahl != 2 || *worte[1] == '-') {
        const bool gefragt = anzahl == 2 && std::string(worte[1]) == "--hilfe";
        std::fputs("Aufruf: mobilsteg-bilder ORDNER\nMalt die Bilder der Dokumentation.\n",
                   gefragt ? stdout : stderr);
        return gefragt ? 0 : 2;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("QT_SCALE_FACTOR", "2", 1);
    const QtBetrieb qt(anzahl, worte);
    QFont schrift = QApplication::font();
    schrift.setPixelSize(13); // as large as a Mac's
    QApplication::setFont(schrift);
    if (legeElternordnerAn(std::string(worte[1]) + "/x") && maleBilder(worte[1]))
        return 0;
    std::fprintf(stderr, "mobilsteg-bilder: In %s lässt sich nicht schreiben\n", worte[1]);
    return 1;
}
