#pragma once

#include "kabel/Zustand.hpp"
#include "plattform/Schlange.hpp"

#include <functional>
#include <list>
#include <memory>

namespace mobilsteg {

/// Holds the published state: it is read and changed on the main queue only, and observers are told there.
class Zustandsspeicher {
public:
    using Beobachter = std::function<void(const Zustand&)>;
    using Aenderung = std::function<void(Zustand&)>;
    /// Ends the observation when it goes away.
    using Beobachtung = std::shared_ptr<Beobachter>;

    Zustandsspeicher(Schlange& haupt, Zustand anfang) : haupt_(haupt), zustand_(std::move(anfang)) {}

    /// From any queue: queues the change on the main queue.
    void veroeffentliche(Aenderung aenderung);

    /// On the main queue: changes at once.
    void aendere(const Aenderung& aenderung);

    /// Main queue only.
    [[nodiscard]] const Zustand& zustand() const { return zustand_; }

    /// Main queue only. `beobachter` runs there after changes, once for all that had come together by then;
    /// the state may equal the one before.
    [[nodiscard]] Beobachtung beobachte(Beobachter beobachter);

private:
    void melde();

    Schlange& haupt_;
    Zustand zustand_;
    bool meldungBestellt_ = false;
    std::list<std::weak_ptr<Beobachter>> beobachter_;
};

} // namespace mobilsteg
