#include "plattform/AsioSchlange.hpp"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

#include <cstdio>
#include <cstdlib>
#include <future>
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

struct AsioSchlange::Innen {
    // Without Asio's hint that one thread runs it: with it, what a job queues would come after what other
    // threads queue later while that job still runs.
    asio::io_context kontext;
    asio::executor_work_guard<asio::io_context::executor_type> arbeit{kontext.get_executor()};
    std::thread faden;
};

namespace {

struct Takt : std::enable_shared_from_this<Takt> {
    Takt(asio::io_context& kontext, Dauer p, Aufgabe a, std::weak_ptr<void> w)
        : zeitgeber(kontext), periode(p), aufgabe(std::move(a)), griff(std::move(w)) {}

    void warte() {
        zeitgeber.async_wait([selbst = shared_from_this()](const std::error_code& fehler) {
            if (fehler || selbst->griff.expired())
                return;
            const auto jetzt = std::chrono::steady_clock::now().time_since_epoch();
            selbst->faellig = naechsterTakt(selbst->faellig, selbst->periode, jetzt);
            selbst->aufgabe();
            selbst->stelle();
            selbst->warte();
        });
    }

    void stelle() {
        using Uhrzeit = std::chrono::steady_clock;
        zeitgeber.expires_at(Uhrzeit::time_point(std::chrono::duration_cast<Uhrzeit::duration>(faellig)));
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
    asio::post(innen_->kontext, std::move(aufgabe));
}

void AsioSchlange::sync(Aufgabe aufgabe) {
    if (istHier())
        schlangenFehler(*this, "sync auf die eigene Schlange");
    std::promise<void> fertig;
    auto gelaufen = fertig.get_future();
    asio::post(innen_->kontext, [&] {
        aufgabe();
        fertig.set_value();
    });
    gelaufen.wait();
}

Zeitgeber AsioSchlange::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    // The timer belongs to the queue's thread and goes with the queue. A handle that is let go of only lets
    // the next firing be the last and an idle one, so it may be held longer than the queue lives.
    Zeitgeber griff = std::make_shared<bool>();
    auto takt = std::make_shared<Takt>(innen_->kontext, periode, std::move(aufgabe), griff);
    takt->faellig = std::chrono::steady_clock::now().time_since_epoch() + erste;
    async([takt] {
        takt->stelle();
        takt->warte();
    });
    return griff;
}

bool AsioSchlange::istHier() const {
    return innen_->kontext.get_executor().running_in_this_thread();
}

void AsioSchlange::laufe() {
    innen_->kontext.run();
}

void AsioSchlange::halt() {
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
