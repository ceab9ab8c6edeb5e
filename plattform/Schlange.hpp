#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace mobilsteg {

using Aufgabe = std::function<void()>;
using Dauer = std::chrono::nanoseconds;

/// Keeps a repetition alive; the repetition ends with the last copy. May be let go of on any queue; a run
/// that has already begun is not interrupted.
using Zeitgeber = std::shared_ptr<void>;

/// A serial queue: its jobs run one at a time, in the order in which they were handed over.
class Schlange {
public:
    explicit Schlange(std::string bezeichnung) : bezeichnung_(std::move(bezeichnung)) {}
    virtual ~Schlange() = default;
    Schlange(const Schlange&) = delete;
    Schlange& operator=(const Schlange&) = delete;

    /// Queues `aufgabe` and returns at once. Callable from everywhere, the queue itself included. A job that
    /// will not run any more, because the queue has ended, is destroyed at once.
    virtual void async(Aufgabe aufgabe) = 0;

    /// Queues `aufgabe` and blocks until it has run. When the queue has been halted it returns without
    /// running it. On the queue itself it could only deadlock: that programming error ends the program.
    virtual void sync(Aufgabe aufgabe);

    /// Runs `aufgabe` after `erste` and from then on every `periode`, on the grid that the first firing
    /// set. Firings missed while the queue was busy are merged into one that runs as soon as it is free.
    [[nodiscard]] virtual Zeitgeber wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) = 0;

    /// Whether the caller runs as a job of this queue.
    [[nodiscard]] virtual bool istHier() const = 0;

    [[nodiscard]] const std::string& bezeichnung() const { return bezeichnung_; }

private:
    std::string bezeichnung_;
};

/// Says on standard error what was done wrong on which queue, and aborts. For programming errors only.
[[noreturn]] void schlangenFehler(const Schlange& schlange, const char* was);

/// The first point of the grid `letzte + n * periode` (n >= 1) that lies after `jetzt`.
[[nodiscard]] Dauer naechsterTakt(Dauer letzte, Dauer periode, Dauer jetzt);

} // namespace mobilsteg
