#pragma once

#include "probe/handy/AdbNachricht.hpp"

#include <asio/any_io_executor.hpp>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

/// What a stream needs of the connection that carries it.
class Stromleitung {
public:
    virtual void sende(AdbBefehl befehl, std::uint32_t arg0, std::uint32_t arg1,
                       std::string_view nutzlast) = 0;
    /// The stream with this number of ours is over; nothing more is to be delivered to it.
    virtual void vergiss(std::uint32_t eigene) = 0;

protected:
    ~Stromleitung() = default;
};

/// One adb stream, as the service inside the phone sees it. Like adb's own streams it knows no half-closing.
/// All callbacks come from the event loop, never from within a call.
class Strom : public std::enable_shared_from_this<Strom> {
public:
    /// The bytes of one message; empty: the other side has closed, nothing more will come.
    using Gelesen = std::function<void(std::string daten)>;
    /// True: the other side has acknowledged everything. False: the stream is over.
    using Geschrieben = std::function<void(bool heil)>;
    /// True: cut off (unplugged, sharing ended); false: the other side closed in good order.
    using Beendet = std::function<void(bool gekappt)>;

    Strom(asio::any_io_executor ausfuehrer, Stromleitung& leitung, std::uint32_t eigene, std::uint32_t fremde,
          std::uint32_t nutzlast);

    /// Waits for the next message. Asking for it also acknowledges the previous one, so whoever does not ask
    /// holds the sender back. What had arrived before the other side closed is still delivered.
    void lies(Gelesen fertig);

    /// Sends all bytes, one message at a time, each only after the previous one was acknowledged. Only one
    /// call at a time.
    void schreibe(std::string daten, Geschrieben fertig);

    /// Whom to tell once when the other side ends the stream; not called after schliesse().
    void beiEnde(Beendet fertig);

    /// The service's own end. Pending callbacks are dropped without being called. Bytes that are not yet
    /// acknowledged are lost: wait for schreibe() first.
    void schliesse();

    const asio::any_io_executor& ausfuehrer() const { return ausfuehrer_; }

    // Called by the connection only.
    void nimmDaten(std::string daten);
    void nimmQuittung();
    void nimmEnde();
    void kappe();

    std::uint32_t fremde() const { return fremde_; }

private:
    void sendeStueck();
    void verwirfEingang();
    void meldeEnde(bool gekappt);

    asio::any_io_executor ausfuehrer_;
    Stromleitung* leitung_; ///< null once the stream is over
    std::uint32_t eigene_;
    std::uint32_t fremde_;
    std::uint32_t nutzlast_;

    std::deque<std::string> eingang_;
    std::size_t eingangBytes_ = 0;
    bool quittungSchuldig_ = false;
    Gelesen leser_;

    std::string ausgang_;
    std::size_t gesendet_ = 0;
    bool unbestaetigt_ = false;
    Geschrieben schreiber_;

    Beendet beendet_;
};

} // namespace mobilsteg::probehandy
