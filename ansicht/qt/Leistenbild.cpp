#include "ansicht/qt/Leistenbild.hpp"

#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QApplication>
#include <QBuffer>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace mobilsteg {

namespace {

constexpr double schriftanteil = 0.72; // of the item's height
constexpr double abstandanteil = 0.25;

#if defined(Q_OS_MACOS)
constexpr bool beliebigBreit = true;
#else
constexpr bool beliebigBreit = false;
#endif

} // namespace

QPixmap leistenbild(const std::string& symbol, const std::string& kurz, const QColor& farbe, int hoehe) {
    const QString text = qtText(kurz);
    QFont schrift = QApplication::font();
    schrift.setPixelSize(static_cast<int>(std::lround(hoehe * schriftanteil)));
    const double textbreite =
        text.isEmpty() ? 0 : hoehe * abstandanteil + QFontMetricsF(schrift).horizontalAdvance(text) + 1;

    QPixmap bild(hoehe + static_cast<int>(std::ceil(textbreite)), hoehe);
    bild.fill(Qt::transparent);
    QPainter maler(&bild);
    maleSymbol(maler, QRectF(0, 0, hoehe, hoehe), symbol, farbe);
    maler.setFont(schrift);
    maler.setPen(farbe);
    maler.drawText(QRectF(hoehe * (1 + abstandanteil), 0, textbreite, hoehe),
                   Qt::AlignLeft | Qt::AlignVCenter, text);
    return bild;
}

std::string symbolpng(const std::string& symbol, int hoehe) {
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    symbolbild(symbol, hoehe, Qt::black, 1).save(&bytes, "PNG");
    return bytes.data().toStdString();
}

QIcon leistenikone(const std::string& symbol, const std::string& kurz, const QColor& farbe) {
    QIcon ikone;
    for (const int hoehe : {16, 18, 22, 24, 32, 36, 44, 48, 64})
        ikone.addPixmap(leistenbild(symbol, beliebigBreit ? kurz : "", farbe, hoehe));
    ikone.setIsMask(true); // a mac then colours it like its neighbours
    return ikone;
}

} // namespace mobilsteg
