#include "ansicht/qt/Knopfflaeche.hpp"

#include "ansicht/qt/Beschriftung.hpp"
#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Wandlung.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr float gedrueckt = 0.6F;
constexpr int randabstand = 12; // at least; some styles leave next to nothing
constexpr int bildbreite = Masse::browsersymbol + Masse::browserabstand;

/// Sharp on the densest screens, too; none where the system knows no icons of applications.
QIcon anwendungsbild(const std::string& appPfad) {
    QPixmap bild;
    if (const auto png = programmbild(appPfad, 4 * Masse::browsersymbol))
        bild.loadFromData(reinterpret_cast<const uchar*>(png->data()), static_cast<uint>(png->size()), "PNG");
    return bild;
}

} // namespace

Knopfflaeche::Knopfflaeche(QWidget* eltern) : QPushButton(eltern) {
    setAutoDefault(false);
}

void Knopfflaeche::zeige(const Knopf& knopf) {
    setFlat(knopf.rahmenlos);
    farbe_ = knopf.farbe;
    mitBild_ = !knopf.appPfad.empty();
    bild_ = mitBild_ ? anwendungsbild(knopf.appPfad) : QIcon();
    beschrifte(*this, knopf.text, bedienbreite);
    setToolTip(qtText(knopf.hilfe));
    setAccessibleDescription(qtText(knopf.hilfe));
    setCursor(knopf.rahmenlos ? Qt::PointingHandCursor : Qt::ArrowCursor);
    updateGeometry();
    update();
}

QSize Knopfflaeche::inhaltsgroesse() const {
    const QSize schrift = fontMetrics().size(Qt::TextShowMnemonic, text());
    if (!mitBild_)
        return schrift;
    return {schrift.width() + bildbreite, std::max(schrift.height(), Masse::browsersymbol)};
}

QSize Knopfflaeche::sizeHint() const {
    const QSize inhalt = inhaltsgroesse();
    if (isFlat())
        return inhalt + QSize(0, 2);
    QStyleOptionButton wahl;
    initStyleOption(&wahl);
    const QSize ueblich = style()->sizeFromContents(QStyle::CT_PushButton, &wahl, inhalt, this);
    return ueblich.expandedTo({inhalt.width() + 2 * randabstand, 0});
}

QSize Knopfflaeche::minimumSizeHint() const {
    return sizeHint();
}

void Knopfflaeche::paintEvent(QPaintEvent* ereignis) {
    if (wieUeblich()) {
        QPushButton::paintEvent(ereignis);
        return;
    }
    QStylePainter maler(this);
    QStyleOptionButton wahl;
    initStyleOption(&wahl);
    wahl.text.clear();
    if (!isFlat()) {
        maler.drawControl(QStyle::CE_PushButton, wahl);
        const QSize groesse = inhaltsgroesse();
        const QPoint ecke((width() - groesse.width()) / 2, (height() - groesse.height()) / 2);
        maleInhalt(maler, QRect(ecke, groesse), palette().color(QPalette::ButtonText));
        return;
    }
    QColor farbe = farbe_ == Farbe::normal ? akzent(palette()) : ton(farbe_, palette());
    if (isDown())
        farbe.setAlphaF(gedrueckt);
    maleInhalt(maler, rect(), farbe);
    if (hasFocus()) {
        QStyleOptionFocusRect fokus;
        fokus.initFrom(this);
        maler.drawPrimitive(QStyle::PE_FrameFocusRect, fokus);
    }
}

void Knopfflaeche::maleInhalt(QPainter& maler, const QRect& flaeche, QColor farbe) const {
    QRect textplatz = flaeche;
    if (mitBild_) {
        const QRect bildplatz(flaeche.left(), flaeche.top() + (flaeche.height() - Masse::browsersymbol) / 2,
                              Masse::browsersymbol, Masse::browsersymbol);
        if (bild_.isNull())
            maleSymbol(maler, bildplatz, "app", farbe);
        else
            bild_.paint(&maler, bildplatz);
        textplatz.setLeft(flaeche.left() + bildbreite);
    }
    QFont schrift = font();
    schrift.setUnderline(isFlat() && underMouse());
    maler.setFont(schrift);
    maler.setPen(farbe);
    maler.drawText(textplatz, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, text());
}

} // namespace mobilsteg
