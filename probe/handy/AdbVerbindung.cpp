#include "probe/handy/AdbVerbindung.hpp"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>

#include <algorithm>
#include <random>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::uint32_t authMarke = 1;
constexpr std::uint32_t authUnterschrift = 2;
constexpr std::uint32_t authSchluessel = 3;
constexpr std::size_t markenlaenge = 20;

/// A peer that sends but does not read is not read from either once this much waits for it.
constexpr std::size_t ausgangGrenze = 8 * 1024 * 1024;
constexpr std::size_t stroemeGrenze = 2000;

std::string kennung(const std::string& modell) {
    return "device::ro.product.name=dm1qxeea;ro.product.model=" + modell +
           ";ro.product.device=dm1q;features=";
}

} // namespace

AdbVerbindung::AdbVerbindung(asio::ip::tcp::socket buchse, const Handyzustand& zustand, Dienstwahl dienste,
                             std::function<void(const AdbVerbindung*)> zuEnde)
    : buchse_(std::move(buchse)), zustand_(zustand), dienste_(std::move(dienste)),
      zuEnde_(std::move(zuEnde)) {}

void AdbVerbindung::starte() {
    liesKopf();
}

void AdbVerbindung::trenne() {
    std::error_code egal;
    buchse_.close(egal);
    kappeStroeme();
}

void AdbVerbindung::kappeStroeme() {
    for (const auto& [nummer, strom] : std::exchange(stroeme_, {})) {
        strom->kappe();
    }
}

void AdbVerbindung::gibFrei() {
    if (lage_ == Lage::wartet) {
        sendeKennung();
    }
}

void AdbVerbindung::scheitere() {
    trenne();
    if (auto melde = std::exchange(zuEnde_, nullptr)) {
        melde(this);
    }
}

void AdbVerbindung::liesKopf() {
    if (ausgangBytes_ > ausgangGrenze) {
        lesenRuht_ = true;
        return;
    }
    asio::async_read(buchse_, asio::buffer(kopfbytes_),
                     [selbst = shared_from_this()](std::error_code fehler, std::size_t) {
                         const auto kopf = fehler ? std::nullopt : liesAdbKopf(selbst->kopfbytes_);
                         if (!kopf) {
                             selbst->scheitere();
                             return;
                         }
                         selbst->kopf_ = *kopf;
                         selbst->liesNutzlast();
                     });
}

void AdbVerbindung::liesNutzlast() {
    nutzlast_.assign(kopf_.laenge, '\0');
    asio::async_read(buchse_, asio::buffer(nutzlast_),
                     [selbst = shared_from_this()](std::error_code fehler, std::size_t) {
                         if (fehler || !selbst->summeStimmt()) {
                             selbst->scheitere();
                             return;
                         }
                         selbst->verarbeite();
                         if (selbst->buchse_.is_open()) {
                             selbst->liesKopf();
                         }
                     });
}

bool AdbVerbindung::summeStimmt() const {
    // An adb server that comes back to a phone it lost still has the version they had agreed on in mind, and
    // leaves the sum out of its very first message. So a greeting is judged by the version it announces.
    const std::uint32_t version = kopf_.befehl == AdbBefehl::cnxn ? kopf_.arg0 : version_;
    return version > adbVersionMitSumme || adbPruefsumme(nutzlast_) == kopf_.pruefsumme;
}

void AdbVerbindung::verarbeite() {
    if (kopf_.befehl == AdbBefehl::cnxn) {
        begruesse();
        return;
    }
    if (kopf_.befehl == AdbBefehl::auth) {
        pruefeSchluessel();
        return;
    }
    if (lage_ != Lage::frei) {
        return;
    }
    if (kopf_.befehl == AdbBefehl::open) {
        oeffneStrom();
        return;
    }
    const std::shared_ptr<Strom> strom = angesprochen();
    if (!strom) {
        return;
    }
    switch (kopf_.befehl) {
    case AdbBefehl::wrte:
        strom->nimmDaten(std::move(nutzlast_));
        break;
    case AdbBefehl::okay:
        strom->nimmQuittung();
        break;
    case AdbBefehl::clse:
        strom->nimmEnde();
        break;
    default: // adb's own devices pass over what they do not know
        break;
    }
}

std::shared_ptr<Strom> AdbVerbindung::angesprochen() const {
    const auto stelle = stroeme_.find(kopf_.arg1);
    if (stelle == stroeme_.end() || (kopf_.arg0 != 0 && stelle->second->fremde() != kopf_.arg0)) {
        return nullptr;
    }
    return stelle->second;
}

void AdbVerbindung::begruesse() {
    if (kopf_.arg0 < adbVersionMitSumme || kopf_.arg1 < adbKleinsteNutzlast) {
        scheitere();
        return;
    }
    kappeStroeme();
    version_ = std::min(kopf_.arg0, adbVersion);
    fremdeNutzlast_ = std::min(kopf_.arg1, adbNutzlast);
    if (zustand_.debugging) {
        sendeKennung();
    } else {
        sendeMarke();
    }
}

void AdbVerbindung::pruefeSchluessel() {
    if (lage_ != Lage::gefragt && lage_ != Lage::wartet) {
        return;
    }
    if (zustand_.debugging) {
        sendeKennung();
    } else if (kopf_.arg0 == authUnterschrift) {
        sendeMarke(); // we know no keys, so no signature fits; adb then tries its next key
    } else if (kopf_.arg0 == authSchluessel) {
        lage_ = Lage::wartet;
    }
}

void AdbVerbindung::sendeMarke() {
    std::random_device zufall;
    std::string marke(markenlaenge, '\0');
    for (char& zeichen : marke) {
        zeichen = static_cast<char>(static_cast<unsigned char>(zufall() & 0xffU));
    }
    lage_ = Lage::gefragt;
    sende(AdbBefehl::auth, authMarke, 0, marke);
}

void AdbVerbindung::sendeKennung() {
    lage_ = Lage::frei;
    sende(AdbBefehl::cnxn, adbVersion, adbNutzlast, kennung(zustand_.modell));
}

void AdbVerbindung::oeffneStrom() {
    const std::uint32_t fremde = kopf_.arg0;
    if (fremde == 0) {
        return;
    }
    std::string_view ziel = nutzlast_;
    ziel = ziel.substr(0, ziel.find('\0'));
    const Dienst dienst = stroeme_.size() < stroemeGrenze ? dienste_(ziel) : nullptr;
    if (!dienst) {
        sende(AdbBefehl::clse, 0, fremde, {});
        return;
    }
    const std::uint32_t eigene = naechsteNummer_++;
    Stromleitung& leitung = *this;
    auto strom = std::make_shared<Strom>(buchse_.get_executor(), leitung, eigene, fremde, fremdeNutzlast_);
    stroeme_.emplace(eigene, strom);
    sende(AdbBefehl::okay, eigene, fremde, {});
    dienst(std::move(strom));
}

void AdbVerbindung::vergiss(std::uint32_t eigene) {
    stroeme_.erase(eigene);
}

void AdbVerbindung::sende(AdbBefehl befehl, std::uint32_t arg0, std::uint32_t arg1,
                          std::string_view nutzlast) {
    if (!buchse_.is_open()) {
        return;
    }
    ausgang_.push_back(adbNachricht(befehl, arg0, arg1, nutzlast));
    ausgangBytes_ += ausgang_.back().size();
    if (ausgang_.size() == 1) {
        schreibeWeiter();
    }
}

void AdbVerbindung::schreibeWeiter() {
    asio::async_write(buchse_, asio::buffer(ausgang_.front()),
                      [selbst = shared_from_this()](std::error_code fehler, std::size_t) {
                          if (fehler) {
                              selbst->scheitere();
                              return;
                          }
                          selbst->ausgangBytes_ -= selbst->ausgang_.front().size();
                          selbst->ausgang_.pop_front();
                          if (!selbst->ausgang_.empty()) {
                              selbst->schreibeWeiter();
                          }
                          if (selbst->ausgangBytes_ < ausgangGrenze / 2 &&
                              std::exchange(selbst->lesenRuht_, false)) {
                              selbst->liesKopf();
                          }
                      });
}

} // namespace mobilsteg::probehandy
