#include "volltunnel/Befehlszeile.hpp"

#include <charconv>
#include <map>

namespace mobilsteg::volltunnel {

namespace {

/// 0: no number from 1 on.
template <typename Zahl>
Zahl alsZahl(std::string_view text) {
    Zahl wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return fehler == std::errc() && ende == text.data() + text.size() && wert > 0 ? wert : Zahl{0};
}

} // namespace

std::optional<Auftrag> liesBefehlszeile(const std::vector<std::string>& worte, std::string& fehler) {
    Auftrag a;
    std::string proxy, wache;
    const std::map<std::string, std::string*> werte{{"-proxy", &proxy},
                                                    {"-stopp", &a.stopp},
                                                    {"-dienst", &a.dienst},
                                                    {"-wache", &wache},
                                                    {"-wurzel", &a.wurzel}};
    const std::map<std::string, bool*> flaggen{{"-vpn-durch", &a.vpnDurch}, {"-nur-vpn", &a.nurVPN}};
    for (std::size_t i = 0; i < worte.size() && fehler.empty(); ++i) {
        if (flaggen.contains(worte[i]))
            *flaggen.at(worte[i]) = true;
        else if (!werte.contains(worte[i]))
            fehler = "Unbekannte Option: " + worte[i];
        else if (i + 1 == worte.size())
            fehler = worte[i] + " braucht einen Wert";
        else {
            *werte.at(worte[i]) = worte[i + 1];
            ++i;
        }
    }
    const auto trenner = std::min(proxy.rfind(':'), proxy.size());
    std::error_code keine;
    a.proxy.address(asio::ip::make_address(proxy.substr(0, trenner), keine));
    a.proxy.port(alsZahl<std::uint16_t>(std::string_view(proxy).substr(std::min(trenner + 1, proxy.size()))));
    a.wache = alsZahl<int>(wache);
    if (!fehler.empty())
        return std::nullopt;
    // Another machine's proxy would be reached through the tunnel that leads to it.
    if (keine || !a.proxy.address().is_loopback() || a.proxy.port() == 0)
        fehler = "-proxy braucht Adresse und Port auf diesem Rechner, zum Beispiel 127.0.0.1:1080";
    else if (!a.stopp.starts_with('/') || a.stopp.rfind('/') == 0 || a.stopp.ends_with('/'))
        fehler = "-stopp braucht einen vollen Pfad";
    else if (a.dienst.empty() || a.wache == 0)
        fehler = a.wache == 0 ? "-wache braucht die Nummer eines Prozesses" : "-dienst braucht einen Namen";
    else if (!a.wurzel.empty() && !a.wurzel.starts_with('/'))
        fehler = "-wurzel braucht einen vollen Pfad";
    return fehler.empty() ? std::optional(a) : std::nullopt;
}

} // namespace mobilsteg::volltunnel
