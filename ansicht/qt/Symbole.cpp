#include "ansicht/qt/Symbole.hpp"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace mobilsteg {

namespace {

constexpr double raster = 24;

} // namespace

void maleSymbol(QPainter& maler, const QRectF& flaeche, std::string_view name, const QColor& farbe) {
    const double kante = std::min(flaeche.width(), flaeche.height());
    maler.save();
    maler.setRenderHint(QPainter::Antialiasing);
    maler.translate(flaeche.center() - QPointF(kante / 2, kante / 2));
    maler.scale(kante / raster, kante / raster);
    maler.fillPath(symbolpfad(name), farbe);
    maler.restore();
}

QPixmap symbolbild(std::string_view name, int kante, const QColor& farbe, double dichte) {
    const int pixel = static_cast<int>(std::lround(kante * dichte));
    QPixmap bild(pixel, pixel);
    bild.fill(Qt::transparent);
    bild.setDevicePixelRatio(dichte);
    QPainter maler(&bild);
    maleSymbol(maler, QRectF(0, 0, kante, kante), name, farbe);
    return bild;
}

} // namespace mobilsteg
