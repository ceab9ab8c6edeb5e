#include "standdienst/Standdienst.hpp"

#include "plattform/Text.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <mutex>

namespace mobilsteg {

namespace {

using asio::ip::tcp;
using Fehler = std::error_code;
using Zeit = std::chrono::steady_clock;

constexpr std::size_t groessterBlock = 8192;
// How long the listener rests when the system has no descriptor left for a new connection.
constexpr auto atempause = std::chrono::milliseconds(200);

constexpr std::string_view corsBlock = "Access-Control-Allow-Origin: *\r\n"
                                       "Access-Control-Allow-Methods: GET, OPTIONS\r\n"
                                       "Access-Control-Allow-Headers: *\r\n"
                                       "Access-Control-Allow-Private-Network: true\r\n";

struct Verbindung {
    explicit Verbindung(tcp::socket s) : socket(std::move(s)) {}

    tcp::socket socket;
    Zeit::time_point beginn = Zeit::now();
    std::array<char, groessterBlock> block{};
    std::string antwort;
};
using Klient = std::shared_ptr<Verbindung>;

} // namespace

// Each connection goes one way: one chunk is read, one answer written, this direction ended, and the rest of
// the request read away until the client closes. Closing with unread bytes would reset the connection, and
// the reset may overtake the answer. An error on the way only makes the steps behind it fail at once.
struct Standdienst::Innen : std::enable_shared_from_this<Innen> {
    Innen(AsioSchlange& s, std::uint16_t p, Grenzen g)
        : schlange(s), horcher(s.kontext()), zeitgeber(s.kontext()), wunschport(p), grenzen(g) {
        // Running the tools needs descriptors, too: a program started from the Mac's desktop may open 256.
        rlimit grenze{};
        if (::getrlimit(RLIMIT_NOFILE, &grenze) == 0)
            grenzen.verbindungen = std::clamp<std::size_t>(grenze.rlim_cur / 4, 1, grenzen.verbindungen);
    }

    void horche() {
        try {
            // "true": a restart may find the last run's connections lingering at this address.
            horcher = tcp::acceptor(schlange.kontext(), {asio::ip::address_v4::loopback(), wunschport}, true);
        } catch (const std::system_error&) {
            return;
        }
        ::fcntl(horcher.native_handle(), F_SETFD, FD_CLOEXEC);
        port = horcher.local_endpoint().port();
        ordne();
    }

    /// After each change: drops the clients whose time is up, takes the next one if there is room, and sets
    /// the timer. Without a client no timer runs.
    void ordne() {
        if (!horcher.is_open())
            return;
        const auto jetzt = Zeit::now();
        while (!offene.empty() && offene.front()->beginn + grenzen.stille <= jetzt)
            trenne(offene.front());
        const bool voll = offene.size() >= grenzen.verbindungen;
        const auto wiederAb = std::max(ruheBis, voll ? offene.front()->beginn + grenzen.schonfrist : jetzt);
        if (!nimmtAn && wiederAb <= jetzt)
            nimmAn();
        zeitgeber.cancel();
        if (offene.empty() && nimmtAn)
            return;
        const auto ablauf = offene.empty() ? wiederAb : offene.front()->beginn + grenzen.stille;
        zeitgeber.expires_at(nimmtAn ? ablauf : std::min(ablauf, wiederAb));
        zeitgeber.async_wait([selbst = shared_from_this()](const Fehler& fehler) {
            if (!fehler)
                selbst->ordne();
        });
    }

    void nimmAn() {
        nimmtAn = true;
        horcher.async_accept([selbst = shared_from_this()](const Fehler& fehler, tcp::socket socket) {
            selbst->nimmtAn = false;
            if (fehler)
                selbst->ruheBis = Zeit::now() + atempause;
            else
                selbst->bediene(std::make_shared<Verbindung>(std::move(socket)));
            selbst->ordne();
        });
    }

    void bediene(const Klient& klient) {
        ::fcntl(klient->socket.native_handle(), F_SETFD, FD_CLOEXEC);
        offene.push_back(klient);
        if (offene.size() > grenzen.verbindungen)
            trenne(offene.front()); // older than `schonfrist`, or nothing would have been accepted
        klient->socket.async_read_some(asio::buffer(klient->block),
                                       [selbst = shared_from_this(), klient](const Fehler&, std::size_t n) {
                                           selbst->antworte(klient, {klient->block.data(), n});
                                       });
    }

    void antworte(const Klient& klient, std::string_view anfrage) {
        {
            const std::lock_guard wache(schloss);
            klient->antwort = Standdienst::antwort(anfrage, json);
        }
        asio::async_write(klient->socket, asio::buffer(klient->antwort),
                          [selbst = shared_from_this(), klient](const Fehler&, std::size_t) {
                              Fehler egal;
                              klient->socket.shutdown(tcp::socket::shutdown_send, egal);
                              selbst->liesWeg(klient);
                          });
    }

    void liesWeg(const Klient& klient) {
        klient->socket.async_read_some(asio::buffer(klient->block), [selbst = shared_from_this(), klient](
                                                                        const Fehler& ende, std::size_t) {
            if (!ende)
                return selbst->liesWeg(klient);
            selbst->trenne(klient);
            selbst->ordne();
        });
    }

    /// Closes the connection now and forgets it. By value: it may be the list's own entry.
    void trenne(Klient klient) { // NOLINT(performance-unnecessary-value-param)
        Fehler egal;
        klient->socket.close(egal);
        std::erase(offene, klient);
    }

    void beende() {
        Fehler egal;
        horcher.close(egal);
        zeitgeber.cancel();
        while (!offene.empty())
            trenne(offene.front());
    }

    AsioSchlange& schlange;
    tcp::acceptor horcher;
    asio::steady_timer zeitgeber;
    std::uint16_t wunschport;
    Grenzen grenzen;
    std::atomic<std::uint16_t> port{0};
    std::deque<Klient> offene; // oldest first
    bool nimmtAn = false;      // a connection is being waited for
    Zeit::time_point ruheBis;  // no connection is taken before

    std::mutex schloss; // guards json; never held while sending
    std::string json = "{}";
};

std::string Standdienst::antwort(std::string_view anfrage, std::string_view dokument) {
    const auto worte = teile(anfrage, ' ');
    if (!worte.empty() && worte.front() == "OPTIONS")
        return "HTTP/1.1 204 No Content\r\n" + std::string(corsBlock) +
               "Content-Length: 0\r\nConnection: close\r\n\r\n";
    std::string text =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nCache-Control: no-store\r\n";
    text += corsBlock;
    text += "Content-Length: " + std::to_string(dokument.size()) + "\r\nConnection: close\r\n\r\n";
    text += dokument;
    return text;
}

Standdienst::Standdienst(AsioSchlange& schlange, std::uint16_t port, Grenzen grenzen)
    : innen_(std::make_shared<Innen>(schlange, port, grenzen)) {}

Standdienst::~Standdienst() {
    innen_->schlange.sync([this] { innen_->beende(); });
}

void Standdienst::starte() {
    innen_->schlange.sync([this] { innen_->horche(); });
}

void Standdienst::setzeDokument(std::string bytes) {
    const std::lock_guard wache(innen_->schloss);
    innen_->json = std::move(bytes);
}

std::uint16_t Standdienst::port() const {
    return innen_->port;
}

} // namespace mobilsteg
