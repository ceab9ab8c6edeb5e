#include "volltunnel/Waehler.hpp"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <algorithm>

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;

constexpr std::chrono::seconds proxyfrist{15}; // for the proxy's first word
constexpr std::chrono::seconds zielfrist{90};  // for its answer about the target

struct Wahl : std::enable_shared_from_this<Wahl> {
    Wahl(asio::io_context& kontext, Stelle z, std::function<void(Ausgang, tcp::socket)> f)
        : socket(kontext), frist(kontext), ziel(std::move(z)), fertig(std::move(f)) {}

    void beginne(const Stelle& proxy) {
        setzeFrist(proxyfrist, Ausgang::stumm);
        socket.async_connect(proxy, [ich = shared_from_this()](std::error_code fehler) {
            if (fehler)
                return ich->ende(Ausgang::kaputt);
            std::error_code egal;
            ich->socket.set_option(tcp::no_delay(true), egal);
            ich->socket.non_blocking(true, egal);
            ich->sende({5, 1, 0}, 2, [ich] { ich->beauftrage(); }); // one way to log in: none
        });
    }

    void beauftrage() {
        if (puffer[0] != 5 || puffer[1] != 0)
            return ende(Ausgang::kaputt);
        setzeFrist(zielfrist, Ausgang::haengt);
        const bool sechs = ziel.address().is_v6();
        std::vector<std::uint8_t> auftrag{5, 1, 0, static_cast<std::uint8_t>(sechs ? 4 : 1)};
        if (sechs)
            std::ranges::copy(ziel.address().to_v6().to_bytes(), std::back_inserter(auftrag));
        else
            std::ranges::copy(ziel.address().to_v4().to_bytes(), std::back_inserter(auftrag));
        auftrag.push_back(static_cast<std::uint8_t>(ziel.port() >> 8));
        auftrag.push_back(static_cast<std::uint8_t>(ziel.port()));
        sende(std::move(auftrag), 5, [this] { liesRest(); });
    }

    /// The address it connected from, whose length depends on its kind.
    void liesRest() {
        if (puffer[0] != 5)
            return ende(Ausgang::kaputt);
        if (puffer[1] != 0)
            return ende(puffer[1] == 5 ? Ausgang::nein : Ausgang::kaputt);
        const std::size_t rest = puffer[3] == 1 ? 5 : puffer[3] == 4 ? 17 : puffer[4] + 2U;
        lies(rest, [this] { ende(Ausgang::verbunden); });
    }

    void sende(std::vector<std::uint8_t> bytes, std::size_t antwort, std::function<void()> dann) {
        auto behalten = std::make_shared<std::vector<std::uint8_t>>(std::move(bytes));
        asio::async_write(socket, asio::buffer(*behalten),
                          [ich = shared_from_this(), behalten, antwort,
                           dann = std::move(dann)](std::error_code fehler, std::size_t) {
                              if (fehler)
                                  return ich->ende(Ausgang::kaputt);
                              ich->lies(antwort, dann);
                          });
    }

    void lies(std::size_t laenge, std::function<void()> dann) {
        asio::async_read(
            socket, asio::buffer(puffer, laenge),
            [ich = shared_from_this(), dann = std::move(dann)](std::error_code fehler, std::size_t) {
                if (fehler)
                    return ich->ende(Ausgang::kaputt);
                dann();
            });
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
    Stelle ziel;
    std::function<void(Ausgang, tcp::socket)> fertig; ///< empty: called
    std::array<std::uint8_t, 257> puffer{};
};

} // namespace

void waehle(asio::io_context& kontext, const Stelle& proxy, const Stelle& ziel,
            std::function<void(Ausgang, tcp::socket)> fertig) {
    std::make_shared<Wahl>(kontext, ziel, std::move(fertig))->beginne(proxy);
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
