#include "ansicht/qt/Ikone.hpp"

#include "ansicht/qt/Symbole.hpp"
#include "plattform/Dateien.hpp"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

namespace mobilsteg {

namespace {

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

std::string alsPng(const QImage& bild) {
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    bild.save(&bytes, "PNG");
    return bytes.data().toStdString();
}

/// Big-endian, the header's own eight bytes included.
std::string mitKopf(const std::string& art, const std::string& inhalt) {
    const std::size_t laenge = inhalt.size() + 8;
    std::string stueck = art;
    for (const int stelle : {24, 16, 8, 0})
        stueck += static_cast<char>((laenge >> stelle) & 0xFFU);
    return stueck + inhalt;
}

} // namespace

bool schreibeIkone(const Ikone& ikone, const std::string& pfad) {
    std::string inhalt;
    for (const auto& [art, kante] : stuecke)
        inhalt += mitKopf(art, alsPng(male(ikone, kante)));
    return schreibeAtomar(pfad, mitKopf("icns", inhalt), Haltbarkeit::fluechtig);
}

} // namespace mobilsteg
