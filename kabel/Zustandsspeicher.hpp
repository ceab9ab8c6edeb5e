#pragma once

#include "kabel/Zustand.hpp"
#include "plattform/Schlange.hpp"

#include <functional>
#include <list>
#include <memory>
#include <optional>

namespace mobilsteg {

/// Where the state is published: it is read and changed on the main queue only, and observers are told there.
class Zustandsspeicher {
public:
    using Beobachter = std::function<void(const Zustand&)>;
    using Aenderung = std::function<void(Zustand&)>;
    /// Ends the observation when it goes away.
    using Beobachtung = std::shared_ptr<Beobachter>;

    Zustandsspeicher(Schlange& haupt, Zustand anfang);

    /// From any queue: queues the change on the main queue.
    void veroeffentliche(Aenderung aenderung);

    /// On the main queue: changes at once.
    void aendere(const Aenderung& aenderung);

    /// Main queue only.
    [[nodiscard]] const Zustand& zustand() const { return zustand_; }

    /// Main queue only. `beobachter` runs there after changes that really changed something, once for all
    /// that had come together by then.
    [[nodiscard]] Beobachtung beobachte(Beobachter beobachter);

private:
    void melde();

    Schlange& haupt_;
    Zustand zustand_;
    Zustand gemeldet_;
    bool meldungBestellt_ = false;
    std::list<std::weak_ptr<Beobachter>> beobachter_;
};

/// What one queue published last. The main thread is not woken to be told the same again.
template <class Wert>
class Zuletzt {
public:
    /// Whether `wert` differs from last time; remembers it.
    [[nodiscard]] bool neu(const Wert& wert) {
        if (wert_ == wert)
            return false;
        wert_ = wert;
        return true;
    }
    /// The state was changed by somebody else: the next value is new, whichever it is.
    void vergiss() { wert_.reset(); }

private:
    std::optional<Wert> wert_;
};

} // namespace mobilsteg
