#include "standdienst/Standdienst.hpp"

#include "plattform/Buchse.hpp"
#include "plattform/Text.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>

namespace mobilsteg {

namespace {

using asio::ip::tcp;
using Fehler = std::error_code;

constexpr std::size_t groessterBlock = 8192;
// So many new connections are taken in one go at most: timers and the end want their turn.
constexpr int meisteAufEinmal = 64;
// How long the listener rests when the system has no descriptor left for a new connection.
constexpr auto atempause = std::chrono::milliseconds(200);

/// Whether such a request's client has nothing more to say: behind what fills the block more may lie, and a
/// body may travel in a packet of its own.
bool istAlles(std::string_view anfrage) {
    if (anfrage.size() == groessterBlock || !anfrage.ends_with("\r\n\r\n") ||
        !(anfrage.starts_with("GET ") || anfrage.starts_with("OPTIONS ")))
        return false;
    const std::string kopf = inKleinbuchstaben(anfrage);
    return kopf.find("\ncontent-length:") == std::string::npos &&
           kopf.find("\ntransfer-encoding:") == std::string::npos;
}

/// Clients must not take the descriptors that running the tools needs: a program started from the Mac's
/// desktop may open 256.
std::size_t anteilDerDeskriptoren() {
    rlimit grenze{};
    if (::getrlimit(RLIMIT_NOFILE, &grenze) != 0)
        return 1;
    return std::max<std::size_t>(1, grenze.rlim_cur / 4);
}

constexpr std::string_view corsBlock = "Access-Control-Allow-Origin: *\r\n"
                                       "Access-Control-Allow-Methods: GET, OPTIONS\r\n"
                                       "Access-Control-Allow-Headers: *\r\n"
                                       "Access-Control-Allow-Private-Network: true\r\n";

class Klient;
using Klienten = std::list<std::shared_ptr<Klient>>;

} // namespace

struct Standdienst::Innen : std::enable_shared_from_this<Innen> {
    Innen(AsioSchlange& s, std::uint16_t p, Grenzen g)
        : schlange(s), horcher(s.kontext()), pause(s.kontext()), wunschport(p), grenzen(g) {
        grenzen.verbindungen = std::min(grenzen.verbindungen, anteilDerDeskriptoren());
    }

    void horche();
    void nimmAn();
    void nimmWartendeAn();
    void bediene(Deskriptor verbindung);
    std::shared_ptr<Klient> nimmAuf(Deskriptor verbindung);
    [[nodiscard]] std::string dokument() const {
        const std::lock_guard wache(schloss);
        return json;
    }

    AsioSchlange& schlange;
    tcp::acceptor horcher;
    asio::steady_timer pause;
    std::uint16_t wunschport;
    Grenzen grenzen;
    std::atomic<std::uint16_t> port{0};
    Klienten offene;                          // oldest first
    std::array<char, groessterBlock> block{}; // of whoever is served right now

    mutable std::mutex schloss; // guards json; never held while sending
    std::string json = "{}";
};

namespace {

/// One client that could not be served in one go. It takes itself from the list when it is done.
class Klient : public std::enable_shared_from_this<Klient> {
public:
    Klient(tcp::socket socket, Dauer stille)
        : socket_(std::move(socket)), zeitgeber_(socket_.get_executor(), stille) {}

    /// `fertig` runs once, at the end.
    void beginne(std::function<void()> fertig) {
        fertig_ = std::move(fertig);
        // A client that keeps neither speaking nor reading would otherwise hold its place for ever.
        zeitgeber_.async_wait([schwach = weak_from_this()](const Fehler& fehler) {
            if (const auto selbst = schwach.lock(); selbst && !fehler)
                selbst->trenne();
        });
    }

    /// One chunk in, one answer out. `dokument` yields what is to be served when the request has come.
    void lies(std::function<std::string()> dokument) {
        socket_.async_read_some(
            asio::buffer(block_),
            [selbst = shared_from_this(), dokument = std::move(dokument)](const Fehler&, std::size_t n) {
                const std::string_view anfrage(selbst->block_.data(), n);
                selbst->schreibe(Standdienst::antwort(anfrage, dokument()), 0, istAlles(anfrage));
            });
    }

    /// The answer from its byte `ab` on; `alles`: nothing more is to come from the client.
    void schreibe(std::string antwort, std::size_t ab, bool alles) {
        if (!socket_.is_open())
            return;
        antwort_ = std::move(antwort);
        asio::async_write(socket_, asio::buffer(antwort_) + ab,
                          [selbst = shared_from_this(), alles](const Fehler&, std::size_t) {
                              alles ? selbst->trenne() : selbst->verabschiede();
                          });
    }

    /// Ends it now; what is under way is cancelled.
    void trenne() {
        Fehler egal;
        socket_.close(egal);
        zeitgeber_.cancel();
        if (const auto fertig = std::exchange(fertig_, nullptr))
            fertig();
    }

    /// Closing with unread bytes resets the connection, and the reset may overtake the answer: so the rest of
    /// a long request is read away before the close.
    void liesWeg() {
        socket_.async_read_some(asio::buffer(block_),
                                [selbst = shared_from_this()](const Fehler& ende, std::size_t n) {
                                    selbst->weggelesen_ += n;
                                    if (ende || selbst->weggelesen_ > meistesWeglesen)
                                        return selbst->trenne();
                                    selbst->liesWeg();
                                });
    }

private:
    void verabschiede() {
        Fehler fehler;
        socket_.shutdown(tcp::socket::shutdown_send, fehler); // once: a second one ends a Mac's reading, too
        fehler ? trenne() : liesWeg();
    }

    static constexpr std::size_t meistesWeglesen = 1U << 20U;

    tcp::socket socket_;
    asio::steady_timer zeitgeber_;
    std::array<char, groessterBlock> block_{};
    std::string antwort_;
    std::size_t weggelesen_ = 0;
    std::function<void()> fertig_;
};

} // namespace

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

void Standdienst::Innen::horche() {
    Fehler fehler;
    const tcp::endpoint stelle(asio::ip::address_v4::loopback(), wunschport);
    horcher.open(stelle.protocol(), fehler);
    if (!fehler)
        nichtVererben(horcher.native_handle());
    // A restart may follow so closely that the last run's connections still linger.
    if (!fehler)
        horcher.set_option(tcp::acceptor::reuse_address(true), fehler);
    if (!fehler)
        horcher.bind(stelle, fehler);
    if (!fehler)
        horcher.listen(asio::socket_base::max_listen_connections, fehler);
    if (!fehler)
        horcher.native_non_blocking(true, fehler);
    if (fehler) {
        Fehler egal;
        horcher.close(egal);
        return;
    }
    port = horcher.local_endpoint().port();
    nimmAn();
}

void Standdienst::Innen::nimmAn() {
    horcher.async_wait(tcp::acceptor::wait_read, [selbst = shared_from_this()](const Fehler& fehler) {
        if (!fehler && selbst->horcher.is_open())
            selbst->nimmWartendeAn();
    });
}

void Standdienst::Innen::nimmWartendeAn() {
    for (int i = 0; i < meisteAufEinmal; ++i) {
        auto verbindung = naechsteVerbindung(horcher.native_handle());
        if (verbindung)
            bediene(std::move(verbindung));
        else if (errno == EAGAIN)
            break;
        else if (errno != EINTR && errno != ECONNABORTED) {
            pause.expires_after(atempause);
            return pause.async_wait([selbst = shared_from_this()](const Fehler& abbruch) {
                if (!abbruch && selbst->horcher.is_open())
                    selbst->nimmAn();
            });
        }
    }
    nimmAn();
}

/// Mostly the request has come with the connection, and the answer fits into the system's buffer: then
/// everything is done here and now, and nobody need be woken again for it.
void Standdienst::Innen::bediene(Deskriptor verbindung) {
    const ssize_t gelesen = ::read(verbindung.nummer(), block.data(), block.size());
    if (gelesen < 0) {
        if (errno == EAGAIN || errno == EINTR)
            nimmAuf(std::move(verbindung))->lies([innen = weak_from_this()] {
                const auto selbst = innen.lock();
                return selbst ? selbst->dokument() : std::string("{}");
            });
        return;
    }
    const std::string_view anfrage(block.data(), static_cast<std::size_t>(gelesen));
    std::string antwort = Standdienst::antwort(anfrage, dokument());
    const std::size_t ab = schreibeZuletzt(verbindung.nummer(), antwort);
    const bool alles = istAlles(anfrage);
    if (ab == antwort.size() && alles)
        return;
    const auto klient = nimmAuf(std::move(verbindung));
    ab == antwort.size() ? klient->liesWeg() : klient->schreibe(std::move(antwort), ab, alles);
}

std::shared_ptr<Klient> Standdienst::Innen::nimmAuf(Deskriptor verbindung) {
    if (offene.size() >= grenzen.verbindungen)
        offene.front()->trenne();
    tcp::socket socket(horcher.get_executor());
    Fehler fehler; // then its first read fails, and its time runs out
    socket.assign(tcp::v4(), verbindung.nummer(), fehler);
    if (!fehler)
        verbindung.gibAb();
    auto klient = std::make_shared<Klient>(std::move(socket), grenzen.stille);
    const auto platz = offene.insert(offene.end(), klient);
    klient->beginne([innen = weak_from_this(), platz] {
        if (const auto selbst = innen.lock())
            selbst->offene.erase(platz);
    });
    return klient;
}

Standdienst::Standdienst(AsioSchlange& schlange, std::uint16_t port, Grenzen grenzen)
    : innen_(std::make_shared<Innen>(schlange, port, grenzen)) {}

Standdienst::~Standdienst() {
    innen_->schlange.sync([innen = innen_] {
        Fehler egal;
        innen->horcher.close(egal);
        innen->pause.cancel();
        while (!innen->offene.empty())
            innen->offene.front()->trenne();
    });
}

void Standdienst::starte() {
    innen_->schlange.sync([innen = innen_] { innen->horche(); });
}

void Standdienst::setzeDokument(std::string bytes) {
    const std::lock_guard wache(innen_->schloss);
    innen_->json = std::move(bytes);
}

std::uint16_t Standdienst::port() const {
    return innen_->port;
}

} // namespace mobilsteg
