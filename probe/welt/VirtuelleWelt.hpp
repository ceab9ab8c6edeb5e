#pragma once

#include "plattform/Schlange.hpp"
#include "plattform/Uhr.hpp"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace mobilsteg {

/// Queues and clock under virtual time. One job runs at a time; while it sleeps or waits for another queue
/// the other queues go on; when nothing can run, time leaps to the next thing due. Which of several ready
/// jobs comes first is drawn from the seed, so that a seed replays an interleaving exactly.
///
/// Time stands still outside `laufe` and `laufeBis`, which the test's own thread calls.
class VirtuelleWelt final : private Uhr {
public:
    explicit VirtuelleWelt(std::uint64_t samen = 1);
    ~VirtuelleWelt() override;

    /// A new queue of this world; lives as long as the world.
    [[nodiscard]] Schlange& schlange(const std::string& bezeichnung);

    [[nodiscard]] Uhr& uhr() { return *this; }

    /// Time since the world's beginning.
    [[nodiscard]] Dauer jetzt() const { return jetzt_; }

    /// Moves the wall clock; monotonic time does not change.
    void stelleWanduhr(Dauer um) { wandVersatz_ += um; }

    /// Lets `dauer` of virtual time pass.
    void laufe(Dauer dauer) { laufe(jetzt_ + dauer, nullptr); }

    /// Runs until `bedingung` holds, which is asked between jobs. False: `hoechstens` passed first.
    [[nodiscard]] bool laufeBis(const std::function<bool()>& bedingung, Dauer hoechstens);

    /// From inside a job: the process is killed. `laufe` returns at once and does nothing more until
    /// `begrabe` was called.
    [[noreturn]] void stirb();

    /// Unwinds the jobs that wait and drops those that are queued. Repetitions that are still held go on.
    void begrabe();

    /// The same for good; to be called before what the jobs refer to goes away.
    void beende();

    /// Called after every job.
    void beobachte(std::function<void()> nachJedemAuftrag) { beobachter_ = std::move(nachJedemAuftrag); }

    /// No job waits and none is queued.
    [[nodiscard]] bool ruht() const;

    /// How many jobs wait for other queues for ever: a deadlock. Asked between two runs.
    [[nodiscard]] std::size_t verklemmte() const;

private:
    struct ProzessZuEnde {}; ///< unwinds a waiting job
    struct Faden;
    struct Reihe;

    struct Takt {
        Reihe& reihe;
        Dauer periode;
        Aufgabe aufgabe;
        Dauer faellig;
        bool eingereiht = false;
    };

    /// A job in the middle of a sleep or a sync: until that time, or until that job has run.
    struct Wartender {
        std::optional<Dauer> bisZeit;
        std::shared_ptr<bool> bisFertig;
        Faden* faden = nullptr;
    };

    /// A queue's next job or a waiting one; neither: the test goes on.
    struct Naechstes {
        Reihe* reihe = nullptr;
        Wartender* wartender = nullptr;
    };

    [[nodiscard]] Zeitpunkt wand() const override;
    [[nodiscard]] Dauer monoton() const override { return jetzt_; }
    void schlafe(Dauer dauer) override { warte({jetzt_ + dauer, nullptr}); }

    void laufe(Dauer bis, const std::function<bool()>* bedingung);
    void warte(Wartender wartender);
    void fuehreAus(Reihe& reihe);
    void reiheTakteEin();
    [[nodiscard]] Naechstes naechstes();
    [[nodiscard]] Naechstes ziehe();
    [[nodiscard]] std::optional<Dauer> naechsteZeit() const;
    void lebe(Faden& ich);
    void weiterMit(const Naechstes& n);
    void wechsleZu(Faden& faden);

    std::mt19937_64 zufall_;
    Dauer jetzt_{}, wandVersatz_{}, grenze_{};
    const std::function<bool()>* bedingung_ = nullptr;
    bool zuEnde_ = false;
    std::function<void()> beobachter_;
    std::list<Reihe> reihen_;
    std::list<std::weak_ptr<Takt>> takte_;
    std::list<Wartender*> wartende_;
    std::vector<Naechstes> lose_; ///< kept for its memory only

    std::list<Faden> faeden_; ///< the test's own first
    std::vector<Faden*> freie_;
    Faden* wacher_;
    Reihe* laufende_ = nullptr; ///< whose job runs
    Reihe* auftrag_ = nullptr;  ///< whose job the thread woken next begins; none: it goes on with its own
};

} // namespace mobilsteg
