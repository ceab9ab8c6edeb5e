#pragma once

#include "plattform/Schlange.hpp"

#include <memory>

namespace mobilsteg {

/// A queue on Qt's event loop: the thread that creates it (QApplication's) is the queue's. Its jobs run one
/// at a time even while one of them waits in a loop of its own, for a dialog's answer for example: the others
/// then wait until it has returned.
class QtSchlange final : public Schlange {
public:
    explicit QtSchlange(std::string bezeichnung);

    /// On its own thread. Drops the waiting jobs and ends all repetitions.
    ~QtSchlange() override;

    /// Jobs handed over before the loop runs are kept for it; after `halt()` they are dropped.
    void async(Aufgabe aufgabe) override;

    /// Precise to the millisecond, never early.
    [[nodiscard]] Zeitgeber wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) override;

    /// True on the thread of the event loop, where what the user does arrives, too.
    [[nodiscard]] bool istHier() const override;

    /// Drops what waits and whatever comes from now on. Only on its own thread, once the loop has ended.
    void halt();

private:
    struct Innen;
    std::shared_ptr<Innen> innen_;
};

} // namespace mobilsteg
