#include "probe/handy/Steuerung.hpp"

#include "probe/handy/Buchse.hpp"
#include "probe/handy/Text.hpp"

#include <asio/buffer.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t laengsteZeile = 1024 * 1024;

class Steuersitzung : public std::enable_shared_from_this<Steuersitzung> {
public:
    Steuersitzung(asio::ip::tcp::socket buchse, Befehle& befehle, std::function<void()> beende)
        : buchse_(std::move(buchse)), befehle_(befehle), beende_(std::move(beende)) {}

    void liesZeile() {
        asio::async_read_until(buchse_, asio::dynamic_buffer(eingang_, laengsteZeile), '\n',
                               [selbst = shared_from_this()](std::error_code fehler, std::size_t menge) {
                                   selbst->nimmZeile(fehler, menge);
                               });
    }

private:
    void nimmZeile(std::error_code fehler, std::size_t menge) {
        if (fehler == asio::error::not_found) {
            schreibe({{}, "Zeile zu lang", false}, true);
            return;
        }
        const bool letzte = fehler == asio::error::eof;
        if (fehler && !(letzte && !ohneRand(eingang_).empty())) {
            return;
        }
        std::string zeile = eingang_.substr(0, letzte ? eingang_.size() : menge);
        eingang_.erase(0, zeile.size());
        if (ohneRand(zeile).empty()) {
            liesZeile();
            return;
        }
        befehle_.fuehreAus(zeile, [selbst = shared_from_this(), letzte](Befehlsantwort antwort) {
            selbst->schreibe(std::move(antwort), letzte);
        });
    }

    void schreibe(Befehlsantwort antwort, bool letzte) {
        ausgang_ = antwort.alsText();
        asio::async_write(
            buchse_, asio::buffer(ausgang_),
            [selbst = shared_from_this(), letzte, ende = antwort.ende](std::error_code fehler, std::size_t) {
                if (ende) {
                    selbst->beende_();
                } else if (!fehler && !letzte) {
                    selbst->liesZeile();
                }
            });
    }

    asio::ip::tcp::socket buchse_;
    Befehle& befehle_;
    std::function<void()> beende_;
    std::string eingang_;
    std::string ausgang_;
};

} // namespace

Steuerung::Steuerung(asio::io_context& schleife, Befehle& befehle, std::function<void()> beende)
    : befehle_(befehle), beende_(std::move(beende)), lauscher_(schleife), atempause_(schleife) {}

std::error_code Steuerung::oeffne(std::uint16_t port) {
    if (const std::error_code fehler = lausche(lauscher_, port)) {
        return fehler;
    }
    std::error_code egal;
    port_ = lauscher_.local_endpoint(egal).port();
    befehle_.merkeSteuerport(port_);
    nimmAn();
    return {};
}

void Steuerung::nimmAn() {
    lauscher_.async_accept([this](std::error_code fehler, asio::ip::tcp::socket buchse) {
        if (fehler) {
            atempause_.expires_after(std::chrono::milliseconds(100));
            atempause_.async_wait([this](std::error_code abbruch) {
                if (!abbruch) {
                    nimmAn();
                }
            });
            return;
        }
        behalteFuerUns(buchse.native_handle());
        std::make_shared<Steuersitzung>(std::move(buchse), befehle_, beende_)->liesZeile();
        nimmAn();
    });
}

} // namespace mobilsteg::probehandy
