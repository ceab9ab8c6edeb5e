#include "ansicht/qt/Beschriftung.hpp"

#include "ansicht/qt/Umbruch.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QAbstractButton>

namespace mobilsteg {

namespace {

/// An "&" would announce a shortcut.
QString woertlich(QString text) {
    return text.replace('&', "&&");
}

} // namespace

void beschrifte(QAbstractButton& knopf, const std::string& text, int breite) {
    const QString neu = qtText(text);
    knopf.setAccessibleName(neu);
    if (beschriftung(knopf) == neu)
        return;
    knopf.setText(woertlich(neu));
    const int textbreite = knopf.fontMetrics().size(Qt::TextShowMnemonic, knopf.text()).width();
    const int beiwerk = knopf.sizeHint().width() - textbreite; // the box, the frame, the icon
    if (textbreite + beiwerk > breite)
        knopf.setText(woertlich(Umbruch(neu, knopf.font(), breite - beiwerk).text()));
}

QString beschriftung(const QAbstractButton& knopf) {
    return Umbruch::ohne(knopf.text()).replace("&&", "&");
}

} // namespace mobilsteg
