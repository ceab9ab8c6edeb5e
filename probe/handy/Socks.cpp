#include "probe/handy/Socks.hpp"

#include "probe/handy/Austritt.hpp"
#include "probe/handy/Pumpe.hpp"
#include "probe/handy/Text.hpp"
#include "probe/handy/Zielverbindung.hpp"

#include <asio/any_io_executor.hpp>
#include <asio/ip/address.hpp>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr unsigned char socksVersion = 5;
constexpr unsigned char ohneAnmeldung = 0;
constexpr unsigned char keineAnmeldungPasst = 0xff;
constexpr unsigned char befehlVerbinde = 1;

class Socksitzung : public std::enable_shared_from_this<Socksitzung> {
public:
    Socksitzung(std::shared_ptr<Strom> strom, Handyzustand& zustand)
        : strom_(std::move(strom)), zustand_(zustand), art_(zustand.proxy) {}

    void starte() {
        if (art_ == Proxyart::stumm) {
            schluckeAlles();
            return;
        }
        fordere(2, [this] {
            if (byte(0) != socksVersion) {
                strom_->schliesse();
                return;
            }
            fordere(2U + byte(1), [this] { begruesse(); });
        });
    }

private:
    /// Goes on once at least that many bytes are there.
    void fordere(std::size_t menge, std::function<void()> weiter) {
        if (puffer_.size() >= menge) {
            weiter();
            return;
        }
        strom_->lies(
            [selbst = shared_from_this(), menge, weiter = std::move(weiter)](const std::string& daten) {
                if (!daten.empty()) {
                    selbst->puffer_ += daten;
                    selbst->fordere(menge, weiter);
                }
            });
    }

    unsigned char byte(std::size_t stelle) const { return static_cast<unsigned char>(puffer_[stelle]); }

    void schluckeAlles() {
        strom_->lies([selbst = shared_from_this()](const std::string& daten) {
            if (!daten.empty()) {
                selbst->schluckeAlles();
            }
        });
    }

    void begruesse() {
        if (art_ == Proxyart::kaputt) {
            strom_->schliesse();
            return;
        }
        const std::size_t laenge = 2U + byte(1);
        const bool passt = puffer_.find(static_cast<char>(ohneAnmeldung), 2) < laenge;
        puffer_.erase(0, laenge);
        const unsigned char wahl = passt ? ohneAnmeldung : keineAnmeldungPasst;
        strom_->schreibe({static_cast<char>(socksVersion), static_cast<char>(wahl)},
                         [selbst = shared_from_this(), passt](bool heil) {
                             if (!heil) {
                                 return;
                             }
                             if (passt) {
                                 selbst->liesAuftrag();
                             } else {
                                 selbst->strom_->schliesse();
                             }
                         });
    }

    /// Version, command, reserved, kind of address, address, port. The fifth byte is there in every kind.
    void liesAuftrag() {
        fordere(5, [this] {
            if (byte(0) != socksVersion) {
                strom_->schliesse();
                return;
            }
            switch (byte(3)) {
            case 1:
                fordere(10, [this] { nimmAuftrag("ipv4", 4, 4); });
                break;
            case 3:
                fordere(7U + byte(4), [this] { nimmAuftrag("name", 5, byte(4)); });
                break;
            case 4:
                fordere(22, [this] { nimmAuftrag("ipv6", 4, 16); });
                break;
            default:
                lehneAb(SocksAntwort::adressartUnbekannt);
            }
        });
    }

    std::string rechner(std::string_view art, std::string_view bytes) const {
        if (art == "name") {
            return std::string(bytes);
        }
        if (art == "ipv4") {
            asio::ip::address_v4::bytes_type adresse{};
            std::copy_n(bytes.begin(), adresse.size(), adresse.begin());
            return asio::ip::address_v4(adresse).to_string();
        }
        asio::ip::address_v6::bytes_type adresse{};
        std::copy_n(bytes.begin(), adresse.size(), adresse.begin());
        return asio::ip::address_v6(adresse).to_string();
    }

    void nimmAuftrag(const char* art, std::size_t anfang, std::size_t laenge) {
        const std::size_t hinter = anfang + laenge;
        Proxyziel ziel{rechner(art, std::string_view(puffer_).substr(anfang, laenge)),
                       static_cast<std::uint16_t>(byte(hinter) * 256U + byte(hinter + 1)), art};
        const bool sollVerbinden = byte(1) == befehlVerbinde;
        puffer_.erase(0, hinter + 2);
        zustand_.merkeZiel(ziel);
        if (!sollVerbinden) {
            lehneAb(SocksAntwort::befehlUnbekannt);
        } else if (klein(ziel.ziel) == austrittsname) {
            antworte(SocksAntwort::gelungen, [this](bool heil) {
                if (heil) {
                    beantworteAustritt(strom_, zustand_, std::move(puffer_));
                }
            });
        } else {
            verbindeMit(ziel);
        }
    }

    void verbindeMit(const Proxyziel& ziel) {
        const auto gibAuf = verbindeMitZiel(
            strom_->ausfuehrer(), ziel.ziel, ziel.port, zustand_.insNetz,
            [selbst = shared_from_this()](SocksAntwort antwort, asio::ip::tcp::socket buchse) {
                selbst->zielDa(antwort, std::make_shared<asio::ip::tcp::socket>(std::move(buchse)));
            });
        strom_->beiEnde([gibAuf](bool) { gibAuf(); });
    }

    void zielDa(SocksAntwort antwort, std::shared_ptr<asio::ip::tcp::socket> buchse) {
        if (antwort != SocksAntwort::gelungen) {
            lehneAb(antwort);
            return;
        }
        antworte(antwort, [this, buchse](bool heil) {
            if (heil) {
                pumpe(strom_, std::move(*buchse), zustand_, std::move(puffer_));
            }
        });
    }

    void lehneAb(SocksAntwort antwort) {
        antworte(antwort, [this](bool heil) {
            if (heil) {
                strom_->schliesse();
            }
        });
    }

    void antworte(SocksAntwort antwort, std::function<void(bool)> weiter) {
        std::string bytes(10,
                          '\0'); // the address we are bound to is nobody's business, so it stays 0.0.0.0:0
        bytes[0] = static_cast<char>(socksVersion);
        bytes[1] = static_cast<char>(antwort);
        bytes[3] = 1;
        strom_->schreibe(std::move(bytes), [selbst = shared_from_this(),
                                            weiter = std::move(weiter)](bool heil) { weiter(heil); });
    }

    std::shared_ptr<Strom> strom_;
    Handyzustand& zustand_;
    Proxyart art_;
    std::string puffer_;
};

} // namespace

void bedieneSocks(std::shared_ptr<Strom> strom, Handyzustand& zustand) {
    std::make_shared<Socksitzung>(std::move(strom), zustand)->starte();
}

} // namespace mobilsteg::probehandy
