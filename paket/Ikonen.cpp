// Draws the application icons of both editions with the menu bar's symbols, without a display.
// Usage: mobilsteg-ikonen ORDNER

#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "plattform/Dateien.hpp"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace mobilsteg;

namespace {

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
    const double symbol = 2 * std::round(kante * symbolanteil / 2); // whole pixels, else it is scaled
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

} // namespace

int main(int anzahl, char** worte) {
    if (anzahl != 2 || *worte[1] == '-') {
        const bool gefragt = anzahl == 2 && std::string(worte[1]) == "--hilfe";
        std::fputs("Aufruf: mobilsteg-ikonen ORDNER\nMalt die Ikonen beider Ausgaben.\n",
                   gefragt ? stdout : stderr);
        return gefragt ? 0 : 2;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QtBetrieb qt(anzahl, worte);
    if (maleIkonen(worte[1]))
        return 0;
    std::fprintf(stderr, "mobilsteg-ikonen: In %s lässt sich nicht schreiben\n", worte[1]);
    return 1;
}
