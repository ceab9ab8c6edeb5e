#include "volltunnel/Befehlszeile.hpp"

#include <charconv>
#include <limits>
#include <map>

namespace mobilsteg::volltunnel {

namespace {

int alsZahl(std::string_view text, int hoechstens) {
    int wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return fehler == std::errc() && ende == text.data() + text.size() && wert > 0 && wert <= hoechstens ? wert
                                                                                                        : 0;
}

} // namespace

std::optional<Auftrag> liesBefehlszeile(const std::vector<std::string>& worte, std::string& fehler) {
    Auftrag auftrag;
    std::map<std::string, std::string> werte{
        {"-proxy", ""}, {"-stopp", ""}, {"-dienst", ""}, {"-wache", ""}, {"-wurzel", ""}};
    for (std::size_t i = 0; i < worte.size(); ++i) {
        if (worte[i] == "-vpn-durch")
            auftrag.vpnDurch = true;
        else if (worte[i] == "-nur-vpn")
            auftrag.nurVPN = true;
        else if (!werte.contains(worte[i]))
            fehler = "Unbekannte Option: " + worte[i];
        else if (i + 1 == worte.size())
            fehler = worte[i] + " braucht einen Wert";
        else
            werte[worte[i]] = worte[i + 1], ++i;
        if (!fehler.empty())
            return std::nullopt;
    }
    auftrag.stopp = werte["-stopp"];
    auftrag.dienst = werte["-dienst"];
    auftrag.wurzel = werte["-wurzel"];
    auftrag.wache = alsZahl(werte["-wache"], std::numeric_limits<int>::max());
    const std::string& proxy = werte["-proxy"];
    const auto trenner = std::min(proxy.rfind(':'), proxy.size());
    std::error_code keine;
    auftrag.proxy.address(asio::ip::make_address(proxy.substr(0, trenner), keine));
    auftrag.proxy.port(static_cast<std::uint16_t>(
        alsZahl(std::string_view(proxy).substr(std::min(trenner + 1, proxy.size())), 65'535)));
    // Another machine's proxy would be reached through the tunnel that leads to it.
    if (keine || !auftrag.proxy.address().is_loopback() || auftrag.proxy.port() == 0)
        fehler = "-proxy braucht Adresse und Port auf diesem Rechner, zum Beispiel 127.0.0.1:1080";
    else if (!auftrag.stopp.starts_with('/') || auftrag.stopp.rfind('/') == 0 || auftrag.stopp.ends_with('/'))
        fehler = "-stopp braucht einen vollen Pfad";
    else if (auftrag.dienst.empty())
        fehler = "-dienst braucht den Namen eines Netzwerkdienstes";
    else if (auftrag.wache == 0)
        fehler = "-wache braucht die Nummer eines Prozesses";
    else if (!auftrag.wurzel.empty() && !auftrag.wurzel.starts_with('/'))
        fehler = "-wurzel braucht einen vollen Pfad";
    return fehler.empty() ? std::optional(auftrag) : std::nullopt;
}

} // namespace mobilsteg::volltunnel
