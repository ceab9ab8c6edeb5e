#include "ansicht/qt/Fliesstext.hpp"

#include "ansicht/qt/Umbruch.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QPainter>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr int schmalste = 20;
constexpr double unbegrenzt = 100000;

} // namespace

Fliesstext::Fliesstext(Grad grad, Farbe farbe, QWidget* eltern) : QLabel(eltern), grad_(grad), farbe_(farbe) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true); // makes layouts ask for the height
    setFont(schriftart(grad_));
}

void Fliesstext::zeige(const std::string& inhalt) {
    if (const QString neu = qtText(inhalt); neu != text())
        setText(neu);
}

void Fliesstext::gestalte(Grad grad, Farbe farbe) {
    if (grad != grad_)
        setFont(schriftart(grad));
    grad_ = grad;
    farbe_ = farbe;
    update();
}

int Fliesstext::volleBreite() const {
    return Umbruch(text(), font(), unbegrenzt).breite();
}

QSize Fliesstext::sizeHint() const {
    const int breite = std::max(volleBreite(), 1);
    return {breite, heightForWidth(breite)};
}

QSize Fliesstext::minimumSizeHint() const {
    return {std::min(volleBreite(), schmalste), fontMetrics().height()};
}

int Fliesstext::heightForWidth(int breite) const {
    return Umbruch(text(), font(), breite).hoehe();
}

void Fliesstext::paintEvent(QPaintEvent*) {
    QPainter maler(this);
    maler.setPen(ton(farbe_, palette()));
    Umbruch(text(), font(), width(), alignment() & Qt::AlignHorizontal_Mask).male(maler);
}

} // namespace mobilsteg
