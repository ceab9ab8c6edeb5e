#include "plattform/Signale.hpp"

#include "plattform/AsioSchlange.hpp"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

namespace mobilsteg {

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
