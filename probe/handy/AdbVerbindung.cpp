#include "probe/handy/AdbVerbindung.hpp"

#include "probe/handy/Dienste.hpp"
#include "probe/handy/Netz.hpp"

#include <sys/socket.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

namespace mobilsteg::probehandy {

namespace {

constexpr std::uint32_t CNXN = 0x4e584e43;
constexpr std::uint32_t AUTH = 0x48545541;
constexpr std::uint32_t OPEN = 0x4e45504f;
constexpr std::uint32_t OKAY = 0x59414b4f;
constexpr std::uint32_t CLSE = 0x45534c43;
constexpr std::uint32_t WRTE = 0x45545257;

constexpr std::uint32_t authMarke = 1;
constexpr std::uint32_t authUnterschrift = 2;
constexpr std::uint32_t authSchluessel = 3;

constexpr std::uint32_t version = 0x01000001;
constexpr std::uint32_t groessteNutzlast = 1024 * 1024;

static_assert(std::endian::native == std::endian::little,
              "A header goes over the wire as it lies in memory.");

} // namespace

std::string Strom::lies() {
    std::unique_lock sperre(verbindung_->handy_.schloss);
    if (eingang_.empty() && !zuEnde_ && std::exchange(quittungSchuldig_, false)) {
        sperre.unlock();
        verbindung_->sende(OKAY, eigene_, fremde_);
        sperre.lock();
    }
    geweckt_.wait(sperre, [this] { return zuEnde_ || !eingang_.empty(); });
    if (eingang_.empty())
        return {};
    std::string bytes = std::move(eingang_.front());
    eingang_.pop_front();
    return bytes;
}

std::string Strom::lies(std::size_t anzahl) {
    while (vorrat_.size() < anzahl) {
        const std::string bytes = lies();
        if (bytes.empty())
            break;
        vorrat_ += bytes;
    }
    std::string vorn = vorrat_.substr(0, anzahl);
    vorrat_.erase(0, vorn.size());
    return vorn;
}

std::string Strom::liesBis(std::string_view marke) {
    std::size_t stelle = 0;
    while ((stelle = vorrat_.find(marke)) == std::string::npos) {
        const std::string bytes = lies();
        if (bytes.empty())
            return std::exchange(vorrat_, {});
        vorrat_ += bytes;
    }
    return lies(stelle + marke.size());
}

bool Strom::schreibe(std::string_view bytes) {
    std::unique_lock sperre(verbindung_->handy_.schloss);
    while (!bytes.empty() && !zuEnde_) {
        const auto stueck = bytes.substr(0, verbindung_->groessteNutzlast_);
        bytes.remove_prefix(stueck.size());
        unbestaetigt_ = true;
        sperre.unlock();
        verbindung_->sende(WRTE, eigene_, fremde_, stueck);
        sperre.lock();
        geweckt_.wait(sperre, [this] { return zuEnde_ || !unbestaetigt_; });
    }
    return bytes.empty() && !unbestaetigt_;
}

void Strom::schliesse() {
    bool warOffen = false;
    {
        const std::scoped_lock sperre(verbindung_->handy_.schloss);
        warOffen = !std::exchange(zuEnde_, true);
        verbindung_->stroeme_.erase(eigene_);
    }
    if (warOffen)
        verbindung_->sende(CLSE, eigene_, fremde_);
}

void AdbVerbindung::betreibe() {
    Kopf kopf{};
    while (liesGenau(buchse_, &kopf, sizeof kopf)) {
        if (kopf.magie != ~kopf.befehl || kopf.laenge > groessteNutzlast)
            break;
        std::string nutzlast(kopf.laenge, '\0');
        if (!liesGenau(buchse_, nutzlast.data(), nutzlast.size()))
            break;
        verarbeite(kopf, std::move(nutzlast));
    }
    trenne();
    kappeStroeme();
}

void AdbVerbindung::trenne() {
    ::shutdown(buchse_.nummer(), SHUT_RDWR);
}

void AdbVerbindung::kappeStroeme() {
    std::vector<std::shared_ptr<Strom>> offene;
    {
        const std::scoped_lock sperre(handy_.schloss);
        for (const auto& [nummer, strom] : stroeme_) {
            if (std::exchange(strom->zuEnde_, true))
                continue;
            strom->eingang_.clear();
            strom->geweckt_.notify_all();
            offene.push_back(strom);
        }
    }
    for (const auto& strom : offene)
        sende(CLSE, strom->eigene_, strom->fremde_);
}

void AdbVerbindung::gibFrei() {
    {
        const std::scoped_lock sperre(handy_.schloss);
        if (lage_ != Lage::wartet)
            return;
        lage_ = Lage::frei; // only once
    }
    lasseEin();
}

void AdbVerbindung::verarbeite(const Kopf& kopf, std::string nutzlast) {
    std::unique_lock sperre(handy_.schloss);
    const bool darf = handy_.debugging || lage_ == Lage::frei;
    if (kopf.befehl == CNXN) {
        groessteNutzlast_ = std::clamp(kopf.arg1, 4096U, groessteNutzlast);
        sperre.unlock();
        darf ? lasseEin() : verlangeAusweis();
    } else if (kopf.befehl == AUTH && lage_ == Lage::gefragt) {
        if (!darf && kopf.arg0 == authSchluessel) {
            lage_ = Lage::wartet;
            return;
        }
        sperre.unlock();
        if (darf)
            lasseEin();
        else if (kopf.arg0 == authUnterschrift)
            verlangeAusweis(); // we know no keys, so no signature fits; adb then tries its next key
    } else if (kopf.befehl == OPEN && lage_ == Lage::frei) {
        sperre.unlock();
        oeffneStrom(kopf.arg0, std::string_view(nutzlast).substr(0, nutzlast.find('\0')));
    } else if (const auto gefunden = stroeme_.find(kopf.arg1); gefunden != stroeme_.end()) {
        Strom& strom = *gefunden->second;
        if (kopf.befehl == WRTE && !nutzlast.empty() && !strom.zuEnde_) {
            strom.eingang_.push_back(std::move(nutzlast));
            strom.quittungSchuldig_ = true;
        } else if (kopf.befehl == OKAY) {
            strom.unbestaetigt_ = false;
        } else if (kopf.befehl == CLSE) {
            strom.zuEnde_ = true;
        }
        strom.geweckt_.notify_all();
    }
}

void AdbVerbindung::lasseEin() {
    std::string kennung;
    {
        const std::scoped_lock sperre(handy_.schloss);
        lage_ = Lage::frei;
        kennung = "device::ro.product.name=dm1qxeea;ro.product.model=" + handy_.modell +
                  ";ro.product.device=dm1q;features=";
    }
    sende(CNXN, version, groessteNutzlast, kennung);
}

void AdbVerbindung::verlangeAusweis() {
    {
        const std::scoped_lock sperre(handy_.schloss);
        lage_ = Lage::gefragt;
    }
    sende(AUTH, authMarke, 0, std::string(20, 'm'));
}

void AdbVerbindung::oeffneStrom(std::uint32_t fremde, std::string_view ziel) {
    const Dienst dienst = findeDienst(ziel);
    std::shared_ptr<Strom> strom;
    {
        const std::scoped_lock sperre(handy_.schloss);
        if (handy_.weitergabe && dienst != nullptr) {
            strom = std::make_shared<Strom>(shared_from_this(), ++letzteNummer_, fremde);
            stroeme_.emplace(letzteNummer_, strom);
        }
    }
    if (!strom) {
        sende(CLSE, 0, fremde);
        return;
    }
    sende(OKAY, strom->eigene_, fremde);
    std::thread([strom, dienst, &handy = handy_] {
        dienst(*strom, handy);
        strom->schliesse();
    }).detach();
}

void AdbVerbindung::sende(std::uint32_t befehl, std::uint32_t arg0, std::uint32_t arg1,
                          std::string_view nutzlast) {
    // An older peer looks at the sum of the bytes; until it knows our version, each one does.
    const auto summe =
        std::accumulate(nutzlast.begin(), nutzlast.end(), 0U, [](std::uint32_t bisher, char zeichen) {
            return bisher + static_cast<unsigned char>(zeichen);
        });
    const Kopf kopf{befehl, arg0, arg1, static_cast<std::uint32_t>(nutzlast.size()), summe, ~befehl};
    std::string nachricht(reinterpret_cast<const char*>(&kopf), sizeof kopf);
    nachricht += nutzlast;
    const std::scoped_lock sperre(sendeschloss_);
    (void)probehandy::sende(buchse_, nachricht); // whoever reads notices a lost connection
}

} // namespace mobilsteg::probehandy
