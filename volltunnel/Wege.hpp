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

/// What the tunnel's device is called at its two ends, of one family.
struct Enden {
    Adresse hier, drueben;
};

// The addresses, made up: a range for measurements, that no network uses, and a private one.
[[nodiscard]] Enden tunnelenden(bool sechs);

/// The commands that set addresses and routes, for either kind of tools. Pure.
class Wege {
public:
    Wege(Wegewerkzeug art, std::string wurzel) : art_(art), wurzel_(std::move(wurzel)) {}

    /// Gives the device its addresses of one family and puts it up; to be run in this order.
    [[nodiscard]] std::vector<Befehl> geraetEin(const std::string& geraet, bool sechs) const;

    /// Leads `netz` ("203.0.113.5" or "0.0.0.0/1") into the device. Needs no undoing, it goes with the
    /// device.
    [[nodiscard]] Befehl durch(const std::string& netz, const std::string& geraet, bool weg = false) const;

    /// Leads `netz` beside the tunnel. With `weg` it takes that back.
    [[nodiscard]] Befehl vorbei(const std::string& netz, const Ausweg& ausweg, bool weg = false) const;

    /// Asks for the default route, whose answer `liesAusweg` understands.
    [[nodiscard]] Befehl frageAusweg(bool sechs) const;
    [[nodiscard]] std::optional<Ausweg> liesAusweg(std::string_view text) const;

    /// What has to stay beside the tunnel by a road of its own.
    [[nodiscard]] std::vector<std::string> immerVorbei() const;

private:
    [[nodiscard]] Befehl route(const std::string& netz, const std::string& geraet, const std::string& gateway,
                               bool weg) const;

    Wegewerkzeug art_;
    std::string wurzel_;
};

/// The servers in `networksetup -getdnsservers`; empty: none are set.
[[nodiscard]] std::vector<std::string> liesDnsserver(std::string_view text);

/// The servers in `scutil --dns`.
[[nodiscard]] std::vector<std::string> liesGeltendeDnsserver(std::string_view text);

/// Whether all of them are reached through the tunnel, and there is one.
[[nodiscard]] bool fuehrenInsNetz(const std::vector<std::string>& dnsserver);

/// What was done to the system and has to be taken back: written into a file of root's before it is done.
/// Blocks on the tools.
class Rueckbau {
public:
    explicit Rueckbau(std::string pfad);

    /// Notes `zurueck`, then runs `befehl`. False: it failed; `grund` says why. What may have been
    /// done all the same stays noted.
    [[nodiscard]] bool tue(const Befehl& befehl, const Befehl& zurueck, std::string& grund);

    /// Takes one thing back.
    void nimmZurueck(const Befehl& zurueck);

    /// Takes everything back, the last first. False: something could not be, and stays noted.
    bool alles();

    [[nodiscard]] bool leer() const { return offene_.empty(); }

private:
    bool sichere() const;
    /// A route that is gone already is no failure; DNS servers that stay are.
    [[nodiscard]] static bool fuehreZurueck(const Befehl& zurueck);

    std::string pfad_;
    std::vector<Befehl> offene_;
};

} // namespace mobilsteg::volltunnel
