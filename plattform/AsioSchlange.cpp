#include "plattform/AsioSchlange.hpp"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <atomic>
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
    // Hint 1: one thread runs it, so Asio may skip its inner hand-overs.
    asio::io_context kontext{1};
    asio::executor_work_guard<asio::io_context::executor_type> arbeit{kontext.get_executor()};
    std::thread faden;
};

namespace {

struct Takt : std::enable_shared_from_this<Takt> {
    Takt(asio::io_context& kontext, Dauer p, Aufgabe a)
        : zeitgeber(kontext), periode(p), aufgabe(std::move(a)) {}

    void warte() {
        zeitgeber.async_wait([selbst = shared_from_this()](const std::error_code& fehler) {
            if (fehler || selbst->beendet)
                return;
            const auto jetzt = std::chrono::steady_clock::now().time_since_epoch();
            selbst->faellig = naechsterTakt(selbst->faellig, selbst->periode, jetzt);
            selbst->aufgabe();
            if (selbst->beendet)
                return;
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
    std::atomic<bool> beendet{false};
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

Wecker AsioSchlange::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    auto takt = std::make_shared<Takt>(innen_->kontext, periode, std::move(aufgabe));
    takt->faellig = std::chrono::steady_clock::now().time_since_epoch() + erste;
    async([takt] {
        takt->stelle();
        takt->warte();
    });
    // The timer object belongs to the queue's thread, so letting go only leaves word there.
    return Wecker(takt.get(), [takt](void*) mutable {
        takt->beendet = true;
        auto ausfuehrer = takt->zeitgeber.get_executor();
        asio::post(ausfuehrer, [takt = std::move(takt)] { takt->zeitgeber.cancel(); });
    });
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

} // namespace mobilsteg
