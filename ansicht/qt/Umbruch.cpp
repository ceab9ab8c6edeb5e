#include "ansicht/qt/Umbruch.hpp"

#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace mobilsteg {

namespace {

// Marks a line end that stands for no blank. It has no width.
constexpr QChar ohneBlank(0x200b);

} // namespace

Umbruch::Umbruch(const QString& text, const QFont& schrift, double breite, Qt::Alignment ausrichtung)
    : gelegt_(QString(text).replace('\n', QChar::LineSeparator), schrift) {
    QTextOption wahl(ausrichtung);
    wahl.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    gelegt_.setTextOption(wahl);
    gelegt_.beginLayout();
    double hoehe = 0;
    for (QTextLine zeile = gelegt_.createLine(); zeile.isValid(); zeile = gelegt_.createLine()) {
        zeile.setLineWidth(breite);
        zeile.setPosition(QPointF(0, hoehe));
        hoehe += zeile.height();
    }
    gelegt_.endLayout();
    hoehe_ = static_cast<int>(std::ceil(hoehe));
}

int Umbruch::breite() const {
    double breiteste = 0;
    for (int i = 0; i < gelegt_.lineCount(); ++i)
        breiteste = std::max(breiteste, gelegt_.lineAt(i).naturalTextWidth());
    return static_cast<int>(std::ceil(breiteste));
}

void Umbruch::male(QPainter& maler) const {
    gelegt_.draw(&maler, QPointF(0, 0));
}

QString Umbruch::text() const {
    QString ergebnis;
    for (int i = 0; i < gelegt_.lineCount(); ++i) {
        const QTextLine zeile = gelegt_.lineAt(i);
        QString stueck = gelegt_.text().mid(zeile.textStart(), zeile.textLength());
        const bool letzte = i + 1 == gelegt_.lineCount();
        if (!letzte && stueck.endsWith(' '))
            stueck.back() = '\n';
        else if (!letzte)
            stueck += QString(ohneBlank) + '\n';
        ergebnis += stueck;
    }
    return ergebnis;
}

QString Umbruch::ohne(QString umgebrochen) {
    return umgebrochen.remove(QString(ohneBlank) + '\n').replace('\n', ' ');
}

} // namespace mobilsteg
