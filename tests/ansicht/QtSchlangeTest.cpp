// The queue on Qt's loop keeps the contract of all queues.

#include "ansicht/qt/QtSchlange.hpp"

#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

#include <QCoreApplication>
#include <QTimer>

using namespace mobilsteg;

namespace {

struct Qtbank final : Schlangenbank {
    Qtbank() { zeitgeber.start(std::chrono::milliseconds(1)); }
    Schlange& q() override { return q_; }
    void halt() override { q_.halt(); }
    void laufeWeiter() override { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); }

    int anzahl = 0;
    QCoreApplication anwendung{anzahl, nullptr};
    QTimer zeitgeber; // so that the loop looks at the condition now and then
    QtSchlange q_{"main"};
};

} // namespace

std::unique_ptr<Schlangenbank> mobilsteg::neueBank() {
    return std::make_unique<Qtbank>();
}
