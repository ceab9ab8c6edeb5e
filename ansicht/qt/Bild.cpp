#include "ansicht/qt/Bild.hpp"

#include "ansicht/qt/Fragefenster.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Leistenbild.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QImage>
#include <QPainter>

#include <array>
#include <cmath>

namespace mobilsteg {

namespace {

constexpr std::array<int, 4> kanten = {16, 24, 32, 64};
constexpr int zeilenhoehe = 76;
constexpr int spaltenbreite = 80;
constexpr int namensbreite = 190;
constexpr int stueckbreite = 130;
constexpr int stueckhoehe = 18;

QImage leinwand(QSize groesse, double massstab) {
    QImage bild((QSizeF(groesse) * massstab).toSize(), QImage::Format_ARGB32_Premultiplied);
    bild.setDevicePixelRatio(massstab);
    bild.fill(Qt::transparent);
    return bild;
}

/// The item as a mac's menu bar shows it.
void maleStueck(QPainter& maler, QPoint ecke, const std::string& symbol, const QColor& farbe,
                double massstab) {
    QPixmap bild = leistenbild(symbol, "48 ms", farbe, static_cast<int>(std::lround(stueckhoehe * massstab)));
    bild.setDevicePixelRatio(massstab);
    maler.drawPixmap(ecke, bild);
}

} // namespace

bool maleBild(const Baum& baum, bool dunkel, const std::string& pfadPng, double massstab) {
    Panelfenster panel([](const Aktion&) {});
    panel.setPalette(dunkel ? dunklePalette() : hellePalette());
    panel.zeichne(baum);
    QImage bild = leinwand(panel.size(), massstab);
    panel.render(&bild);
    return bild.save(qtText(pfadPng), "PNG");
}

bool maleFrage(const Frage& frage, bool dunkel, const std::string& pfadPng, double massstab) {
    Fragefenster fenster(frage);
    fenster.setPalette(dunkel ? dunklePalette() : hellePalette());
    fenster.ensurePolished();
    fenster.setAttribute(Qt::WA_DontShowOnScreen); // it takes its final size only when it is shown
    fenster.show();
    QImage bild = leinwand(fenster.size(), massstab);
    fenster.render(&bild);
    return bild.save(qtText(pfadPng), "PNG");
}

bool maleSymboltafel(bool dunkel, const std::string& pfadPng, double massstab) {
    const QPalette palette = dunkel ? dunklePalette() : hellePalette();
    const QColor farbe = palette.color(QPalette::WindowText);
    std::vector<std::string> namen = symbolnamen();
    namen.emplace_back("unbekannt");
    const int breite = namensbreite + spaltenbreite * static_cast<int>(kanten.size()) + stueckbreite;
    QImage bild = leinwand({breite, zeilenhoehe * static_cast<int>(namen.size())}, massstab);
    bild.fill(palette.color(QPalette::Window));

    QPainter maler(&bild);
    maler.setFont(schriftart(Grad::normal));
    maler.setPen(farbe);
    int y = 0;
    for (const auto& name : namen) {
        maler.drawText(QRect(Masse::rand, y, namensbreite, zeilenhoehe), Qt::AlignLeft | Qt::AlignVCenter,
                       qtText(name));
        int x = namensbreite;
        for (const int kante : kanten) {
            const QRect platz(x, y, spaltenbreite, zeilenhoehe);
            maler.drawPixmap(platz.center() - QPoint(kante / 2, kante / 2),
                             symbolbild(name, kante, farbe, massstab));
            x += spaltenbreite;
        }
        maleStueck(maler, {x, y + (zeilenhoehe - stueckhoehe) / 2}, name, farbe, massstab);
        y += zeilenhoehe;
    }
    return bild.save(qtText(pfadPng), "PNG");
}

} // namespace mobilsteg
