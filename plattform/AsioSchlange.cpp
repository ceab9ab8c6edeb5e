#include "plattform/AsioSchlange.hpp"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <future>
#include <mutex>
#include <thread>

namespace mobilsteg {

void schlangenFehler(const Schlange& schlange, const char* was) {
    std::fprintf(stderr, "Programmierfehler: %s (Schlange \"%s\")\n", was, schlange.bezeichnung().c_str());
    std::abort();
}

Dauer naechsterTakt(Dauer letzte, Dauer periode, Dauer jetzt) {
    if (jetzt < letzte)
        return letzte + periode;
    return letzte + periode * ((jetzt - letzte) / periode + 1);
}

void Schlange::sync(Aufgabe aufgabe) {
    if (istHier())
        schlangenFehler(*this, "sync auf die eigene Schlange");
    auto fertig = std::make_shared<std::promise<void>>();
    const auto gelaufen = fertig->get_future();
    // The job owns the promise: if the job is dropped, the promise breaks and the wait ends.
    async([fertig = std::move(fertig), &aufgabe] {
        aufgabe();
        fertig->set_value();
    });
    gelaufen.wait();
}

struct AsioSchlange::Innen {
    void fuehreNaechstenAus() {
        Aufgabe aufgabe;
        {
            const std::lock_guard wache(schloss);
            if (wartende.empty())
                return;
            aufgabe = std::move(wartende.front());
            wartende.pop_front();
        }
        aufgabe();
    }

    // Without Asio's hint that one thread runs it: with it, what a job queues would come after what other
    // threads queue later while that job still runs.
    asio::io_context kontext;
    asio::executor_work_guard<asio::io_context::executor_type> arbeit{kontext.get_executor()};
    std::thread faden;

    std::mutex schloss; // guards both below
    std::deque<Aufgabe> wartende;
    bool angehalten = false;
};

namespace {

struct Takt : std::enable_shared_from_this<Takt> {
    using Zeit = std::chrono::steady_clock;

    Takt(asio::io_context& kontext, Dauer p, Aufgabe a, std::weak_ptr<void> w)
        : zeitgeber(kontext), periode(p), aufgabe(std::move(a)), griff(std::move(w)) {}

    void warte() {
        zeitgeber.expires_at(Zeit::time_point(std::chrono::duration_cast<Zeit::duration>(faellig)));
        zeitgeber.async_wait([selbst = shared_from_this()](const std::error_code& fehler) {
            if (fehler || selbst->griff.expired())
                return;
            selbst->faellig = naechsterTakt(selbst->faellig, selbst->periode, Zeit::now().time_since_epoch());
            selbst->aufgabe();
            selbst->warte();
        });
    }

    asio::steady_timer zeitgeber;
    Dauer periode;
    Dauer faellig{};
    Aufgabe aufgabe;
    std::weak_ptr<void> griff;
};

} // namespace

AsioSchlange::AsioSchlange(std::string bezeichnung, Faden faden)
    : Schlange(std::move(bezeichnung)), innen_(std::make_unique<Innen>()) {
    if (faden == Faden::eigener)
        innen_->faden = std::thread([this] { innen_->kontext.run(); });
}

AsioSchlange::~AsioSchlange() {
    halt();
    if (innen_->faden.joinable())
        innen_->faden.join();
}

void AsioSchlange::async(Aufgabe aufgabe) {
    {
        const std::lock_guard wache(innen_->schloss);
        if (innen_->angehalten)
            return;
        innen_->wartende.push_back(std::move(aufgabe));
    }
    asio::post(innen_->kontext, [innen = innen_.get()] { innen->fuehreNaechstenAus(); });
}

Zeitgeber AsioSchlange::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    // The timer belongs to the queue and goes with it; a handle may be held longer. The firing after the
    // handle is gone is the last one and does nothing.
    Zeitgeber griff = std::make_shared<bool>();
    auto takt = std::make_shared<Takt>(innen_->kontext, periode, std::move(aufgabe), griff);
    takt->faellig = Takt::Zeit::now().time_since_epoch() + erste;
    async([takt] { takt->warte(); });
    return griff;
}

bool AsioSchlange::istHier() const {
    return innen_->kontext.get_executor().running_in_this_thread();
}

void AsioSchlange::laufe() {
    innen_->kontext.run();
}

void AsioSchlange::halt() {
    std::deque<Aufgabe> verworfene; // destroyed without the lock held
    {
        const std::lock_guard wache(innen_->schloss);
        innen_->angehalten = true;
        verworfene.swap(innen_->wartende);
    }
    innen_->kontext.stop();
}

asio::io_context& AsioSchlange::kontext() {
    return innen_->kontext;
}

namespace {

struct Quelle : std::enable_shared_from_this<Quelle> {
    Quelle(asio::io_context& kontext, int signal, std::function<void(int)> a)
        : satz(kontext, signal), aufgabe(std::move(a)) {}

    void warte() {
        satz.async_wait([schwach = weak_from_this()](const std::error_code& fehler, int signal) {
            const auto selbst = schwach.lock();
            if (fehler || !selbst)
                return;
            selbst->aufgabe(signal);
            selbst->warte();
        });
    }

    asio::signal_set satz;
    std::function<void(int)> aufgabe;
};

} // namespace

Signalquelle beiSignal(int signal, AsioSchlange& schlange, std::function<void(int)> aufgabe) {
    auto quelle = std::make_shared<Quelle>(schlange.kontext(), signal, std::move(aufgabe));
    quelle->warte();
    return quelle;
}

} // namespace mobilsteg
