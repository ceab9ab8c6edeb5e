#pragma once

#include "plattform/Dateien.hpp"
#include "probe/handy/Handy.hpp"

#include <mutex>
#include <string>

namespace mobilsteg::probehandy {

/// The phone's end of the cable: a loopback port for adb servers. A device behind a port does not announce
/// itself as one at a cable does, so the adb server is told to connect and to forget.
class Kabel {
public:
    /// `adbServer`: its port; 0: none is told, somebody says `adb connect`.
    Kabel(Handy& handy, Deskriptor horcher, int adbServer);

    /// Starts what serves the port and keeps a phone that is plugged in announced, also to an adb server that
    /// comes later. Both run until the program ends.
    void starte();

    /// Return an error's German text; empty: it worked. They wait for the adb server.
    [[nodiscard]] std::string stecke();
    void ziehe();

    /// What follows at once from a changed setting: no stream where nothing is shared, no waiting for a
    /// permission that is given.
    void wendeAn();

private:
    void bediene(Deskriptor buchse);
    [[nodiscard]] bool fehlt();
    [[nodiscard]] bool verbunden();
    std::string melde();
    [[nodiscard]] std::string frageAdbServer(const std::string& dienst) const;

    Handy& handy_;
    Deskriptor horcher_;
    int adbServer_;
    std::mutex meldung_; ///< one question to the adb server at a time; taken before the phone's lock
};

} // namespace mobilsteg::probehandy
