#pragma once

#include "plattform/Schlange.hpp"

namespace asio {
class io_context;
}

namespace mobilsteg {

/// A queue on real time: one io_context and one thread.
class AsioSchlange final : public Schlange {
public:
    enum class Faden {
        eigener, ///< the queue brings its own thread
        rufer    ///< the thread that calls `laufe()` is the queue's
    };

    explicit AsioSchlange(std::string bezeichnung, Faden faden = Faden::eigener);

    /// Lets a running job finish, drops the waiting ones, joins its own thread.
    ~AsioSchlange() override;

    void async(Aufgabe aufgabe) override;
    [[nodiscard]] Zeitgeber wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) override;
    [[nodiscard]] bool istHier() const override;

    /// Only with `Faden::rufer`: runs the queue's jobs on the calling thread until `halt()`.
    void laufe();

    /// Makes `laufe()` (or the own thread) return after the current job, drops the waiting jobs and all that
    /// come later. From any thread; does not block.
    void halt();

    /// For what lives on this queue with sockets or signals of its own.
    [[nodiscard]] asio::io_context& kontext();

private:
    struct Innen;
    std::unique_ptr<Innen> innen_;
};

/// Keeps a signal's handling alive.
using Signalquelle = std::shared_ptr<void>;

/// From now on `signal` no longer ends the process; `aufgabe(signal)` runs on `schlange` instead, never in
/// signal context. Signals that arrive together may be merged into one run. Tools that the program starts
/// get the default handling back.
[[nodiscard]] Signalquelle beiSignal(int signal, AsioSchlange& schlange, std::function<void(int)> aufgabe);

} // namespace mobilsteg
