#pragma once

#include "probe/handy/AdbGeraet.hpp"
#include "probe/handy/AdbServer.hpp"
#include "probe/handy/Befehlsantwort.hpp"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include <cstdint>
#include <functional>
#include <optional>

namespace mobilsteg::probehandy {

/// The phone's plug. With an adb server named, the phone announces itself there, as the system does for a
/// phone on a real cable: adb then neither needs a "connect" nor keeps a phone that is gone.
class Steckplatz {
public:
    Steckplatz(asio::io_context& schleife, AdbGeraet& geraet, std::optional<std::uint16_t> adbServer);

    /// Listens and, with an adb server, has it connect. Fails if the port is taken or the server cannot be
    /// won; in the latter case it is asked again every second for as long as the phone stays plugged in.
    void stecke(Antworter fertig);

    /// Unplugs: afterwards nothing of the phone can be reached. Unless it is to be hard, the adb server is
    /// told beforehand, so that the phone vanishes from its list instead of staying in it as "offline".
    void ziehe(bool hart, Antworter fertig);

    /// Plugs in at the start of the program, whether or not an adb server is there yet.
    void steckeBeimStart();

private:
    using Gefragt = std::function<void(AdbServerAntwort)>;

    void melde(Gefragt fertig);
    void frage(const char* dienst, Gefragt fertig);
    void bleibeAngemeldet();
    void pruefeAnmeldung();

    asio::io_context& schleife_;
    AdbGeraet& geraet_;
    std::optional<std::uint16_t> adbServer_;
    asio::steady_timer takt_;
    bool angemeldet_ = false; ///< the phone wants to be known at the adb server
    bool fragtGerade_ = false;
    unsigned steckung_ = 0; ///< counts up with every plugging and unplugging
};

} // namespace mobilsteg::probehandy
