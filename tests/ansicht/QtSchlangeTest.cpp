// The queue on Qt's loop keeps the contract of all queues.

#include "ansicht/qt/QtSchlange.hpp"

#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

#include <QCoreApplication>
#include <QTimer>

using namespace mobilsteg;

namespace {

class Qtbank final : public Schlangenbank {
public:
    Qtbank() { zeitgeber_.start(std::chrono::milliseconds(1)); }
    Schlange& q() override { return q_; }
    void halt() override { q_.halt(); }
    void laufeWeiter() override { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); }

private:
    int anzahl_ = 1;
    char name_[5] = "test";
    char* worte_[2] = {name_, nullptr};
    QCoreApplication anwendung_{anzahl_, worte_};
    QTimer zeitgeber_; // so that the loop looks at the condition now and then
    QtSchlange q_{"main"};
};

INSTANTIATE_TEST_SUITE_P(Qt, SchlangenVertrag, testing::Values("Qt"));

} // namespace

std::unique_ptr<Schlangenbank> mobilsteg::neueBank(const std::string&) {
    return std::make_unique<Qtbank>();
}
