#include "ansicht/qt/QtDialog.hpp"

#include "ansicht/qt/Fragefenster.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QTimer>

namespace mobilsteg {

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
