#include "plattform/Wege.hpp"

#include "plattform/Text.hpp"

#include <asio/ip/address.hpp>

#include <algorithm>

namespace mobilsteg {

namespace {

bool istAdresse(std::string_view text) {
    std::error_code keine;
    (void)asio::ip::make_address(std::string(text), keine);
    return !keine;
}

} // namespace

bool istSechs(const std::string& netz) {
    return netz.find(':') != std::string::npos;
}

std::vector<Befehl> Wege::geraetEin(const std::string& geraet, const std::string& hier,
                                    const std::string& drueben) const {
    const std::string mtu = std::to_string(groesstesPaket());
    const std::string ifconfig = wurzel_ + "/sbin/ifconfig";
    const std::string ip = wurzel_ + "/sbin/ip";
    if (art_ == Wegewerkzeug::route && istSechs(hier))
        return {{ifconfig, geraet, "inet6", hier, "prefixlen", "128"}, fuehre(drueben, {"", geraet})};
    if (art_ == Wegewerkzeug::route)
        return {{ifconfig, geraet, "inet", hier, drueben, "mtu", mtu, "up"}};
    if (istSechs(hier)) // nobody there could have the address already
        return {{ip, "addr", "add", hier, "peer", drueben, "dev", geraet, "nodad"}};
    return {{ip, "link", "set", "dev", geraet, "mtu", mtu, "up"},
            {ip, "addr", "add", hier, "peer", drueben, "dev", geraet}};
}

Befehl Wege::fuehre(const std::string& netz, const Ausweg& ausweg, bool weg) const {
    const bool sechs = istSechs(netz);
    const bool direkt = ausweg.gateway.empty() || netz.starts_with("224."); // nobody forwards multicast
    Befehl befehl;
    if (art_ == Wegewerkzeug::route) {
        befehl = {wurzel_ + "/sbin/route",
                  "-n",
                  weg ? "delete" : "add",
                  sechs ? "-inet6" : "-inet",
                  netz.find('/') == std::string::npos ? "-host" : "-net",
                  netz};
        direkt ? befehl.insert(befehl.end(), {"-interface", ausweg.geraet})
               : befehl.insert(befehl.end(), ausweg.gateway);
    } else {
        befehl = {wurzel_ + "/sbin/ip", sechs ? "-6" : "-4", "route", weg ? "del" : "add", netz};
        if (!direkt)
            befehl.insert(befehl.end(), {"via", ausweg.gateway});
        befehl.insert(befehl.end(), {"dev", ausweg.geraet});
    }
    return befehl;
}

Befehl Wege::frageAusweg(bool sechs) const {
    if (art_ == Wegewerkzeug::route)
        return {wurzel_ + "/sbin/route", "-n", "get", sechs ? "-inet6" : "-inet", "default"};
    return {wurzel_ + "/sbin/ip", sechs ? "-6" : "-4", "route", "show", "default"};
}

std::optional<Ausweg> Wege::liesAusweg(std::string_view text) const {
    Ausweg ausweg;
    if (art_ == Wegewerkzeug::ip) // the first line has the lowest metric
        text = text.substr(0, text.find('\n'));
    std::string worte(text);
    std::ranges::replace(worte, '\n', ' ');
    std::string_view vorher;
    for (const auto wort : teile(worte, ' ')) {
        if ((vorher == "via" || vorher == "gateway:") && istAdresse(wort)) // not "link#14"
            ausweg.gateway = wort;
        if (vorher == "dev" || vorher == "interface:")
            ausweg.geraet = wort;
        vorher = wort;
    }
    return ausweg.geraet.empty() ? std::nullopt : std::optional(ausweg);
}

std::vector<std::string> liesDnsserver(std::string_view text) {
    std::vector<std::string> server;
    for (auto zeile : teile(text, '\n')) {
        zeile = beschnitten(zeile);
        if (zeile.starts_with("nameserver[")) // "nameserver[0] : 10.0.0.1"
            zeile = zeile.substr(zeile.rfind(' ') + 1);
        if (istAdresse(zeile)) // else it is a sentence that says there are none
            server.emplace_back(zeile);
    }
    return server;
}

bool istOeffentlich(const std::string& adresse) {
    std::error_code keine;
    const auto a = asio::ip::make_address(adresse, keine);
    if (keine || a.is_v6())
        return !keine && a.to_v6().to_bytes()[0] >> 5 == 1; // 2000::/3
    for (const auto& [netz, laenge] : {std::pair{0U, 8},    // 0.0.0.0
                                       {0x0A00'0000U, 8},
                                       {0x6440'0000U, 10}, // carriers', Tailscale's
                                       {0x7F00'0000U, 8},
                                       {0xA9FE'0000U, 16},
                                       {0xAC10'0000U, 12},
                                       {0xC0A8'0000U, 16},
                                       {0xE000'0000U, 3}}) // multicast and what is reserved
        if ((a.to_v4().to_uint() ^ netz) >> (32 - laenge) == 0)
            return false;
    return true;
}

} // namespace mobilsteg
