#include "volltunnel/Umschau.hpp"

#include "plattform/Lauf.hpp"
#include "plattform/Text.hpp"

#include <asio/io_context.hpp>

namespace mobilsteg::volltunnel {

namespace {

constexpr double scutilfrist = 5; // in seconds
constexpr double lsoffrist = 2;   // what asks it has to watch over everything
constexpr std::size_t langeZeile = 4096;

/// The address in "10.0.0.1:443" or "[fd00::1]:443".
std::optional<Adresse> ohnePort(std::string_view text) {
    text = text.substr(0, text.rfind(':'));
    if (text.starts_with('['))
        text = text.substr(1, text.size() - 2);
    std::error_code fehler;
    const auto adresse = asio::ip::make_address(std::string(text), fehler);
    return fehler ? std::nullopt : std::optional(adresse);
}

/// The server in `scutil --nc show`, name or address; empty: none.
std::string liesServer(std::string_view text) {
    for (const auto zeile : teile(text, '\n')) {
        const auto trenner = std::min(zeile.find(" : "), zeile.size());
        const auto feld = beschnitten(zeile.substr(0, trenner));
        if (feld.ends_with("RemoteAddress") || feld == "ServerAddress") // "CommRemoteAddress" in older kinds
            return std::string(beschnitten(zeile.substr(std::min(trenner + 3, zeile.size()))));
    }
    return "";
}

} // namespace

std::vector<Openvpn> liesOpenvpn(std::string_view text) {
    std::vector<Openvpn> verbindungen;
    for (const auto wort : teile(text, ' ')) {
        const auto pfeil = wort.find("->");
        if (pfeil == std::string_view::npos)
            continue;
        const auto hier = ohnePort(wort.substr(1, pfeil - 1));
        const auto dort = ohnePort(wort.substr(pfeil + 2));
        if (hier && dort && !dort->is_loopback()) // its own control port
            verbindungen.push_back({*hier, *dort});
    }
    return verbindungen;
}

std::string frageOpenvpn(const std::string& wurzel) {
    std::string zeile;
    if (laufBefristet({wurzel + "/usr/bin/pgrep", "-x", "openvpn"}, lsoffrist).gelungen()) {
        const auto lauf = laufBefristet(
            {wurzel + "/usr/sbin/lsof", "-nP", "-a", "-c", "openvpn", "-iTCP", "-sTCP:ESTABLISHED", "-Fn"},
            lsoffrist);
        for (const auto wort : teile(lauf.ausgabe, '\n'))
            if (zeile.size() < langeZeile)
                zeile.append(" ").append(wort);
    }
    return zeile;
}

Vpnbefund Vpnwege::werte(const std::vector<Vpn>& vpns, const std::vector<Openvpn>& openvpn,
                         const std::function<bool(const Adresse&)>& lebt) {
    Vpnbefund befund;
    const auto weg = [&](const std::string& name, const Adresse& server, bool verbunden, bool daneben) {
        const bool geht = lebt(server);
        if ((geht || (!daneben && durch_)) == nurVPN_)
            befund.wege.insert(server);
        if (geht && verbunden)
            befund.gesichert.emplace(name, server.to_string());
    };
    for (const Vpn& vpn : vpns)
        for (const Adresse& server : vpn.server)
            weg(vpn.name, server, true, vpn.verbunden);
    std::map<Adresse, bool> verbundene; // and whether beside the tunnel
    for (const Openvpn& eine : openvpn) {
        verbundene[eine.server] |= eine.hier != tunnelenden(eine.hier.is_v6()).hier;
        gemerkt_.insert(eine.server);
    }
    for (const Adresse& server : gemerkt_)
        weg("OpenVPN", server, verbundene.contains(server),
            verbundene.contains(server) && verbundene.at(server));
    return befund;
}

std::vector<Vpn> Vpnsuche::sieh() {
    std::vector<Vpn> vpns;
    const auto liste = laufBefristet({scutil_, "--nc", "list"}, scutilfrist);
    if (liste.abgelaufen) // says nothing: no VPN loses its road for it
        return letzte_;
    for (const auto zeile : teile(liste.ausgabe, '\n')) {
        const auto von = zeile.find('"');
        const auto bis = von == std::string_view::npos ? von : zeile.find('"', von + 1);
        if (bis == std::string_view::npos || inKleinbuchstaben(zeile).find("tailscale") != std::string::npos)
            continue;
        const std::string name(zeile.substr(von + 1, bis - von - 1));
        const auto zeige = laufBefristet({scutil_, "--nc", "show", name}, scutilfrist);
        if (zeige.abgelaufen)
            return letzte_;
        vpns.push_back(
            {name, adressen(liesServer(zeige.ausgabe)), zeile.find("(Connected)") != std::string_view::npos});
    }
    return letzte_ = vpns;
}

std::vector<Adresse> Vpnsuche::adressen(const std::string& server) {
    if (server.empty())
        return {};
    asio::io_context kontext;
    std::error_code fehler;
    auto& alle = aufgeloest_[server];
    for (const auto& eine : asio::ip::tcp::resolver(kontext).resolve(server, "", fehler))
        alle.insert(eine.endpoint().address());
    return {alle.begin(), alle.end()};
}

} // namespace mobilsteg::volltunnel
