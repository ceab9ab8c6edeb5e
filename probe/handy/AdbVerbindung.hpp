#pragma once

#include "probe/handy/AdbNachricht.hpp"
#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Strom.hpp"

#include <asio/ip/tcp.hpp>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

/// Starts a service on a freshly opened stream.
using Dienst = std::function<void(std::shared_ptr<Strom>)>;
/// Finds the service behind a destination such as "tcp:1080"; an empty function if that port is closed.
using Dienstwahl = std::function<Dienst(std::string_view ziel)>;

/// One connection to an adb server, from the phone's side. A peer that breaks the protocol loses the
/// connection; it stays alive as long as something is pending on its socket.
class AdbVerbindung final : public std::enable_shared_from_this<AdbVerbindung>, private Stromleitung {
public:
    AdbVerbindung(asio::ip::tcp::socket buchse, const Handyzustand& zustand, Dienstwahl dienste,
                  std::function<void(const AdbVerbindung*)> zuEnde);

    void starte();

    /// Hangs up and cuts all streams. Tells nobody.
    void trenne();

    /// Cuts all streams and keeps the connection.
    void kappeStroeme();

    /// The person has agreed to the key that waits for it, if one does.
    void gibFrei();

    /// An adb server is at the other end, authorised or not.
    bool begruesst() const { return lage_ != Lage::fremd; }
    std::size_t stroeme() const { return stroeme_.size(); }

private:
    enum class Lage {
        fremd,   ///< nothing heard yet
        gefragt, ///< our token is with the peer
        wartet,  ///< the peer has offered its public key, and the person has not agreed yet
        frei,
    };

    void liesKopf();
    void liesNutzlast();
    bool summeStimmt() const;
    void verarbeite();
    void begruesse();
    void pruefeSchluessel();
    void oeffneStrom();
    void sendeMarke();
    void sendeKennung();
    void scheitere();
    std::shared_ptr<Strom> angesprochen() const;

    void sende(AdbBefehl befehl, std::uint32_t arg0, std::uint32_t arg1, std::string_view nutzlast) override;
    void vergiss(std::uint32_t eigene) override;
    void schreibeWeiter();

    asio::ip::tcp::socket buchse_;
    const Handyzustand& zustand_;
    Dienstwahl dienste_;
    std::function<void(const AdbVerbindung*)> zuEnde_;

    Lage lage_ = Lage::fremd;
    std::uint32_t version_ = adbVersionMitSumme;
    std::uint32_t fremdeNutzlast_ = adbKleinsteNutzlast;

    AdbKopfbytes kopfbytes_{};
    AdbKopf kopf_;
    std::string nutzlast_;
    bool lesenRuht_ = false;

    std::deque<std::string> ausgang_;
    std::size_t ausgangBytes_ = 0;

    std::map<std::uint32_t, std::shared_ptr<Strom>> stroeme_; ///< by the number we gave them
    std::uint32_t naechsteNummer_ = 1;
};

} // namespace mobilsteg::probehandy
