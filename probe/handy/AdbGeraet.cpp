#include "probe/handy/AdbGeraet.hpp"

#include "probe/handy/Buchse.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace mobilsteg::probehandy {

AdbGeraet::AdbGeraet(asio::io_context& schleife, const Handyzustand& zustand, Dienstwahl dienste)
    : zustand_(zustand), dienste_(std::move(dienste)), lauscher_(schleife), platzhalter_(schleife),
      atempause_(schleife) {}

std::error_code AdbGeraet::oeffne(std::uint16_t port) {
    if (const std::error_code fehler = lausche(lauscher_, port)) {
        return fehler;
    }
    std::error_code egal;
    port_ = lauscher_.local_endpoint(egal).port();
    nimmAn();
    return {};
}

std::error_code AdbGeraet::oeffneWieder() {
    if (lauscht()) {
        return {};
    }
    if (const std::error_code fehler = lausche(lauscher_, port_)) {
        return fehler;
    }
    std::error_code egal;
    platzhalter_.close(egal);
    nimmAn();
    return {};
}

void AdbGeraet::lauscheNichtMehr() {
    std::error_code egal;
    atempause_.cancel();
    lauscher_.close(egal);
    haltePlatz();
}

void AdbGeraet::haltePlatz() {
    // Bound but not listening: connecting is refused, and yet the system gives the port to nobody else while
    // the phone is unplugged.
    std::error_code fehler;
    platzhalter_.close(fehler);
    platzhalter_.open(asio::ip::tcp::v4(), fehler);
    if (fehler) {
        return;
    }
    behalteFuerUns(platzhalter_.native_handle());
    platzhalter_.set_option(asio::socket_base::reuse_address(true), fehler);
    platzhalter_.bind(rueckschleife(port_), fehler);
}

void AdbGeraet::trenneAlle() {
    for (const auto& verbindung : std::exchange(verbindungen_, {})) {
        verbindung->trenne();
    }
}

void AdbGeraet::kappeStroeme() {
    for (const auto& verbindung : verbindungen_) {
        verbindung->kappeStroeme();
    }
}

void AdbGeraet::gibFrei() {
    for (const auto& verbindung : verbindungen_) {
        verbindung->gibFrei();
    }
}

bool AdbGeraet::verbunden() const {
    return std::any_of(verbindungen_.begin(), verbindungen_.end(),
                       [](const auto& verbindung) { return verbindung->begruesst(); });
}

std::size_t AdbGeraet::offeneStroeme() const {
    std::size_t summe = 0;
    for (const auto& verbindung : verbindungen_) {
        summe += verbindung->stroeme();
    }
    return summe;
}

void AdbGeraet::nimmAn() {
    lauscher_.async_accept([this](std::error_code fehler, asio::ip::tcp::socket buchse) {
        if (!lauscht() || fehler == asio::error::operation_aborted) {
            return;
        }
        if (fehler) {
            // Most likely out of descriptors; without a pause this would spin until some are free again.
            atempause_.expires_after(std::chrono::milliseconds(100));
            atempause_.async_wait([this](std::error_code abbruch) {
                if (!abbruch && lauscht()) {
                    nimmAn();
                }
            });
            return;
        }
        behalteFuerUns(buchse.native_handle());
        std::error_code egal;
        buchse.set_option(asio::ip::tcp::no_delay(true), egal);
        verbindungen_.push_back(std::make_shared<AdbVerbindung>(
            std::move(buchse), zustand_, dienste_, [this](const AdbVerbindung* welche) { vergiss(welche); }));
        verbindungen_.back()->starte();
        nimmAn();
    });
}

void AdbGeraet::vergiss(const AdbVerbindung* verbindung) {
    const auto stelle = std::find_if(verbindungen_.begin(), verbindungen_.end(),
                                     [&](const auto& eine) { return eine.get() == verbindung; });
    if (stelle != verbindungen_.end()) {
        verbindungen_.erase(stelle);
    }
}

} // namespace mobilsteg::probehandy
