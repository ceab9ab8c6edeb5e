#include "ansicht/qt/Text.hpp"

#include "ansicht/qt/Gestalt.hpp"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr int schmalste = 20;
constexpr QChar bruchstelle(0x200b); // has no width; lines may end there

QString mitBruchstellen(const QString& text, const QFontMetrics& mass, int breite) {
    QString ergebnis;
    for (const QString& wort : text.split(' ')) {
        ergebnis += ergebnis.isNull() ? "" : " ";
        if (mass.horizontalAdvance(wort) <= breite) {
            ergebnis += wort;
            continue;
        }
        QTextBoundaryFinder zeichen(QTextBoundaryFinder::Grapheme, wort);
        for (qsizetype von = 0, bis = 0; (bis = zeichen.toNextBoundary()) >= 0; von = bis)
            ergebnis += (von == 0 ? QString() : QString(bruchstelle)) + wort.mid(von, bis - von);
    }
    return ergebnis;
}

} // namespace

Text::Text(const QFont& schrift, Farbe farbe, int breite, QWidget* eltern)
    : QLabel(eltern), farbe_(farbe), breite_(breite) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setFont(schrift);
    faerbe();
}

void Text::zeige(const std::string& inhalt) {
    const QString neu = qtText(inhalt);
    if (neu == inhalt_)
        return;
    inhalt_ = neu;
    setText(mitBruchstellen(neu, fontMetrics(), breite_));
    if (waehlbar())
        setAccessibleDescription(neu);
    else
        setAccessibleName(neu);
}

void Text::machWaehlbar(const std::string& name) {
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setAccessibleName(qtText(name));
}

void Text::beimKlick(std::function<void()> aufgabe) {
    klick_ = std::move(aufgabe);
    setCursor(klick_ ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

// A label left to itself proposes a width of its own liking and wraps at it.
QSize Text::sizeHint() const {
    const int breite = fontMetrics().size(0, text()).width() + 1;
    return {breite, heightForWidth(breite)};
}

QSize Text::minimumSizeHint() const {
    return {std::min(sizeHint().width(), schmalste), fontMetrics().height()};
}

void Text::changeEvent(QEvent* ereignis) {
    QLabel::changeEvent(ereignis);
    if (ereignis->type() == QEvent::PaletteChange)
        faerbe();
}

/// The parent's palette decides, since the own one bears the colour already.
void Text::faerbe() {
    if (parentWidget() == nullptr)
        return;
    const QColor neu = ton(farbe_, parentWidget()->palette());
    QPalette eigene = palette();
    if (eigene.color(QPalette::WindowText) == neu)
        return;
    eigene.setColor(QPalette::WindowText, neu);
    setPalette(eigene);
}

void Text::kopiere() const {
    QApplication::clipboard()->setText(selectedText().remove(bruchstelle));
}

// Qt's own menu speaks the user's language only where its translations are installed.
void Text::contextMenuEvent(QContextMenuEvent* ereignis) {
    if (!waehlbar()) {
        ereignis->ignore();
        return;
    }
    auto* menue = new QMenu(this);
    menue->setAttribute(Qt::WA_DeleteOnClose);
    auto* kopieren = menue->addAction("Kopieren");
    kopieren->setEnabled(hasSelectedText());
    connect(kopieren, &QAction::triggered, this, &Text::kopiere);
    connect(menue->addAction("Alles auswählen"), &QAction::triggered, this,
            [this] { setSelection(0, static_cast<int>(text().size())); });
    menue->popup(ereignis->globalPos());
}

void Text::keyPressEvent(QKeyEvent* ereignis) {
    if (waehlbar() && ereignis->matches(QKeySequence::Copy))
        kopiere();
    else
        QLabel::keyPressEvent(ereignis);
}

void Text::mousePressEvent(QMouseEvent* ereignis) {
    if (!klick_)
        QLabel::mousePressEvent(ereignis);
}

void Text::mouseReleaseEvent(QMouseEvent* ereignis) {
    if (!klick_)
        QLabel::mouseReleaseEvent(ereignis);
    else if (ereignis->button() == Qt::LeftButton && rect().contains(ereignis->position().toPoint()))
        klick_();
}

} // namespace mobilsteg
