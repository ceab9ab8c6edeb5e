#include "ansicht/qt/Textknopf.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QStyleOptionFocusRect>
#include <QStylePainter>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr float gedrueckt = 0.6F;
constexpr int bildbreite = Masse::browsersymbol + Masse::browserabstand;

/// Sharp on the densest screens, too; none where the system knows no icons of applications.
QIcon anwendungsbild(const std::string& appPfad) {
    QPixmap bild;
    if (const auto png = programmbild(appPfad, 4 * Masse::browsersymbol))
        bild.loadFromData(reinterpret_cast<const uchar*>(png->data()), static_cast<uint>(png->size()), "PNG");
    return bild;
}

} // namespace

Textknopf::Textknopf(const Knopf& knopf, QWidget* eltern)
    : QPushButton(eltern), farbe_(knopf.farbe), mitBild_(!knopf.appPfad.empty()),
      bild_(mitBild_ ? anwendungsbild(knopf.appPfad) : QIcon()) {
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
}

QSize Textknopf::sizeHint() const {
    const QSize schrift = fontMetrics().size(Qt::TextShowMnemonic, text());
    if (!mitBild_)
        return schrift + QSize(0, 2);
    return {schrift.width() + bildbreite, std::max(schrift.height(), Masse::browsersymbol) + 2};
}

void Textknopf::paintEvent(QPaintEvent*) {
    QStylePainter maler(this);
    QColor farbe = farbe_ == Farbe::normal ? akzent(palette()) : ton(farbe_, palette());
    if (isDown())
        farbe.setAlphaF(gedrueckt);
    QRect textplatz = rect();
    if (mitBild_) {
        const QRect bildplatz(0, (height() - Masse::browsersymbol) / 2, Masse::browsersymbol,
                              Masse::browsersymbol);
        if (bild_.isNull())
            maleSymbol(maler, bildplatz, "app", farbe);
        else
            bild_.paint(&maler, bildplatz);
        textplatz.setLeft(bildbreite);
    }
    QFont schrift = font();
    schrift.setUnderline(underMouse());
    maler.setFont(schrift);
    maler.setPen(farbe);
    maler.drawText(textplatz, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, text());
    if (hasFocus()) {
        QStyleOptionFocusRect fokus;
        fokus.initFrom(this);
        maler.drawPrimitive(QStyle::PE_FrameFocusRect, fokus);
    }
}

} // namespace mobilsteg
