#include "ansicht/qt/Fensterplatz.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr int spalt = 4;

int geklemmt(int wert, int laenge, int anfang, int ende) {
    return std::max(anfang, std::min(wert, ende - laenge));
}

} // namespace

QPoint fensterplatz(const QRect& stueck, QSize fenster, const QRect& schirm) {
    const int rechts = schirm.x() + schirm.width();
    const int unten = schirm.y() + schirm.height();
    const int darunter = stueck.y() + stueck.height() + spalt;
    const int darueber = stueck.y() - spalt - fenster.height();
    const int x = stueck.center().x() - fenster.width() / 2;
    const int y = darunter + fenster.height() <= unten || darueber < schirm.y() ? darunter : darueber;
    return {geklemmt(x, fenster.width(), schirm.x(), rechts),
            geklemmt(y, fenster.height(), schirm.y(), unten)};
}

} // namespace mobilsteg
