#include "ansicht/qt/QtBetrieb.hpp"

#include "plattform/Oberflaeche.hpp"

#include <QFont>
#include <QMetaObject>

#include <clocale>

namespace mobilsteg {

bool QtBetrieb::moeglich() {
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || anzeigeVorhanden();
}

QtBetrieb::QtBetrieb(int& argc, char** argv) : anwendung_(argc, argv), schlange_("main") {
    // Qt takes the user's locale over; a decimal point that we are to replace must be the one we look for.
    std::setlocale(LC_NUMERIC, "C");
    // The panel comes and goes; the program stays.
    QApplication::setQuitOnLastWindowClosed(false);
    // The panel's smallest text is three points smaller than its controls', and has to stay readable.
    constexpr double kleinsteSchrift = 11;
    QFont schrift = QApplication::font();
    if (schrift.pointSizeF() > 0 && schrift.pointSizeF() < kleinsteSchrift) {
        schrift.setPointSizeF(kleinsteSchrift);
        QApplication::setFont(schrift);
    }
    alsMenueleistenprogramm(); // Qt makes one without a bundle an ordinary one
}

void QtBetrieb::laufe() {
    QApplication::exec();
    schlange_.halt();
}

void QtBetrieb::beende() {
    // `exit` and not `quit`, which any window may refuse; and not as a job, which would wait for a dialog.
    QMetaObject::invokeMethod(
        &anwendung_, [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
}

} // namespace mobilsteg
