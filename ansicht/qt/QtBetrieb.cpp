#include "ansicht/qt/QtBetrieb.hpp"

#include "plattform/Oberflaeche.hpp"

#include <QMetaObject>

namespace mobilsteg {

QtBetrieb::QtBetrieb(int& argc, char** argv) : anwendung_(argc, argv), schlange_("main") {
    // The panel comes and goes; the program stays.
    QApplication::setQuitOnLastWindowClosed(false);
    alsMenueleistenprogramm(); // Qt makes one without a bundle an ordinary one
}

void QtBetrieb::laufe() {
    QApplication::exec();
    schlange_.halt();
}

void QtBetrieb::beende() {
    // `exit` and not `quit`, which any window may refuse; and not as a job, which would wait for a dialog.
    QMetaObject::invokeMethod(
        &anwendung_, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

} // namespace mobilsteg
