#include "volltunnel/Waehler.hpp"

#include <asio/buffer.hpp>
#include <asio/coroutine.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;

constexpr std::chrono::seconds proxyfrist{15}; // for the proxy's first word
constexpr std::chrono::seconds zielfrist{90};  // for its answer about the target

/// One dialling: each step of the dialogue is the continuation of the one before.
struct Wahl : std::enable_shared_from_this<Wahl>, asio::coroutine {
    Wahl(asio::io_context& kontext, Stelle p, Stelle z, std::function<void(Ausgang, tcp::socket)> f)
        : socket(kontext), frist(kontext), proxy(std::move(p)), ziel(std::move(z)), fertig(std::move(f)) {}

    void weiter(std::error_code fehler = {}) {
        const auto dann = [ich = shared_from_this()](std::error_code e, std::size_t = 0) { ich->weiter(e); };
        if (fehler)
            return ende(Ausgang::kaputt);
        ASIO_CORO_REENTER(this) {
            setzeFrist(proxyfrist, Ausgang::stumm);
            ASIO_CORO_YIELD socket.async_connect(proxy, dann);
            socket.set_option(tcp::no_delay(true), fehler);
            socket.non_blocking(true, fehler);
            auftrag = {5, 1, 0}; // one way to log in: none
            ASIO_CORO_YIELD asio::async_write(socket, asio::buffer(auftrag), dann);
            ASIO_CORO_YIELD asio::async_read(socket, asio::buffer(puffer, 2), dann);
            if (puffer[0] != 5 || puffer[1] != 0)
                return ende(Ausgang::kaputt);
            setzeFrist(zielfrist, Ausgang::haengt);
            beauftrage();
            ASIO_CORO_YIELD asio::async_write(socket, asio::buffer(auftrag), dann);
            ASIO_CORO_YIELD asio::async_read(socket, asio::buffer(puffer, 5), dann);
            if (puffer[0] != 5 || puffer[1] != 0)
                return ende(puffer[1] == 5 ? Ausgang::nein : Ausgang::kaputt);
            // The address it connected from, whose length depends on its kind.
            ASIO_CORO_YIELD asio::async_read(socket,
                                             asio::buffer(puffer, puffer[3] == 1   ? 5
                                                                  : puffer[3] == 4 ? 17
                                                                                   : puffer[4] + 2U),
                                             dann);
            ende(Ausgang::verbunden);
        }
    }

    void beauftrage() {
        const bool sechs = ziel.address().is_v6();
        auftrag = {5, 1, 0, static_cast<std::uint8_t>(sechs ? 4 : 1)};
        const auto haengeAn = [this](const auto& bytes) {
            auftrag.insert(auftrag.end(), bytes.begin(), bytes.end());
        };
        sechs ? haengeAn(ziel.address().to_v6().to_bytes()) : haengeAn(ziel.address().to_v4().to_bytes());
        haengeAn(std::initializer_list<int>{ziel.port() >> 8, ziel.port() & 255});
    }

    void setzeFrist(std::chrono::seconds dauer, Ausgang ausgang) {
        frist.expires_after(dauer);
        frist.async_wait([ich = shared_from_this(), ausgang](std::error_code fehler) {
            if (!fehler)
                ich->ende(ausgang);
        });
    }

    void ende(Ausgang ausgang) {
        if (!fertig)
            return;
        frist.cancel();
        std::error_code egal;
        if (ausgang != Ausgang::verbunden)
            socket.close(egal);
        std::exchange(fertig, nullptr)(ausgang, std::move(socket));
    }

    tcp::socket socket;
    asio::steady_timer frist;
    Stelle proxy, ziel;
    std::vector<std::uint8_t> auftrag;
    std::function<void(Ausgang, tcp::socket)> fertig; ///< empty: called
    std::array<std::uint8_t, 257> puffer{};
};

} // namespace

void waehle(asio::io_context& kontext, const Stelle& proxy, const Stelle& ziel,
            std::function<void(Ausgang, tcp::socket)> fertig) {
    std::make_shared<Wahl>(kontext, proxy, ziel, std::move(fertig))->weiter();
}

bool Ausfall::melde(Ausgang ausgang, Zeit beginn, Zeit jetzt) {
    if (ausgang == Ausgang::verbunden || ausgang == Ausgang::nein) {
        seit_.reset();
        erfolg_ = jetzt;
    }
    if (ausgang != Ausgang::kaputt && ausgang != Ausgang::stumm)
        return false;
    if (!seit_ || beginn - letzter_ > geduld)
        seit_ = std::max(beginn, erfolg_);
    letzter_ = jetzt;
    return jetzt - *seit_ >= geduld;
}

} // namespace mobilsteg::volltunnel
