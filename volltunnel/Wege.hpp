#pragma once

#include "plattform/Tunnelgeraet.hpp"

#include <string>
#include <vector>

#include "volltunnel/Paket.hpp"

namespace mobilsteg::volltunnel {

using Befehl = std::vector<std::string>; ///< absolute path of a tool and its arguments

/// The way that the machine's traffic takes beside the tunnel.
struct Ausweg {
    std::string gateway; ///< empty: the device itself leads there
    std::string geraet;
    bool operator==(const Ausweg&) const = default;
};

/// What the tunnel's device is called at its two ends; one of them is made up.
struct Enden {
    Adresse hier, drueben;
};
[[nodiscard]] Enden tunnelenden(bool sechs);

/// The commands that set addresses and routes, for either kind of tools. A `netz` is an address or a network,
/// like "203.0.113.5" or "0.0.0.0/1". Pure.
class Wege {
public:
    Wege(Wegewerkzeug art, std::string wurzel) : art_(art), wurzel_(std::move(wurzel)) {}

    /// Gives the device its addresses of one family and puts it up; to be run in this order.
    [[nodiscard]] std::vector<Befehl> geraetEin(const std::string& geraet, bool sechs) const;

    /// Leads `netz` along the way, or with `weg` no longer.
    [[nodiscard]] Befehl fuehre(const std::string& netz, const Ausweg& ausweg, bool weg = false) const;

    /// Asks for the default route, whose answer `liesAusweg` understands.
    [[nodiscard]] Befehl frageAusweg(bool sechs) const;
    [[nodiscard]] std::optional<Ausweg> liesAusweg(std::string_view text) const;

private:
    Wegewerkzeug art_;
    std::string wurzel_;
};

[[nodiscard]] bool istSechs(const std::string& netz);

/// The name servers in `networksetup -getdnsservers` or `scutil --dns`.
[[nodiscard]] std::vector<std::string> liesDnsserver(std::string_view text);

/// What was done to the system and has to be taken back: written into a file of root's before it is done.
/// Blocks on the tools.
class Rueckbau {
public:
    explicit Rueckbau(std::string pfad);

    /// Notes `zurueck`, then runs `befehl`. A text: it failed, and why; what may have been done all the same
    /// stays noted.
    [[nodiscard]] std::optional<std::string> tue(const Befehl& befehl, const Befehl& zurueck);

    void nimmZurueck(const Befehl& zurueck);

    /// Takes everything back, the last first. False: something could not be, and stays noted.
    bool alles();

    [[nodiscard]] bool leer() const { return offene_.empty(); }

private:
    bool sichere() const;

    std::string pfad_;
    std::vector<Befehl> offene_;
};

} // namespace mobilsteg::volltunnel
