#include "ansicht/qt/QtDialog.hpp"

#include "ansicht/qt/Gestalt.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

namespace mobilsteg {

Fragefenster::Fragefenster(const Frage& frage) {
    setObjectName("frage");
    setWindowTitle(QCoreApplication::applicationName());
    setIcon(QMessageBox::Information);
    setText(qtText(frage.nachricht));
    if (auto* nachricht = findChild<QLabel*>("qt_msgbox_label")) {
        QFont fett = nachricht->font();
        fett.setBold(true);
        nachricht->setFont(fett);
    }
    setInformativeText(qtText(frage.erlaeuterung));
    for (auto* text : findChildren<QLabel*>())
        text->setTextFormat(Qt::PlainText);

    // All of one role: each platform puts these in the order of their adding, the first where its default
    // button belongs.
    for (const auto& text : frage.knoepfe) {
        auto* knopf = addButton(knopftext(text), QMessageBox::AcceptRole);
        knopf->setObjectName("frage." + qtText(text));
        knopf->setMinimumWidth(knopf->fontMetrics().size(Qt::TextShowMnemonic, knopf->text()).width() +
                               2 * knopfrand);
        if (knoepfe_.empty())
            setDefaultButton(knopf);
        knoepfe_.push_back(knopf);
    }
}

int Fragefenster::antwort() const {
    const auto gewaehlt = std::find(knoepfe_.begin(), knoepfe_.end(), clickedButton());
    return gewaehlt == knoepfe_.end() ? -1 : static_cast<int>(gewaehlt - knoepfe_.begin());
}

// A message box presses one of its buttons when it is closed by other means, or refuses to close; this one
// just goes away.

void Fragefenster::keyPressEvent(QKeyEvent* ereignis) {
    if (ereignis->matches(QKeySequence::Cancel))
        done(QDialog::Rejected);
    else
        QMessageBox::keyPressEvent(ereignis);
}

void Fragefenster::closeEvent(QCloseEvent* ereignis) {
    ereignis->accept();
}

int QtDialog::frage(const Frage& frage) {
    Fragefenster fenster(frage);
    // A program without a window of its own stays in the background unless it asks for more than `show`.
    QTimer::singleShot(0, &fenster, [&fenster] {
        nachVorn();
        fenster.raise();
        fenster.activateWindow();
    });
    fenster.exec();
    return fenster.antwort();
}

} // namespace mobilsteg
