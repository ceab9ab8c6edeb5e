#include "probe/handy/Pumpe.hpp"

#include <asio/buffer.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <chrono>
#include <utility>
#include <vector>

namespace mobilsteg::probehandy {

namespace {

/// How long the last bytes from a Mac that has already closed may take on their way to a target that does not
/// take them.
constexpr std::chrono::seconds restfrist{5};
constexpr std::size_t stueckgroesse = 64 * 1024;

class Pumpe : public std::enable_shared_from_this<Pumpe> {
public:
    Pumpe(std::shared_ptr<Strom> strom, asio::ip::tcp::socket ziel, Handyzustand& zustand)
        : strom_(std::move(strom)), ziel_(std::move(ziel)), frist_(ziel_.get_executor()), zustand_(zustand),
          runter_(stueckgroesse) {}

    void starte(std::string vorrat) {
        std::error_code egal;
        ziel_.set_option(asio::ip::tcp::no_delay(true), egal);
        // The end has to be heard of even while neither direction moves.
        strom_->beiEnde([selbst = shared_from_this()](bool gekappt) { selbst->stromZuEnde(gekappt); });
        liesZiel();
        if (vorrat.empty()) {
            liesStrom();
        } else {
            schreibeZiel(std::move(vorrat));
        }
    }

private:
    void liesStrom() {
        strom_->lies([selbst = shared_from_this()](std::string daten) {
            if (daten.empty()) {
                selbst->schliesseZiel();
            } else {
                selbst->schreibeZiel(std::move(daten));
            }
        });
    }

    void schreibeZiel(std::string daten) {
        hoch_ = std::move(daten);
        asio::async_write(ziel_, asio::buffer(hoch_),
                          [selbst = shared_from_this()](std::error_code fehler, std::size_t menge) {
                              selbst->zustand_.bytesHoch += menge;
                              if (fehler) {
                                  selbst->beende();
                              } else {
                                  selbst->liesStrom();
                              }
                          });
    }

    void liesZiel() {
        ziel_.async_read_some(asio::buffer(runter_),
                              [selbst = shared_from_this()](std::error_code fehler, std::size_t menge) {
                                  if (fehler) {
                                      selbst->zielZuEnde();
                                      return;
                                  }
                                  selbst->schreibeStrom(menge);
                              });
    }

    void schreibeStrom(std::size_t menge) {
        strom_->schreibe(std::string(runter_.data(), menge), [selbst = shared_from_this(), menge](bool heil) {
            if (!heil) {
                return; // stromZuEnde() hears of it as well
            }
            selbst->zustand_.bytesRunter += menge;
            selbst->liesZiel();
        });
    }

    void zielZuEnde() {
        // While the Mac's last bytes are still being written, a failed read only says that nobody answers.
        if (!stromWeg_) {
            beende();
        }
    }

    void stromZuEnde(bool gekappt) {
        stromWeg_ = true;
        if (gekappt) {
            schliesseZiel();
            return;
        }
        // Reading and writing upwards go on by themselves until nothing is left.
        frist_.expires_after(restfrist);
        frist_.async_wait([selbst = shared_from_this()](std::error_code fehler) {
            if (!fehler) {
                selbst->schliesseZiel();
            }
        });
    }

    void beende() {
        strom_->schliesse();
        schliesseZiel();
    }

    void schliesseZiel() {
        std::error_code egal;
        frist_.cancel();
        ziel_.shutdown(asio::socket_base::shutdown_both, egal);
        ziel_.close(egal);
    }

    std::shared_ptr<Strom> strom_;
    asio::ip::tcp::socket ziel_;
    asio::steady_timer frist_;
    Handyzustand& zustand_;
    std::string hoch_;
    std::vector<char> runter_;
    bool stromWeg_ = false;
};

} // namespace

void pumpe(std::shared_ptr<Strom> strom, asio::ip::tcp::socket ziel, Handyzustand& zustand,
           std::string vorrat) {
    std::make_shared<Pumpe>(std::move(strom), std::move(ziel), zustand)->starte(std::move(vorrat));
}

} // namespace mobilsteg::probehandy
