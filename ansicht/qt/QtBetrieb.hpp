#pragma once

#include "ansicht/qt/QtDialog.hpp"
#include "ansicht/qt/QtSchlange.hpp"

#include <QApplication>

namespace mobilsteg {

/// Qt's running: the application object, the main queue on its event loop, and the dialogs. At most one; it
/// is created on the main thread and goes after everything else that draws.
class QtBetrieb {
public:
    /// Whether a `QtBetrieb` can be created here: there is a display, or QT_QPA_PLATFORM names another way to
    /// draw. Without either Qt would end the program. Does not block.
    [[nodiscard]] static bool moeglich();

    /// `argc` and `argv` must outlive it; Qt takes out of them what is meant for it.
    QtBetrieb(int& argc, char** argv);

    [[nodiscard]] QtSchlange& schlange() { return schlange_; }
    [[nodiscard]] QtDialog& dialog() { return dialog_; }

    /// Runs the event loop on the calling (main) thread until `beende()`; afterwards the queue drops its
    /// jobs.
    void laufe();

    /// Makes `laufe()` return, and a dialog that is open close unanswered. From any thread, also before
    /// `laufe()`; does not block.
    void beende();

private:
    QApplication anwendung_;
    QtSchlange schlange_;
    QtDialog dialog_;
};

} // namespace mobilsteg
