#include "volltunnel/Befehlszeile.hpp"

#include "plattform/Uhr.hpp"

#include <unistd.h>

#include <charconv>
#include <map>

namespace mobilsteg::volltunnel {

namespace {

/// 0: no number from 1 to `hoechstens`.
int alsZahl(std::string_view text, int hoechstens) {
    int wert = 0; // and stays so when it is too long for an int
    const char* const ende = text.data() + text.size();
    return std::from_chars(text.data(), ende, wert).ptr == ende && wert > 0 && wert <= hoechstens ? wert : 0;
}

} // namespace

std::optional<Auftrag> liesBefehlszeile(const std::vector<std::string>& worte, std::string& fehler) {
    Auftrag a;
    std::map<std::string, std::string> werte{
        {"-proxy", ""}, {"-stopp", ""}, {"-dienst", ""}, {"-wache", ""}, {"-wurzel", ""}};
    for (std::size_t i = 0; i < worte.size() && fehler.empty(); ++i) {
        if (worte[i] == "-vpn-durch")
            a.vpnDurch = true;
        else if (worte[i] == "-nur-vpn")
            a.nurVPN = true;
        else if (!werte.contains(worte[i]))
            fehler = "Unbekannte Option: " + worte[i];
        else if (++i == worte.size())
            fehler = worte[i - 1] + " braucht einen Wert";
        else
            werte[worte[i - 1]] = worte[i];
    }
    const std::string& proxy = werte["-proxy"];
    const auto trenner = std::min(proxy.rfind(':'), proxy.size());
    std::error_code keine;
    a.proxy.address(asio::ip::make_address(proxy.substr(0, trenner), keine));
    a.proxy.port(static_cast<std::uint16_t>(
        alsZahl(std::string_view(proxy).substr(std::min(trenner + 1, proxy.size())), 65'535)));
    a.stopp = werte["-stopp"];
    a.dienst = werte["-dienst"];
    a.wurzel = werte["-wurzel"];
    a.wache = alsZahl(werte["-wache"], std::numeric_limits<int>::max());
    for (const auto& [mangel, text] :
         // Another machine's proxy would be reached through the tunnel that leads to it.
         {std::pair{keine || !a.proxy.address().is_loopback() || a.proxy.port() == 0,
                    "-proxy braucht Adresse und Port auf diesem Rechner, zum Beispiel 127.0.0.1:1080"},
          {!a.stopp.starts_with('/') || a.stopp.rfind('/') == 0 || a.stopp.ends_with('/'),
           "-stopp braucht einen vollen Pfad"},
          {a.wache == 0, "-wache braucht die Nummer eines Prozesses"},
          {a.dienst.empty(), "-dienst braucht einen Namen"},
          {!a.wurzel.empty() && !a.wurzel.starts_with('/'), "-wurzel braucht einen vollen Pfad"}})
        if (mangel && fehler.empty())
            fehler = text;
    return fehler.empty() ? std::optional(a) : std::nullopt;
}

void protokolliere(const std::string& text) {
    const std::string zeile = ortszeit(std::chrono::system_clock::now()) + "  " + text + "\n";
    (void)!::write(STDOUT_FILENO, zeile.data(), zeile.size());
}

} // namespace mobilsteg::volltunnel
