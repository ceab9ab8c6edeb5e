#include "handy/Geraetewache.hpp"

#include "handy/Adbserver.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <fcntl.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace mobilsteg {

namespace {

using asio::ip::tcp;
using Fehler = std::error_code;
using Zeit = std::chrono::steady_clock;

constexpr auto versuchsabstand = std::chrono::milliseconds(2900); // each tick but no extra look
// Between two reads: a server that floods us costs ten looks a second and fills its own buffers.
constexpr auto leseabstand = std::chrono::milliseconds(100);

} // namespace

struct Geraetewache::Innen : std::enable_shared_from_this<Innen> {
    Innen(AsioSchlange& s, std::function<void()> g)
        : schlange(s), socket(s.kontext()), pause(s.kontext()), gemeldet(std::move(g)) {}

    void halte() {
        const auto jetzt = Zeit::now();
        if (beendet || socket.is_open() || jetzt < naechsterVersuch)
            return;
        naechsterVersuch = jetzt + versuchsabstand;
        meldungen = {};
        Fehler fehler;
        socket.open(tcp::v4(), fehler);
        if (fehler)
            return;
        ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
        socket.async_connect(
            {asio::ip::address_v4::loopback(), *port},
            [selbst = shared_from_this()](const Fehler& grund) { selbst->bitteUmMeldungen(grund); });
    }

    void bitteUmMeldungen(const Fehler& grund) {
        if (grund)
            return trenne();
        asio::async_write(socket, asio::buffer(verfolgeGeraete),
                          [selbst = shared_from_this()](const Fehler& ende, std::size_t) {
                              ende ? selbst->trenne() : selbst->lies();
                          });
    }

    void lies() {
        socket.async_read_some(
            asio::buffer(block), [selbst = shared_from_this()](const Fehler& ende, std::size_t n) {
                // What had been read when it ended still arrives.
                if (ende || selbst->beendet || !selbst->meldungen.nimm({selbst->block.data(), n}))
                    return selbst->trenne();
                selbst->vergleiche();
                selbst->ruhe();
            });
    }

    void vergleiche() {
        auto neue = meldungen.neueste();
        if (!neue || *neue == letzte)
            return;
        letzte = std::move(*neue);
        gemeldet();
    }

    void ruhe() {
        pause.expires_after(leseabstand);
        pause.async_wait([selbst = shared_from_this()](const Fehler& abbruch) {
            if (!abbruch)
                selbst->lies();
        });
    }

    void trenne() {
        Fehler egal;
        socket.close(egal);
    }

    const std::optional<std::uint16_t> port = adbServerport();
    AsioSchlange& schlange;
    tcp::socket socket;
    asio::steady_timer pause;
    std::function<void()> gemeldet;
    Adbmeldungen meldungen;
    std::string letzte; ///< also over a new connection
    std::array<char, 16384> block{};
    Zeit::time_point naechsterVersuch;
    bool beendet = false;
};

Geraetewache::Geraetewache(AsioSchlange& schlange, std::function<void()> gemeldet)
    : innen_(std::make_shared<Innen>(schlange, std::move(gemeldet))) {}

Geraetewache::~Geraetewache() {
    innen_->schlange.sync([this] {
        innen_->beendet = true;
        innen_->pause.cancel();
        innen_->trenne();
    });
}

void Geraetewache::halte() {
    if (innen_->port)
        innen_->schlange.async([innen = innen_] { innen->halte(); });
}

} // namespace mobilsteg
