#include "handy/Geraetewache.hpp"

#include "plattform/Text.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <fcntl.h>

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace mobilsteg {

namespace {

using asio::ip::tcp;
using Fehler = std::error_code;
using Zeit = std::chrono::steady_clock;

constexpr std::string_view bitte = "0012host:track-devices";
constexpr std::string_view zusage = "OKAY";
constexpr std::size_t laengenfeld = 4;

constexpr auto versuchsabstand = std::chrono::milliseconds(2900); // each tick but no extra look
// Between two reads: a server that floods us costs ten looks a second and fills its own buffers.
constexpr auto leseabstand = std::chrono::milliseconds(100);

} // namespace

std::optional<std::uint16_t> adbServerport() {
    if (std::getenv("ADB_SERVER_SOCKET") != nullptr || std::getenv("ANDROID_ADB_SERVER_ADDRESS") != nullptr)
        return std::nullopt;
    const char* eigener = std::getenv("ANDROID_ADB_SERVER_PORT");
    const std::string_view text = eigener == nullptr || *eigener == 0 ? "5037" : eigener;
    std::uint16_t port = 0;
    const auto gelesen = std::from_chars(text.data(), text.data() + text.size(), port);
    if (gelesen.ec != std::errc() || gelesen.ptr != text.data() + text.size())
        return std::nullopt;
    return port;
}

std::optional<bool> Geraetemeldungen::nimm(std::string_view bytes) {
    rest_ += bytes;
    if (!zugesagt_) {
        if (!rest_.starts_with(std::string_view(zusage).substr(0, rest_.size())))
            return std::nullopt;
        if (rest_.size() < zusage.size())
            return false;
        rest_.erase(0, zusage.size());
        zugesagt_ = true;
    }
    std::string_view offen = rest_;
    std::optional<std::string_view> neueste;
    while (offen.size() >= laengenfeld) {
        std::size_t laenge = 0;
        const auto gelesen = std::from_chars(offen.data(), offen.data() + laengenfeld, laenge, 16);
        if (gelesen.ptr != offen.data() + laengenfeld)
            return std::nullopt;
        if (offen.size() < laengenfeld + laenge)
            break;
        neueste = offen.substr(laengenfeld, laenge);
        offen.remove_prefix(laengenfeld + laenge);
    }
    const bool anders = neueste && *neueste != letzte_;
    if (anders)
        letzte_ = *neueste;
    rest_.erase(0, rest_.size() - offen.size());
    return anders;
}

void Geraetemeldungen::beginneNeu() {
    rest_.clear();
    zugesagt_ = false;
}

struct Geraetewache::Innen : std::enable_shared_from_this<Innen> {
    Innen(AsioSchlange& s, std::function<void()> g)
        : schlange(s), socket(s.kontext()), pause(s.kontext()), gemeldet(std::move(g)) {}

    void halte() {
        const auto jetzt = Zeit::now();
        if (beendet || socket.is_open() || jetzt < naechsterVersuch)
            return;
        naechsterVersuch = jetzt + versuchsabstand;
        meldungen.beginneNeu();
        Fehler fehler;
        socket.open(tcp::v4(), fehler);
        if (fehler)
            return;
        offen = true;
        ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
        socket.async_connect(
            {asio::ip::address_v4::loopback(), *port},
            [selbst = shared_from_this()](const Fehler& grund) { selbst->bitteUmMeldungen(grund); });
    }

    void bitteUmMeldungen(const Fehler& grund) {
        if (grund)
            return trenne();
        asio::async_write(socket, asio::buffer(bitte),
                          [selbst = shared_from_this()](const Fehler& ende, std::size_t) {
                              ende ? selbst->trenne() : selbst->lies();
                          });
    }

    void lies() {
        socket.async_read_some(
            asio::buffer(block), [selbst = shared_from_this()](const Fehler& ende, std::size_t n) {
                const auto anders = ende ? std::nullopt : selbst->meldungen.nimm({selbst->block.data(), n});
                if (!anders || selbst->beendet) // what had been read when it ended still arrives
                    return selbst->trenne();
                if (*anders)
                    selbst->gemeldet();
                selbst->ruhe();
            });
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
        offen = false;
    }

    const std::optional<std::uint16_t> port = adbServerport();
    AsioSchlange& schlange;
    tcp::socket socket;
    asio::steady_timer pause;
    std::function<void()> gemeldet;
    Geraetemeldungen meldungen;
    std::array<char, 16384> block{};
    Zeit::time_point naechsterVersuch;
    bool beendet = false;
    std::atomic<bool> offen = false; // any queue
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
    if (innen_->port && !innen_->offen) // else each tick would wake the queue for nothing
        innen_->schlange.async([innen = innen_] { innen->halte(); });
}

} // namespace mobilsteg
