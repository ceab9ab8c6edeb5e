#include "probe/handy/AdbServer.hpp"

#include "probe/handy/Buchse.hpp"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <charconv>
#include <memory>
#include <string_view>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

using Art = AdbServerAntwort::Art;

std::string mitLaenge(std::string_view frage) {
    constexpr std::string_view ziffern = "0123456789abcdef";
    std::string nachricht;
    for (int stelle = 12; stelle >= 0; stelle -= 4) {
        nachricht.push_back(ziffern[(frage.size() >> stelle) & 0xfU]);
    }
    return nachricht.append(frage);
}

/// "OKAY" or "FAIL", then a length of four hex digits, then as many bytes of text.
AdbServerAntwort deute(std::string_view bytes) {
    const bool gelungen = bytes.substr(0, 4) == "OKAY";
    if (!gelungen && bytes.substr(0, 4) != "FAIL") {
        return {Art::abgebrochen, "der adb-Server hat nicht verständlich geantwortet"};
    }
    bytes.remove_prefix(4);
    std::size_t laenge = 0;
    const std::string_view ziffern = bytes.substr(0, 4);
    std::from_chars(ziffern.data(), ziffern.data() + ziffern.size(), laenge, 16);
    bytes.remove_prefix(ziffern.size());
    return {gelungen ? Art::gelungen : Art::abgelehnt, std::string(bytes.substr(0, laenge))};
}

class Anfrage : public std::enable_shared_from_this<Anfrage> {
public:
    Anfrage(asio::io_context& schleife, std::string frage, std::function<void(AdbServerAntwort)> fertig)
        : buchse_(schleife), frist_(schleife), frage_(mitLaenge(frage)), fertig_(std::move(fertig)) {}

    void starte(std::uint16_t port, std::chrono::milliseconds frist) {
        frist_.expires_after(frist);
        frist_.async_wait([selbst = shared_from_this()](std::error_code fehler) {
            if (!fehler) {
                selbst->melde({Art::abgebrochen, "der adb-Server antwortet nicht"});
            }
        });
        std::error_code fehler;
        buchse_.open(asio::ip::tcp::v4(), fehler);
        if (!fehler) {
            behalteFuerUns(buchse_.native_handle());
        }
        buchse_.async_connect(rueckschleife(port), [selbst = shared_from_this()](std::error_code warum) {
            if (warum) {
                selbst->melde({Art::unerreichbar, "kein adb-Server erreichbar"});
                return;
            }
            selbst->stelle();
        });
    }

private:
    void stelle() {
        asio::async_write(buchse_, asio::buffer(frage_),
                          [selbst = shared_from_this()](std::error_code, std::size_t) { selbst->hoere(); });
    }

    void hoere() {
        // The server closes after its answer, so whatever there is until then is the answer.
        asio::async_read(buchse_, asio::dynamic_buffer(antwort_, 64 * 1024),
                         [selbst = shared_from_this()](std::error_code, std::size_t) {
                             selbst->melde(deute(selbst->antwort_));
                         });
    }

    void melde(AdbServerAntwort antwort) {
        std::error_code egal;
        buchse_.close(egal);
        frist_.cancel();
        if (auto fertig = std::exchange(fertig_, nullptr)) {
            fertig(std::move(antwort));
        }
    }

    asio::ip::tcp::socket buchse_;
    asio::steady_timer frist_;
    std::string frage_;
    std::string antwort_;
    std::function<void(AdbServerAntwort)> fertig_;
};

} // namespace

void frageAdbServer(asio::io_context& schleife, std::uint16_t port, std::string frage,
                    std::chrono::milliseconds frist, std::function<void(AdbServerAntwort)> fertig) {
    std::make_shared<Anfrage>(schleife, std::move(frage), std::move(fertig))->starte(port, frist);
}

} // namespace mobilsteg::probehandy
