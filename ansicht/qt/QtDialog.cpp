#include "ansicht/qt/QtDialog.hpp"

#include "ansicht/qt/Wandlung.hpp"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <algorithm>

namespace mobilsteg {

namespace {

/// A message box presses one of its buttons when it is closed by other means, or refuses to close; this one
/// just goes away.
class Meldung final : public QMessageBox {
protected:
    void keyPressEvent(QKeyEvent* ereignis) override {
        if (ereignis->matches(QKeySequence::Cancel))
            done(QDialog::Rejected);
        else
            QMessageBox::keyPressEvent(ereignis);
    }

    void closeEvent(QCloseEvent* ereignis) override {
        ereignis->accept();
        done(QDialog::Rejected);
    }
};

QString alsText(const std::string& text) {
    QString t = qtText(text);
    return t.replace('&', "&&");
}

} // namespace

int QtDialog::frage(const Frage& frage) {
    Meldung meldung;
    meldung.setObjectName("frage");
    meldung.setWindowTitle(qtText(frage.nachricht)); // else it would be the file name of the program
    meldung.setIcon(QMessageBox::Information);
    meldung.setTextFormat(Qt::PlainText);
    meldung.setText(qtText(frage.nachricht));
    meldung.setInformativeText(qtText(frage.erlaeuterung));

    // All of one role: each platform puts these in the order of their adding, the first where its default
    // button belongs.
    std::vector<QAbstractButton*> knoepfe;
    for (const auto& text : frage.knoepfe) {
        auto* knopf = meldung.addButton(alsText(text), QMessageBox::AcceptRole);
        knopf->setObjectName("frage." + qtText(text));
        if (knoepfe.empty())
            meldung.setDefaultButton(knopf);
        knoepfe.push_back(knopf);
    }

    // A program without a window of its own stays in the background unless it asks for more than `show`.
    QTimer::singleShot(0, &meldung, [&meldung] {
        meldung.raise();
        meldung.activateWindow();
    });
    meldung.exec();

    const auto gewaehlt = std::find(knoepfe.begin(), knoepfe.end(), meldung.clickedButton());
    return gewaehlt == knoepfe.end() ? -1 : static_cast<int>(gewaehlt - knoepfe.begin());
}

} // namespace mobilsteg
