#include "ansicht/qt/Zeichen.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Symbole.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QFontMetrics>
#include <QPainter>

namespace mobilsteg {

namespace {

constexpr float randstaerke = 0.6F;
constexpr float strichstaerke = 0.16F;

int zeilenhoehe() {
    return QFontMetrics(schriftart(Grad::zeile)).height();
}

} // namespace

Punkt::Punkt(QWidget* eltern) : QWidget(eltern) {
    setFixedSize(Masse::punkt, Masse::punkt);
}

void Punkt::zeige(Farbe farbe) {
    farbe_ = farbe;
    setAccessibleName(QString("Zustand: ") + farbname(farbe));
    update();
}

void Punkt::paintEvent(QPaintEvent*) {
    QPainter maler(this);
    maler.setRenderHint(QPainter::Antialiasing);
    // The edge keeps a bright circle visible on a bright window.
    QColor rand = ton(farbe_, palette());
    rand.setAlphaF(randstaerke);
    maler.setPen(QPen(rand, 1));
    maler.setBrush(leuchtton(farbe_, palette()));
    maler.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

Symbolfeld::Symbolfeld(QWidget* eltern) : QWidget(eltern) {
    setFixedSize(zeilenhoehe(), zeilenhoehe());
}

void Symbolfeld::zeige(const std::string& symbol, Farbe farbe) {
    symbol_ = symbol;
    farbe_ = farbe;
    setAccessibleName(symbolbeschreibung(symbol));
    update();
}

void Symbolfeld::paintEvent(QPaintEvent*) {
    QPainter maler(this);
    maleSymbol(maler, rect(), symbol_, ton(farbe_, palette()));
}

Strich::Strich(QWidget* eltern) : QWidget(eltern) {
    setFixedHeight(1);
}

void Strich::paintEvent(QPaintEvent*) {
    QColor farbe = palette().color(QPalette::WindowText);
    farbe.setAlphaF(strichstaerke);
    QPainter(this).fillRect(rect(), farbe);
}

} // namespace mobilsteg
