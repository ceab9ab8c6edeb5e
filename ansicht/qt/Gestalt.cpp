#include "ansicht/qt/Gestalt.hpp"

#include <QApplication>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr double kleinsteGroesse = 8;

double abzug(Grad grad) {
    switch (grad) {
    case Grad::zeile:
        return 1;
    case Grad::klein:
        return 2;
    case Grad::kleinste:
        return 3;
    case Grad::titel:
    case Grad::normal:
        break;
    }
    return 0;
}

/// A palette's own colour for such texts is too faint for small letters on most platforms.
QColor blass(QColor farbe) {
    farbe.setAlphaF(0.62F);
    return farbe;
}

QPalette palette(const QColor& fenster, const QColor& feld, const QColor& knopf, const QColor& text) {
    QPalette p(text, knopf, knopf.lighter(130), knopf.darker(150), knopf.darker(115), text, text, feld,
               fenster);
    p.setColor(QPalette::PlaceholderText, blass(text));
    p.setColor(QPalette::Highlight, QColor(0x2f, 0x7c, 0xf6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::ToolTipBase, feld);
    p.setColor(QPalette::ToolTipText, text);
    return p;
}

} // namespace

Grad grad(Schrift schrift) {
    switch (schrift) {
    case Schrift::titel:
        return Grad::titel;
    case Schrift::klein:
        return Grad::klein;
    case Schrift::kleinste:
        return Grad::kleinste;
    case Schrift::normal:
        break;
    }
    return Grad::zeile; // a sentence stands in the same size as the rows below it
}

QFont schriftart(Grad grad) {
    QFont schrift = QApplication::font();
    schrift.setBold(grad == Grad::titel);
    if (schrift.pointSizeF() > 0) // else its size is given in pixels, and so is its meaning
        schrift.setPointSizeF(std::max(schrift.pointSizeF() - abzug(grad), kleinsteGroesse));
    else
        schrift.setPixelSize(std::max(schrift.pixelSize() - static_cast<int>(abzug(grad)), 11));
    return schrift;
}

bool istDunkel(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
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

const char* farbname(Farbe farbe) {
    switch (farbe) {
    case Farbe::gruen:
        return "grün";
    case Farbe::gelb:
        return "gelb";
    case Farbe::rot:
        return "rot";
    case Farbe::orange:
        return "orange";
    case Farbe::sekundaer:
        return "grau";
    case Farbe::normal:
        break;
    }
    return "normal";
}

QPalette hellePalette() {
    return palette({0xf2, 0xf2, 0xf2}, Qt::white, {0xfc, 0xfc, 0xfc}, {0x1d, 0x1d, 0x1f});
}

QPalette dunklePalette() {
    return palette({0x29, 0x29, 0x2b}, {0x3c, 0x3c, 0x3f}, {0x50, 0x50, 0x53}, {0xf2, 0xf2, 0xf4});
}

} // namespace mobilsteg
