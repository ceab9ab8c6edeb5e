#pragma once

#include "plattform/Dateien.hpp"
#include "probe/handy/Handy.hpp"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

/// One adb stream, as the service in the phone sees it, which has a thread of its own. Like adb's own streams
/// it knows no half-closing.
class Strom {
public:
    Strom(std::shared_ptr<AdbVerbindung> verbindung, std::uint32_t eigene, std::uint32_t fremde)
        : verbindung_(std::move(verbindung)), eigene_(eigene), fremde_(fremde) {}

    /// Waits for the next bytes; empty: the stream is over. Asking also acknowledges the bytes before.
    [[nodiscard]] std::string lies();

    /// Exactly that many bytes; fewer: the stream is over.
    [[nodiscard]] std::string lies(std::size_t anzahl);
    /// Everything up to and including `marke`; without it: the stream is over.
    [[nodiscard]] std::string liesBis(std::string_view marke);

    /// Waits until the other side has acknowledged everything. False: the stream is over.
    bool schreibe(std::string_view bytes);

    /// The service's own end.
    void schliesse();

private:
    friend class AdbVerbindung;

    std::shared_ptr<AdbVerbindung> verbindung_;
    std::uint32_t eigene_;
    std::uint32_t fremde_;
    std::string vorrat_; ///< read, but not yet asked for; the service's thread only

    // Guarded by the phone's lock.
    std::condition_variable geweckt_;
    std::deque<std::string> eingang_;
    bool quittungSchuldig_ = false;
    bool unbestaetigt_ = false;
    bool zuEnde_ = false;
};

/// One connection to an adb server, from the phone's side.
class AdbVerbindung : public std::enable_shared_from_this<AdbVerbindung> {
public:
    AdbVerbindung(Handy& handy, Deskriptor buchse) : handy_(handy), buchse_(std::move(buchse)) {}

    /// Serves the connection to its end.
    void betreibe();
    /// Hangs up; betreibe() then returns.
    void trenne();
    /// Ends all streams and keeps the connection.
    void kappeStroeme();
    /// The user has agreed: whoever waits for that is let in.
    void gibFrei();
    /// An adb server is at the other end, authorised or not. The caller holds the phone's lock.
    [[nodiscard]] bool begruesst() const { return lage_ != Lage::fremd; }

private:
    friend class Strom;

    struct Kopf { // as on the wire
        std::uint32_t befehl, arg0, arg1, laenge, summe, magie;
    };
    enum class Lage {
        fremd,   ///< nothing heard yet
        gefragt, ///< the peer is to prove who it is
        wartet,  ///< it has offered its key, and the user has not agreed yet
        frei,
    };

    void verarbeite(const Kopf& kopf, std::string nutzlast);
    void lasseEin();
    void verlangeAusweis();
    void oeffneStrom(std::uint32_t fremde, std::string_view ziel);
    void sende(std::uint32_t befehl, std::uint32_t arg0, std::uint32_t arg1, std::string_view nutzlast = {});

    Handy& handy_;
    Deskriptor buchse_;
    std::mutex sendeschloss_; ///< one message at a time

    // Guarded by the phone's lock.
    Lage lage_ = Lage::fremd;
    std::map<std::uint32_t, std::shared_ptr<Strom>> stroeme_; ///< by the number that we gave them
    std::uint32_t letzteNummer_ = 0;
    std::uint32_t groessteNutzlast_ = 4096;
};

} // namespace mobilsteg::probehandy
