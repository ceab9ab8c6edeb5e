// Draws the pictures of the documentation, and the application icons, with the program's own renderer,
// without a display.

#include "ansicht/Inhalt.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "app/Delegate.hpp"
#include "kabel/Kabel.hpp"
#include "plattform/Dateien.hpp"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

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

/// What one edition's application icon looks like.
struct Ikone {
    std::string symbol; ///< white, one of the menu bar's
    QRgb oben;          ///< the plate's colour fades from the one to the other
    QRgb unten;
};

// The plate takes this much of the square, as all of the system's icons do; the rest is air for its shadow.
constexpr double plattenanteil = 824.0 / 1024;
constexpr double rundungsanteil = 185.4 / 1024;
constexpr double symbolanteil = 0.52;
constexpr double schattenanteil = 12.0 / 1024;
constexpr int schattenstufen = 6;
constexpr int schattendeckung = 10; // of 255, each step on top of the one before

/// The file's chunks: a kind for each size, and what a screen with two pixels per point takes for half of it.
constexpr std::pair<const char*, int> stuecke[] = {
    {"icp4", 16}, {"icp5", 32}, {"ic07", 128}, {"ic08", 256}, {"ic09", 512},
    {"ic11", 32}, {"ic12", 64}, {"ic13", 256}, {"ic14", 512}, {"ic10", 1024},
};

QImage male(const Ikone& ikone, int kante) {
    QImage bild(kante, kante, QImage::Format_ARGB32);
    bild.fill(Qt::transparent);
    QPainter maler(&bild);
    maler.setRenderHint(QPainter::Antialiasing);
    maler.setPen(Qt::NoPen);
    const double rand = kante * (1 - plattenanteil) / 2;
    const double rundung = kante * rundungsanteil;
    const QRectF platte(rand, rand, kante - 2 * rand, kante - 2 * rand);
    maler.setBrush(QColor(0, 0, 0, schattendeckung));
    for (int stufe = 1; stufe <= schattenstufen; ++stufe) {
        const double weite = kante * schattenanteil * stufe / schattenstufen;
        maler.drawRoundedRect(platte.translated(0, weite).adjusted(-weite / 2, 0, weite / 2, weite / 2),
                              rundung, rundung);
    }
    QLinearGradient verlauf(platte.topLeft(), platte.bottomLeft());
    verlauf.setColorAt(0, QColor(ikone.oben));
    verlauf.setColorAt(1, QColor(ikone.unten));
    maler.setBrush(verlauf);
    maler.drawRoundedRect(platte, rundung, rundung);
    const double symbol = kante * symbolanteil;
    maleSymbol(maler, QRectF((kante - symbol) / 2, (kante - symbol) / 2, symbol, symbol), ikone.symbol,
               Qt::white);
    return bild;
}

/// Big-endian, the header's own eight bytes included.
std::string mitKopf(const std::string& art, const std::string& inhalt) {
    const std::size_t laenge = inhalt.size() + 8;
    std::string stueck = art;
    for (const int stelle : {24, 16, 8, 0})
        stueck += static_cast<char>((laenge >> stelle) & 0xFFU);
    return stueck + inhalt;
}

/// Every size that macOS asks for, in the one file that a bundle carries (.icns).
bool schreibeIkone(const Ikone& ikone, const std::string& pfad) {
    std::string inhalt;
    for (const auto& [art, kante] : stuecke) {
        QBuffer png;
        png.open(QIODevice::WriteOnly);
        male(ikone, kante).save(&png, "PNG");
        inhalt += mitKopf(art, png.data().toStdString());
    }
    return schreibeAtomar(pfad, mitKopf("icns", inhalt), Haltbarkeit::fluechtig);
}

bool maleIkonen(const std::string& ordner) {
    return schreibeIkone({"cable.connector", 0x2f9bd6, 0x124f91}, ordner + "/mobilsteg-bordlotse.icns") &&
           schreibeIkone({"lock.shield.fill", 0x4cae7b, 0x135c4a}, ordner + "/mobilsteg-vpnlotse.icns");
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
    const bool ikonen = anzahl == 3 && std::string(worte[1]) == "--ikonen";
    if (anzahl != 2 && !ikonen) {
        std::fprintf(stderr, "Aufruf: mobilsteg-bilder [--ikonen] ORDNER\n");
        return 2;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const std::string ordner = worte[anzahl - 1];
    ::setenv("QT_SCALE_FACTOR", "2", 1);
    const QtBetrieb qt(anzahl, worte);
    QFont schrift = QApplication::font();
    schrift.setPixelSize(13); // as large as a Mac's
    QApplication::setFont(schrift);
    if (ikonen ? maleIkonen(ordner) : maleBilder(ordner))
        return 0;
    std::fprintf(stderr, "mobilsteg-bilder: In %s lässt sich nicht schreiben\n", ordner.c_str());
    return 1;
}
