#pragma once

#include "plattform/Lauf.hpp"
#include "plattform/Tunnelgeraet.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// The way that the machine's traffic takes beside a tunnel.
struct Ausweg {
    std::string gateway; ///< empty: the device itself leads there
    std::string geraet;
    bool operator==(const Ausweg&) const = default;
};

/// The commands that set addresses and routes, for either kind of tools. A `netz` is an address or a network,
/// like "203.0.113.5" or "0.0.0.0/1". Pure.
class Wege {
public:
    /// `wurzel`: empty, or the folder that stands for "/".
    Wege(Wegewerkzeug art, std::string wurzel) : art_(art), wurzel_(std::move(wurzel)) {}

    /// Gives the device the addresses of its two ends, of one family, and puts it up with the first one; to
    /// be run in this order, IPv4 before IPv6.
    [[nodiscard]] std::vector<Befehl> geraetEin(const std::string& geraet, const std::string& hier,
                                                const std::string& drueben) const;

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

/// Whether the internet leads to that address: a single machine's outside the private ranges, of which each
/// network has its own.
[[nodiscard]] bool istOeffentlich(const std::string& adresse);

} // namespace mobilsteg
