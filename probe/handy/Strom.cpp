#include "probe/handy/Strom.hpp"

#include <asio/post.hpp>

#include <algorithm>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t eingangGrenze = 16 * 1024 * 1024;

template <typename Funktion, typename Wert>
void meldeSpaeter(const asio::any_io_executor& ausfuehrer, Funktion& funktion, Wert wert) {
    if (!funktion) {
        return;
    }
    asio::post(ausfuehrer, [rufe = std::exchange(funktion, nullptr), wert = std::move(wert)]() mutable {
        rufe(std::move(wert));
    });
}

} // namespace

Strom::Strom(asio::any_io_executor ausfuehrer, Stromleitung& leitung, std::uint32_t eigene,
             std::uint32_t fremde, std::uint32_t nutzlast)
    : ausfuehrer_(std::move(ausfuehrer)), leitung_(&leitung), eigene_(eigene), fremde_(fremde),
      nutzlast_(nutzlast) {}

void Strom::lies(Gelesen fertig) {
    leser_ = std::move(fertig);
    if (!eingang_.empty()) {
        std::string daten = std::move(eingang_.front());
        eingang_.pop_front();
        eingangBytes_ -= daten.size();
        meldeSpaeter(ausfuehrer_, leser_, std::move(daten));
    } else if (leitung_ == nullptr) {
        meldeSpaeter(ausfuehrer_, leser_, std::string());
    } else if (std::exchange(quittungSchuldig_, false)) {
        leitung_->sende(AdbBefehl::okay, eigene_, fremde_, {});
    }
}

void Strom::schreibe(std::string daten, Geschrieben fertig) {
    schreiber_ = std::move(fertig);
    ausgang_ = std::move(daten);
    gesendet_ = 0;
    if (leitung_ == nullptr) {
        meldeSpaeter(ausfuehrer_, schreiber_, false);
    } else {
        sendeStueck();
    }
}

void Strom::sendeStueck() {
    if (gesendet_ == ausgang_.size()) {
        ausgang_.clear();
        meldeSpaeter(ausfuehrer_, schreiber_, true);
        return;
    }
    const std::size_t laenge = std::min<std::size_t>(nutzlast_, ausgang_.size() - gesendet_);
    const std::string_view stueck = std::string_view(ausgang_).substr(gesendet_, laenge);
    gesendet_ += laenge;
    unbestaetigt_ = true;
    leitung_->sende(AdbBefehl::wrte, eigene_, fremde_, stueck);
}

void Strom::beiEnde(Beendet fertig) {
    beendet_ = std::move(fertig);
}

void Strom::schliesse() {
    if (leitung_ == nullptr) {
        return;
    }
    Stromleitung& leitung = *std::exchange(leitung_, nullptr);
    leser_ = nullptr;
    schreiber_ = nullptr;
    beendet_ = nullptr;
    verwirfEingang();
    leitung.sende(AdbBefehl::clse, eigene_, fremde_, {});
    leitung.vergiss(eigene_);
}

void Strom::nimmDaten(std::string daten) {
    if (daten.empty()) {
        leitung_->sende(AdbBefehl::okay, eigene_, fremde_, {});
        return;
    }
    quittungSchuldig_ = true;
    if (leser_) {
        meldeSpaeter(ausfuehrer_, leser_, std::move(daten));
        return;
    }
    // A sender waits for its acknowledgement, with one exception: once adb's own client has closed, adb sends
    // all that is left of it at once, and then the end. Anything beyond that would undo all back-pressure.
    eingangBytes_ += daten.size();
    eingang_.push_back(std::move(daten));
    if (eingangBytes_ > eingangGrenze) {
        kappe();
    }
}

void Strom::nimmQuittung() {
    if (std::exchange(unbestaetigt_, false)) {
        sendeStueck();
    }
}

void Strom::nimmEnde() {
    if (leitung_ == nullptr) {
        return;
    }
    std::exchange(leitung_, nullptr)->vergiss(eigene_);
    meldeEnde(false);
}

void Strom::kappe() {
    if (leitung_ == nullptr) {
        return;
    }
    Stromleitung& leitung = *std::exchange(leitung_, nullptr);
    leitung.sende(AdbBefehl::clse, eigene_, fremde_, {});
    leitung.vergiss(eigene_);
    verwirfEingang();
    meldeEnde(true);
}

void Strom::verwirfEingang() {
    eingang_.clear();
    eingangBytes_ = 0;
}

void Strom::meldeEnde(bool gekappt) {
    ausgang_.clear();
    meldeSpaeter(ausfuehrer_, leser_, std::string());
    meldeSpaeter(ausfuehrer_, schreiber_, false);
    meldeSpaeter(ausfuehrer_, beendet_, gekappt);
}

} // namespace mobilsteg::probehandy
