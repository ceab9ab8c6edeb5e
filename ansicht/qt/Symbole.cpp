#include "ansicht/qt/Symbole.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <map>

namespace mobilsteg {

namespace {

constexpr double raster = 24; // the side of a symbol's square in the drawing

const std::map<std::string, const char*> beschreibungen = {
    {"cable.connector", "Stecker"},
    {"cable.connector.slash", "Stecker, durchgestrichen"},
    {"tram.tunnel.fill", "Bahn im Tunnel"},
    {"shield", "Schild"},
    {"shield.slash", "Schild, durchgestrichen"},
    {"lock.shield.fill", "Schild mit Schloss"},
    {"checkmark.shield.fill", "Schild mit Haken"},
    {"app", "Programm"},
};

QSvgRenderer& zeichnungen() {
    static QSvgRenderer alle(QString(":/symbole.svg"));
    return alle;
}

QString schluesselVon(const std::string& name) {
    return beschreibungen.contains(name) ? qtText(name) : "unbekannt";
}

/// The part of the square that is empty on the symbol's left: the system fills its square.
double luftLinks(const std::string& name) {
    return systemsymbol(name, 1) ? 0 : zeichnungen().boundsOnElement(schluesselVon(name)).left() / raster;
}

/// In a square of `kante` pixels: the system's symbol, or ours; the drawing's blackness becomes opacity.
QImage symbolbild(const std::string& name, int kante, const QColor& farbe) {
    if (const auto png = systemsymbol(name, kante)) {
        QImage bild =
            QImage::fromData(reinterpret_cast<const uchar*>(png->data()), static_cast<int>(png->size()));
        QPainter maler(&bild);
        maler.setCompositionMode(QPainter::CompositionMode_SourceIn);
        maler.fillRect(bild.rect(), farbe.rgb());
        return bild;
    }
    const QString schluessel = schluesselVon(name);
    QImage deckung(kante, kante, QImage::Format_Grayscale8);
    deckung.fill(Qt::white);
    QPainter maler(&deckung);
    // Left to itself, the renderer would stretch what the group really covers over the whole picture.
    const QTransform groesse = QTransform::fromScale(kante / raster, kante / raster);
    zeichnungen().render(&maler, schluessel, groesse.mapRect(zeichnungen().boundsOnElement(schluessel)));
    maler.end();
    deckung.invertPixels();

    QImage bild(kante, kante, QImage::Format_ARGB32_Premultiplied);
    bild.fill(farbe.rgb());
    bild.setAlphaChannel(deckung);
    return bild;
}

} // namespace

void maleSymbol(QPainter& maler, const QRectF& flaeche, const std::string& name, const QColor& farbe) {
    const double kante = std::min(flaeche.width(), flaeche.height());
    const double dichte = maler.deviceTransform().m11();
    const QImage bild = symbolbild(name, static_cast<int>(std::ceil(kante * dichte)), farbe);
    maler.save();
    maler.setRenderHint(QPainter::SmoothPixmapTransform);
    maler.setOpacity(farbe.alphaF());
    maler.drawImage(QRectF(flaeche.center() - QPointF(kante / 2, kante / 2), QSizeF(kante, kante)), bild);
    maler.restore();
}

void maleSymbolLinks(QPainter& maler, const QRectF& flaeche, const std::string& name, const QColor& farbe) {
    maleSymbol(maler, flaeche.translated(-luftLinks(name) * flaeche.width(), 0), name, farbe);
}

QString symbolbeschreibung(const std::string& name) {
    const auto bekannt = beschreibungen.find(name);
    return bekannt == beschreibungen.end() ? "Symbol" : bekannt->second;
}

QIcon leistenikone(const std::string& name, const QColor& farbe) {
    QIcon ikone;
    for (const int hoehe : {16, 18, 22, 24, 32, 36, 44, 48, 64})
        ikone.addPixmap(QPixmap::fromImage(symbolbild(name, hoehe, farbe)));
    ikone.setIsMask(true); // a mac then colours it like its neighbours
    return ikone;
}

std::string symbolpng(const std::string& name, int hoehe) {
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    symbolbild(name, hoehe, Qt::black).save(&bytes, "PNG");
    return bytes.data().toStdString();
}

} // namespace mobilsteg
