#include "probe/handy/Zielverbindung.hpp"

#include "probe/handy/Buchse.hpp"
#include "probe/handy/Text.hpp"

#include <asio/error.hpp>
#include <asio/ip/address.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <deque>
#include <optional>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

using asio::ip::tcp;

constexpr std::chrono::seconds zielfrist{25};

bool istHier(const asio::ip::address& adresse) {
    if (adresse.is_v6() && adresse.to_v6().is_v4_mapped()) {
        return asio::ip::make_address_v4(asio::ip::v4_mapped, adresse.to_v6()).is_loopback();
    }
    return adresse.is_loopback();
}

bool heisstLocalhost(const std::string& rechner) {
    constexpr std::string_view endung = ".localhost";
    return rechner == "localhost" || (rechner.size() > endung.size() && rechner.ends_with(endung));
}

SocksAntwort deute(std::error_code fehler) {
    if (fehler == asio::error::connection_refused) {
        return SocksAntwort::abgewiesen;
    }
    if (fehler == asio::error::network_unreachable) {
        return SocksAntwort::netzUnerreichbar;
    }
    if (fehler == asio::error::host_unreachable || fehler == asio::error::timed_out) {
        return SocksAntwort::rechnerUnerreichbar;
    }
    return SocksAntwort::allgemein;
}

class Versuch : public std::enable_shared_from_this<Versuch> {
public:
    Versuch(asio::any_io_executor ausfuehrer, std::uint16_t port, bool insNetz, Verbunden fertig)
        : ausfuehrer_(ausfuehrer), namensdienst_(ausfuehrer), buchse_(ausfuehrer), frist_(ausfuehrer),
          port_(port), insNetz_(insNetz), fertig_(std::move(fertig)) {}

    void starte(const std::string& rechner) {
        frist_.expires_after(zielfrist);
        frist_.async_wait([selbst = shared_from_this()](std::error_code fehler) {
            if (!fehler) {
                selbst->melde(SocksAntwort::rechnerUnerreichbar);
            }
        });
        std::error_code keineAdresse;
        const auto adresse = asio::ip::make_address(rechner, keineAdresse);
        if (!keineAdresse) {
            ziele_.emplace_back(adresse, port_);
        } else if (heisstLocalhost(klein(rechner))) {
            ziele_.emplace_back(asio::ip::address_v4::loopback(), port_);
            ziele_.emplace_back(asio::ip::address_v6::loopback(), port_);
        } else if (insNetz_) {
            frageNamensdienst(rechner);
            return;
        }
        asio::post(ausfuehrer_, [selbst = shared_from_this()] {
            selbst->versucheNaechstes(SocksAntwort::rechnerUnerreichbar);
        });
    }

    void gibAuf() {
        fertig_ = nullptr;
        raeumeAuf();
    }

private:
    void frageNamensdienst(const std::string& rechner) {
        namensdienst_.async_resolve(
            rechner, std::to_string(port_),
            [selbst = shared_from_this()](std::error_code fehler, tcp::resolver::results_type gefunden) {
                if (!fehler) {
                    for (const auto& eintrag : gefunden) {
                        selbst->ziele_.push_back(eintrag.endpoint());
                    }
                }
                selbst->versucheNaechstes(SocksAntwort::rechnerUnerreichbar);
            });
    }

    void versucheNaechstes(SocksAntwort bisher) {
        if (ziele_.empty() || !fertig_) {
            melde(bisher);
            return;
        }
        const tcp::endpoint ziel = ziele_.front();
        ziele_.pop_front();
        if (!insNetz_ && !istHier(ziel.address())) {
            versucheNaechstes(SocksAntwort::verboten);
            return;
        }
        std::error_code fehler;
        buchse_.close(fehler);
        buchse_.open(ziel.protocol(), fehler);
        if (fehler) {
            versucheNaechstes(SocksAntwort::allgemein);
            return;
        }
        behalteFuerUns(buchse_.native_handle());
        buchse_.async_connect(ziel, [selbst = shared_from_this()](std::error_code warum) {
            if (warum) {
                selbst->versucheNaechstes(deute(warum));
            } else {
                selbst->melde(SocksAntwort::gelungen);
            }
        });
    }

    void melde(SocksAntwort antwort) {
        if (auto fertig = std::exchange(fertig_, nullptr)) {
            fertig(antwort, std::move(buchse_));
        }
        raeumeAuf();
    }

    void raeumeAuf() {
        std::error_code egal;
        frist_.cancel();
        namensdienst_.cancel();
        buchse_.close(egal);
    }

    asio::any_io_executor ausfuehrer_;
    tcp::resolver
        namensdienst_; ///< Asio asks on a thread of its own, the system's resolver being a blocking one
    tcp::socket buchse_;
    asio::steady_timer frist_;
    std::uint16_t port_;
    bool insNetz_;
    std::deque<tcp::endpoint> ziele_;
    Verbunden fertig_;
};

} // namespace

std::function<void()> verbindeMitZiel(asio::any_io_executor ausfuehrer, std::string rechner,
                                      std::uint16_t port, bool insNetz, Verbunden fertig) {
    auto versuch = std::make_shared<Versuch>(std::move(ausfuehrer), port, insNetz, std::move(fertig));
    versuch->starte(rechner);
    return [schwach = std::weak_ptr(versuch)] {
        if (const auto noch = schwach.lock()) {
            noch->gibAuf();
        }
    };
}

} // namespace mobilsteg::probehandy
