#include "netz/Erhebung.hpp"

#include "handy/Ports.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>

namespace mobilsteg {

using nlohmann::json;

namespace {

constexpr std::string_view punkt = " · ";

bool hat(std::string_view text, std::string_view stueck) {
    return text.find(stueck) != std::string_view::npos;
}

bool nurTexte(const json& objekt) {
    return objekt.is_object() &&
           std::all_of(objekt.begin(), objekt.end(), [](const json& wert) { return wert.is_string(); });
}

/// The eight most frequent programs, each with its number of connections.
std::vector<std::string> haeufigste(const std::map<std::string, int>& zaehler) {
    std::vector<std::pair<std::string, int>> paare(zaehler.begin(), zaehler.end());
    std::stable_sort(paare.begin(), paare.end(), [](auto& a, auto& b) { return a.second > b.second; });
    paare.resize(std::min<std::size_t>(paare.size(), 8));
    std::vector<std::string> texte;
    for (const auto& [programm, anzahl] : paare)
        texte.push_back(programm + " (" + std::to_string(anzahl) + ")");
    return texte;
}

/// lsof writes a blank in a program's name as "\x20".
std::string mitBlanks(std::string_view name) {
    std::string text(name);
    for (std::size_t i = 0; (i = text.find("\\x20", i)) != std::string::npos;)
        text.replace(i, 4, " ");
    return text;
}

} // namespace

Erhebung::Erhebung(Laeufer laeufer, Orte orte, std::string tunnelbericht)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), tunnelbericht_(std::move(tunnelbericht)) {}

Erhebung::Vpns Erhebung::vpns(bool tunnelLaeuft) {
    const auto bericht =
        liesTunnelbericht(tunnelLaeuft ? liesDatei(tunnelbericht_, megabyte).value_or("") : "");
    vpnZieleIntern_ = liste_ips(bericht.eintraege);
    std::sort(vpnZieleIntern_.begin(), vpnZieleIntern_.end());
    vpnZieleIntern_.erase(std::unique(vpnZieleIntern_.begin(), vpnZieleIntern_.end()), vpnZieleIntern_.end());

    const auto liste = laeufer_(orte_.imSystem("/usr/sbin/scutil"), {"--nc", "list"}, 5);
    Vpns vpns{bericht.eintraege, liesDienste(liste.ausgabe, bericht.namen)};
    const auto openvpn = laeufer_(orte_.imSystem("/usr/bin/pgrep"), {"-x", "openvpn"}, 3);
    if (openvpn.status == 0 && std::count(bericht.namen.begin(), bericht.namen.end(), "OpenVPN") == 0)
        vpns.offen.emplace_back("OpenVPN");
    return vpns;
}

Erhebung::Verbindungen Erhebung::verbindungen() const {
    return liesVerbindungen(laeufer_(orte_.imSystem("/usr/sbin/lsof"), {"-i", "-nP"}, 8).ausgabe);
}

Erhebung::Tunnelbericht Erhebung::liesTunnelbericht(std::string_view bytes) {
    const json dokument = json::parse(bytes, nullptr, false);
    const json vpns = dokument.is_object() ? dokument.value("vpns", json()) : json();
    if (!vpns.is_array() || !std::all_of(vpns.begin(), vpns.end(), nurTexte))
        return {};
    Tunnelbericht bericht;
    for (const json& vpn : vpns) {
        const auto name = vpn.value("dienst", "VPN");
        const auto server = vpn.value("server", "");
        bericht.eintraege.push_back(server.empty() ? name : name + std::string(punkt) + server);
        bericht.namen.push_back(name.substr(0, name.find(" (")));
    }
    return bericht;
}

std::vector<std::string> Erhebung::liesDienste(std::string_view ausgabe,
                                               const std::vector<std::string>& bekannte) {
    std::set<std::string_view> ausgelassene(bekannte.begin(), bekannte.end());
    ausgelassene.insert("");
    std::vector<std::string> namen;
    for (const auto zeile : teile(ausgabe, '\n')) {
        const auto auf = zeile.find('"');
        const auto zu = zeile.find('"', auf + 1);
        if (zu == std::string_view::npos || !hat(zeile, "(Connected)") ||
            hat(inKleinbuchstaben(zeile), "tailscale"))
            continue;
        const auto name = zeile.substr(auf + 1, zu - auf - 1);
        if (!ausgelassene.contains(name))
            namen.emplace_back(name);
    }
    return namen;
}

Erhebung::Verbindungen Erhebung::liesVerbindungen(std::string_view lsof) {
    const std::string zumProxy = "->" + amMac(socksPort);
    std::map<std::string, int> durch;
    std::map<std::string, int> vorbei;
    for (const auto zeile : teile(lsof, '\n')) {
        if (!hat(zeile, "ESTABLISHED"))
            continue;
        const auto felder = teile(zeile, ' ');
        if (felder.size() < 9)
            continue;
        const std::string programm = mitBlanks(felder[0]);
        const auto verbindung = felder[8];
        if (programm.starts_with("Mobilsteg") || programm == "adb")
            continue;
        if (hat(verbindung, zumProxy))
            ++durch[programm];
        else if (!hat(verbindung, "->127.0.0.1") && !hat(verbindung, "->100."))
            ++vorbei[programm];
    }
    return {haeufigste(durch), haeufigste(vorbei)};
}

std::vector<std::string> Erhebung::liste_ips(const std::vector<std::string>& eintraege) {
    std::vector<std::string> adressen;
    for (const auto& eintrag : eintraege) {
        const auto letzter = eintrag.rfind(punkt);
        const auto ende = eintrag.substr(letzter == std::string::npos ? 0 : letzter + punkt.size());
        if (teile(ende, '.').size() == 4)
            adressen.emplace_back(ohneRandblanks(ende));
    }
    return adressen;
}

} // namespace mobilsteg
