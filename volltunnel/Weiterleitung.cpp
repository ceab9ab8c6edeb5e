#include "volltunnel/Weiterleitung.hpp"

#include <asio/buffer.hpp>

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;
using Uhrzeit = std::chrono::steady_clock;

constexpr std::size_t ganzerBlock = 65'536;
// When so much waits to be written, each further connection gets this much only: 10,000 may stall.
constexpr std::size_t vielAusstehend = 24U << 20U;
constexpr std::size_t kleinerBlock = 1024;
constexpr int amStueck = 16; // blocks, before the other connections have their turn
constexpr std::chrono::minutes halbzuGeduld{5};

} // namespace

struct Weiterleitung::Horcher {
    tcp::acceptor annahme;
    Stelle wer{};        ///< of the connection being accepted
    bool wartet = false; ///< false: out of descriptors
};

class Weiterleitung::Verbindung : public std::enable_shared_from_this<Verbindung> {
public:
    Verbindung(Weiterleitung& w, tcp::socket app, std::uint16_t port)
        : w_(w), app_{std::move(app)}, draussen_{tcp::socket(w.kontext_)}, port_(port) {}

    void verbinde(const Tabelle::Fluss& fluss) {
        waehle(w_.kontext_, w_.auftrag_.proxy, w_.auftrag_.ziel(fluss),
               [ich = shared_from_this(), fluss](Ausgang ausgang, tcp::socket draussen) {
                   if (ich->zu_)
                       return;
                   ich->draussen_.socket = std::move(draussen);
                   const Zeit beginn = std::exchange(ich->zuletzt_, Uhrzeit::now());
                   if (ausgang != Ausgang::verbunden)
                       ich->reisseAb();
                   // Behind the reset: who hears of a failure may end everything.
                   ich->w_.auftrag_.ausgang(fluss, ausgang, beginn);
                   if (!ich->zu_) {
                       ich->pumpe(ich->app_, ich->draussen_);
                       ich->pumpe(ich->draussen_, ich->app_);
                   }
               });
    }

    void reisseAb() {
        std::error_code egal;
        for (Seite* seite : {&app_, &draussen_})
            seite->socket.set_option(asio::socket_base::linger(true, 0), egal);
        ende();
    }

    [[nodiscard]] bool stehtHalbzu(Zeit jetzt) const {
        return app_.sagtNichtsMehr != draussen_.sagtNichtsMehr && zuletzt_ + halbzuGeduld <= jetzt;
    }

private:
    struct Seite {
        tcp::socket socket;
        std::string rest{}; ///< still to be written to it; nothing is read for it meanwhile
        bool sagtNichtsMehr = false;
    };

    /// Carries what is there, then waits for more or for room.
    void pumpe(Seite& von, Seite& nach) {
        for (int i = 0; i < amStueck && !zu_; ++i) {
            std::error_code fehler;
            const std::size_t n = von.socket.read_some(
                asio::buffer(w_.puffer_.data(), w_.ausstehend_ > vielAusstehend ? kleinerBlock : ganzerBlock),
                fehler);
            if (fehler == asio::error::would_block)
                break;
            if (fehler == asio::error::eof)
                return endeVon(von, nach);
            if (fehler)
                return reisseAb();
            zuletzt_ = Uhrzeit::now();
            (&von == &app_ ? w_.zaehler_.hinaus : w_.zaehler_.herein) += n;
            if (!schreibe(nach, std::string_view(w_.puffer_.data(), n)))
                return;
        }
        if (!zu_)
            von.socket.async_wait(tcp::socket::wait_read,
                                  [ich = shared_from_this(), &von, &nach](std::error_code e) {
                                      if (!e)
                                          ich->pumpe(von, nach);
                                  });
    }

    /// False: not all of it; it goes on by itself, and reading with it.
    bool schreibe(Seite& nach, std::string_view bytes) {
        std::error_code fehler;
        const std::size_t n = nach.socket.write_some(asio::buffer(bytes), fehler);
        if (fehler && fehler != asio::error::would_block) {
            reisseAb();
            return false;
        }
        if (n == bytes.size())
            return true;
        w_.ausstehend_ += bytes.size() - n;
        nach.rest = bytes.substr(n);
        warteAufPlatz(nach);
        return false;
    }

    void warteAufPlatz(Seite& nach) {
        nach.socket.async_wait(tcp::socket::wait_write, [ich = shared_from_this(), &nach](std::error_code e) {
            if (e || ich->zu_)
                return;
            const std::string rest = std::exchange(nach.rest, {});
            ich->w_.ausstehend_ -= rest.size();
            if (ich->schreibe(nach, rest))
                ich->pumpe(&nach == &ich->app_ ? ich->draussen_ : ich->app_, nach);
        });
    }

    void endeVon(Seite& von, Seite& nach) {
        von.sagtNichtsMehr = true;
        std::error_code fehler;
        nach.socket.shutdown(tcp::socket::shutdown_send, fehler);
        if (fehler)
            return reisseAb();
        if (nach.sagtNichtsMehr)
            ende();
    }

    void ende() {
        if (std::exchange(zu_, true))
            return;
        std::error_code egal;
        app_.socket.close(egal);
        draussen_.socket.close(egal);
        w_.ausstehend_ -= app_.rest.size() + draussen_.rest.size();
        w_.tabelle_.gibFrei(port_, Uhrzeit::now());
        w_.verbindungen_.erase(shared_from_this());
    }

    Weiterleitung& w_;
    Seite app_, draussen_;
    Zeit zuletzt_ = Uhrzeit::now();
    std::uint16_t port_;
    bool zu_ = false;
};

Weiterleitung::Weiterleitung(asio::io_context& kontext, Tabelle& tabelle, Auftrag auftrag)
    : kontext_(kontext), tabelle_(tabelle), auftrag_(std::move(auftrag)), puffer_(ganzerBlock) {}

Weiterleitung::~Weiterleitung() = default;

void Weiterleitung::horche(tcp::acceptor annahme) {
    horcher_.push_back(std::make_unique<Horcher>(Horcher{std::move(annahme)}));
    nimmAn(*horcher_.back());
}

void Weiterleitung::nimmAn(Horcher& h) {
    h.wartet = true;
    h.annahme.async_accept(h.wer, [this, &h](std::error_code fehler, tcp::socket app) {
        h.wartet = !fehler;
        if (fehler)
            return;
        // Only what the tunnel itself made; anybody on this machine could come to the listener.
        const auto fluss = h.wer.address() == tunnelenden(h.wer.address().is_v6()).drueben
                               ? tabelle_.nimmAn(h.wer.port())
                               : std::nullopt;
        if (fluss) {
            std::error_code egal;
            app.set_option(tcp::no_delay(true), egal);
            app.non_blocking(true, egal);
            ++zaehler_.verbindungen;
            (*verbindungen_.insert(std::make_shared<Verbindung>(*this, std::move(app), h.wer.port())).first)
                ->verbinde(*fluss);
        }
        nimmAn(h);
    });
}

void Weiterleitung::raeume(Zeit jetzt) {
    for (const auto& h : horcher_)
        if (!h->wartet)
            nimmAn(*h);
    for (const auto& v : std::vector(verbindungen_.begin(), verbindungen_.end()))
        if (v->stehtHalbzu(jetzt))
            v->reisseAb();
}

void Weiterleitung::reisseAb() {
    for (const auto& h : horcher_) {
        std::error_code egal;
        h->annahme.close(egal);
    }
    for (const auto& v : std::vector(verbindungen_.begin(), verbindungen_.end()))
        v->reisseAb();
}

} // namespace mobilsteg::volltunnel
