#include "ansicht/qt/Wertfeld.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "ansicht/qt/Umbruch.hpp"
#include "ansicht/qt/Wandlung.hpp"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QTextDocument>
#include <QTextOption>
#include <QWheelEvent>

#include <cmath>

namespace mobilsteg {

namespace {

constexpr int schmalste = 20;

} // namespace

Wertfeld::Wertfeld(QWidget* eltern) : QTextEdit(eltern) {
    setReadOnly(true);
    setAcceptRichText(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::ClickFocus);
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    setFont(schriftart(Grad::zeile));

    QSizePolicy platz(QSizePolicy::Expanding, QSizePolicy::Preferred);
    platz.setHeightForWidth(true);
    setSizePolicy(platz);
}

void Wertfeld::zeige(const std::string& wert) {
    const QString neu = qtText(wert);
    if (neu == this->wert())
        return;
    setPlainText(neu);
    updateGeometry();
}

QString Wertfeld::wert() const {
    // `toPlainText` would turn unbreakable blanks into others.
    return document()->toRawText().replace(QChar::ParagraphSeparator, '\n');
}

QSize Wertfeld::sizeHint() const {
    const int breite = static_cast<int>(std::ceil(document()->idealWidth()));
    return {breite, heightForWidth(breite)};
}

QSize Wertfeld::minimumSizeHint() const {
    return {schmalste, fontMetrics().height()};
}

int Wertfeld::heightForWidth(int breite) const {
    return Umbruch(wert(), font(), breite).hoehe();
}

// Qt's own menu speaks the user's language only where its translations are installed.
void Wertfeld::contextMenuEvent(QContextMenuEvent* ereignis) {
    auto* menue = new QMenu(this);
    menue->setAttribute(Qt::WA_DeleteOnClose);
    auto* kopieren = menue->addAction("Kopieren");
    kopieren->setEnabled(textCursor().hasSelection());
    connect(kopieren, &QAction::triggered, this, &QTextEdit::copy);
    connect(menue->addAction("Alles auswählen"), &QAction::triggered, this, &QTextEdit::selectAll);
    menue->popup(ereignis->globalPos());
}

// It has nothing to scroll; the panel around it may.
void Wertfeld::wheelEvent(QWheelEvent* ereignis) {
    ereignis->ignore();
}

void Wertfeld::keyPressEvent(QKeyEvent* ereignis) {
    if (ereignis->key() == Qt::Key_Escape)
        ereignis->ignore(); // the window's
    else
        QTextEdit::keyPressEvent(ereignis);
}

} // namespace mobilsteg
