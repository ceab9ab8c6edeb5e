#pragma once

#include "probe/welt/VirtuelleSchlange.hpp"

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace mobilsteg {

/// Unwinds a waiting job when its world ends.
struct WeltZuEnde {};

/// What a thread waits on until it is given the baton. Not a semaphore: those of the library spin before they
/// sleep, at the cost of the thread that has it.
class Stab {
public:
    void gib() {
        {
            const std::lock_guard wache(schloss_);
            da_ = true;
        }
        gekommen_.notify_one();
    }
    void nimm() {
        std::unique_lock wache(schloss_);
        gekommen_.wait(wache, [&] { return da_; });
        da_ = false;
    }

private:
    std::mutex schloss_;
    std::condition_variable gekommen_;
    bool da_ = false;
};

/// Drives a world under virtual time. Whichever thread holds the baton draws what goes on next, and hands
/// the baton over only when that has to run on another stack: a hand-over costs more than a whole job.
///
/// Only the holder of the baton touches any of this, so none of it needs a lock; the hand-over orders it.
class Weltlauf {
public:
    /// A thread that holds the baton or waits for it.
    struct Faden {
        Stab stab;
        VirtuelleSchlange* auftrag = nullptr; ///< whose job it is to begin with when it gets the baton
        std::thread thread;
    };

    /// A job in the middle of a sleep or a sync; its thread holds its stack.
    struct Wartender {
        std::optional<Dauer> bisZeit;
        std::shared_ptr<bool> bisFertig;
        Faden* faden = nullptr;
    };

    struct Takt {
        VirtuelleSchlange* schlange;
        Dauer periode;
        Aufgabe aufgabe;
        Dauer faellig;
        bool eingereiht = false;
    };

    explicit Weltlauf(std::uint64_t samen) : zufall_(samen) {}

    /// Lets the world run, from the test's own thread.
    void laufe(Dauer bis, const std::function<bool()>* bedingung);
    /// Called in the middle of a job: lets the world go on until the job's own turn comes again.
    void warte(Wartender& wartender);
    /// Unwinds every waiting job and drops what is queued; the world can live on.
    void begrabe();
    /// The same, and its threads end.
    void beende();

    Dauer jetzt{};
    Dauer wandVersatz{};
    bool zuEnde = false;
    VirtuelleSchlange* laufende = nullptr; ///< whose job runs; none while the next one is drawn
    std::function<void()> beobachter;
    std::list<VirtuelleSchlange> schlangen;
    std::list<std::weak_ptr<Takt>> takte;
    std::list<Wartender*> wartende;

private:
    /// A queue's next job or a waiting one; neither: the test goes on.
    struct Naechstes {
        VirtuelleSchlange* schlange = nullptr;
        Wartender* wartender = nullptr;
    };

    void lebe(Faden& ich);
    [[nodiscard]] Naechstes naechstes();
    [[nodiscard]] Naechstes ziehe();
    [[nodiscard]] Faden& fadenFuer(const Naechstes& n);
    void uebergib(Faden& faden);
    void reiheTakteEin();
    [[nodiscard]] std::optional<Dauer> naechsteZeit() const;
    [[nodiscard]] bool bereit(const Wartender& w) const {
        return w.bisZeit ? *w.bisZeit <= jetzt : *w.bisFertig;
    }

    std::mt19937_64 zufall_;
    Dauer grenze_{};
    const std::function<bool()>* bedingung_ = nullptr;
    std::vector<Naechstes> lose_;
    Faden rufer_; ///< the test's own thread
    Faden* amZug_ = &rufer_;
    std::list<Faden> faeden_;
    std::vector<Faden*> musse_; ///< threads without a job
};

} // namespace mobilsteg
