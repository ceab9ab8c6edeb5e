// The queue on Qt's loop keeps the contract of all queues.

#include "ansicht/qt/QtSchlange.hpp"

#include "plattform/AsioSchlange.hpp"
#include "plattform/Uhr.hpp"
#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

#include <QCoreApplication>
#include <QTimer>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

class Qtbank final : public Schlangenbank {
public:
    Qtbank() { zeitgeber_.start(1ms); }
    Schlange& q() override { return q_; }
    Schlange& andere() override { return andere_; }
    Dauer jetzt() override { return uhr_.monoton(); }
    void schlafe(Dauer dauer) override { uhr_.schlafe(dauer); }
    bool laufeBis(const std::function<bool()>& bedingung) override {
        for (const Dauer ende = jetzt() + 30s; !bedingung();) {
            if (jetzt() > ende)
                return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

private:
    int anzahl_ = 1;
    char name_[5] = "test";
    char* worte_[2] = {name_, nullptr};
    QCoreApplication anwendung_{anzahl_, worte_};
    Systemuhr uhr_;
    QTimer zeitgeber_; // so that the loop looks at the condition now and then
    QtSchlange q_{"main"};
    AsioSchlange andere_{"andere"}; // goes first: its jobs may be waiting for the other
};

INSTANTIATE_TEST_SUITE_P(Qt, SchlangenVertrag,
                         testing::Values(Schlangenart{"Qt", [] { return std::make_unique<Qtbank>(); }}),
                         Schlangenart::benenne);

} // namespace
