#include "ansicht/qt/Gestalt.hpp"

#include <QApplication>

namespace mobilsteg {

namespace {

/// How many points smaller than the controls' text.
int abzug(Schrift schrift) {
    switch (schrift) {
    case Schrift::normal:
        return 1;
    case Schrift::klein:
        return 2;
    case Schrift::kleinste:
        return 3;
    case Schrift::titel:
        break;
    }
    return 0;
}

bool istDunkel(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// A palette's own colour for such texts is too faint for small letters on most platforms.
QColor blass(QColor farbe) {
    farbe.setAlphaF(0.62F);
    return farbe;
}

} // namespace

QString qtText(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString knopftext(const std::string& text) {
    return qtText(text).replace('&', "&&");
}

QFont schriftart(Schrift schrift) {
    QFont art = QApplication::font();
    art.setBold(schrift == Schrift::titel);
    if (art.pointSizeF() > 0)
        art.setPointSizeF(art.pointSizeF() - abzug(schrift));
    else // its size is given in pixels
        art.setPixelSize(art.pixelSize() - abzug(schrift));
    return art;
}

// Each has a contrast of at least 4.5 : 1 to the usual window backgrounds.
QColor ton(Farbe farbe, const QPalette& palette) {
    const bool dunkel = istDunkel(palette);
    switch (farbe) {
    case Farbe::sekundaer:
        return blass(palette.color(QPalette::WindowText));
    case Farbe::gruen:
        return dunkel ? QColor(0x32, 0xd7, 0x4b) : QColor(0x1b, 0x7a, 0x35);
    case Farbe::gelb:
        return dunkel ? QColor(0xff, 0xd6, 0x0a) : QColor(0x7d, 0x5f, 0x00);
    case Farbe::rot:
        return dunkel ? QColor(0xff, 0x69, 0x61) : QColor(0xc4, 0x21, 0x1b);
    case Farbe::orange:
        return dunkel ? QColor(0xff, 0x9f, 0x0a) : QColor(0xa8, 0x4b, 0x00);
    case Farbe::normal:
        break;
    }
    return palette.color(QPalette::WindowText);
}

QColor leuchtton(Farbe farbe, const QPalette& palette) {
    if (istDunkel(palette))
        return ton(farbe, palette);
    switch (farbe) {
    case Farbe::gruen:
        return {0x2f, 0xb3, 0x50};
    case Farbe::gelb:
        return {0xf5, 0xbf, 0x00};
    case Farbe::rot:
        return {0xe0, 0x36, 0x2e};
    case Farbe::orange:
        return {0xf0, 0x87, 0x00};
    case Farbe::normal:
    case Farbe::sekundaer:
        break;
    }
    return ton(farbe, palette);
}

QColor akzent(const QPalette& palette) {
    return istDunkel(palette) ? QColor(0x6c, 0xb0, 0xff) : QColor(0x0a, 0x5b, 0xd0);
}

QString punktbedeutung(Farbe farbe) {
    if (farbe == Farbe::gruen)
        return "verbunden";
    return farbe == Farbe::gelb ? "in Arbeit" : "gestört";
}

} // namespace mobilsteg
