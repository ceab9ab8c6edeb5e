#pragma once

#include "plattform/Schlange.hpp"
#include "plattform/Uhr.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace mobilsteg {

/// Queues and clock under virtual time. One job runs at a time; while it sleeps or waits for another queue
/// the other queues go on; when nothing can run, time leaps to the next thing due. Which of several ready
/// jobs comes first is drawn from the seed, so that a seed replays an interleaving exactly.
///
/// The world stands still except inside `laufe` and its like, which the test's own thread calls.
class VirtuelleWelt {
public:
    explicit VirtuelleWelt(std::uint64_t samen = 1);
    ~VirtuelleWelt();
    VirtuelleWelt(const VirtuelleWelt&) = delete;
    VirtuelleWelt& operator=(const VirtuelleWelt&) = delete;

    /// A new queue of this world; lives as long as the world.
    [[nodiscard]] Schlange& schlange(const std::string& bezeichnung);

    [[nodiscard]] Uhr& uhr();

    /// Time since the world's beginning.
    [[nodiscard]] Dauer jetzt() const;

    /// Sets the wall clock forth or back; monotonic time does not notice.
    void stelleWanduhr(Dauer um);

    /// Lets the world go on for `dauer` of its time.
    void laufe(Dauer dauer);

    /// Lets it go on until `bedingung` holds, asked between jobs. False: `hoechstens` passed first.
    [[nodiscard]] bool laufeBis(const std::function<bool()>& bedingung, Dauer hoechstens);

    /// From inside a job: all jobs end here, as with a process that is killed; `laufe` returns at once and
    /// does nothing more until `begrabe` was called.
    [[noreturn]] void stirb();

    /// After `stirb`: unwinds the jobs that waited and forgets those that stood in line. Clocks that somebody
    /// still holds go on; so does the time.
    void begrabe();

    /// Told after every job.
    void beobachte(std::function<void()> nachJedemAuftrag);

    /// Nothing is under way and nothing stands in line.
    [[nodiscard]] bool ruht() const;

    /// Ends every job that still waits, by unwinding it, and runs none any more. To be called before what the
    /// jobs refer to goes away.
    void beende();

    /// How many jobs wait for other queues that nothing will ever set free: a deadlock. Asked between two
    /// runs.
    [[nodiscard]] std::size_t verklemmte() const;

private:
    struct Teile;
    std::unique_ptr<Teile> teile_;
};

} // namespace mobilsteg
