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

constexpr double scutilSekunden = 5;
constexpr double pgrepSekunden = 3;
constexpr double lsofSekunden = 8;
constexpr std::size_t meisteEintraege = 8;
constexpr std::string_view punkt = " · ";

bool enthaelt(const std::vector<std::string>& liste, std::string_view text) {
    return std::find(liste.begin(), liste.end(), text) != liste.end();
}

/// The value as text, `sonst` when it is missing. Absent: it is there and no text.
std::optional<std::string> textOder(const json& objekt, const char* name, const char* sonst) {
    const auto treffer = objekt.find(name);
    if (treffer == objekt.end())
        return sonst;
    return treffer->is_string() ? std::optional(treffer->get<std::string>()) : std::nullopt;
}

bool nurTexte(const json& objekt) {
    return objekt.is_object() &&
           std::all_of(objekt.begin(), objekt.end(), [](const json& wert) { return wert.is_string(); });
}

std::vector<std::string> haeufigste(const std::map<std::string, int>& zaehler) {
    std::vector<std::pair<std::string, int>> paare(zaehler.begin(), zaehler.end());
    std::stable_sort(paare.begin(), paare.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    paare.resize(std::min(paare.size(), meisteEintraege));
    std::vector<std::string> texte;
    for (const auto& [programm, anzahl] : paare)
        texte.push_back(programm + " (" + std::to_string(anzahl) + ")");
    return texte;
}

/// lsof writes a blank in a program's name as "\x20".
std::string mitBlanks(std::string_view name) {
    constexpr std::string_view geschrieben = "\\x20";
    std::string text;
    for (std::size_t i = 0; (i = name.find(geschrieben)) != std::string_view::npos;
         name.remove_prefix(i + geschrieben.size()))
        text += std::string(name.substr(0, i)) + " ";
    return text + std::string(name);
}

} // namespace

Erhebung::Erhebung(Laeufer laeufer, Orte orte, std::string tunnelbericht)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), tunnelbericht_(std::move(tunnelbericht)) {}

Erhebung::Vpns Erhebung::vpns(bool tunnelLaeuft) {
    Tunnelbericht bericht;
    if (tunnelLaeuft)
        bericht = liesTunnelbericht(liesDatei(tunnelbericht_).value_or(""));

    vpnZieleIntern_ = liste_ips(bericht.eintraege);
    std::sort(vpnZieleIntern_.begin(), vpnZieleIntern_.end());
    vpnZieleIntern_.erase(std::unique(vpnZieleIntern_.begin(), vpnZieleIntern_.end()), vpnZieleIntern_.end());

    Vpns vpns{bericht.eintraege, {}};
    const auto liste = laeufer_(orte_.imSystem("/usr/sbin/scutil"), {"--nc", "list"}, scutilSekunden);
    vpns.offen = liesDienste(liste.ausgabe, bericht.namen);
    const auto openvpn = laeufer_(orte_.imSystem("/usr/bin/pgrep"), {"-x", "openvpn"}, pgrepSekunden);
    if (openvpn.status == 0 && !enthaelt(bericht.namen, "OpenVPN"))
        vpns.offen.emplace_back("OpenVPN");
    return vpns;
}

Erhebung::Verbindungen Erhebung::verbindungen() const {
    return liesVerbindungen(laeufer_(orte_.imSystem("/usr/sbin/lsof"), {"-i", "-nP"}, lsofSekunden).ausgabe);
}

Erhebung::Tunnelbericht Erhebung::liesTunnelbericht(std::string_view bytes) {
    const json dokument = json::parse(bytes, nullptr, false);
    if (!dokument.is_object() || !dokument.contains("vpns") || !dokument["vpns"].is_array())
        return {};
    const json& vpns = dokument["vpns"];
    if (!std::all_of(vpns.begin(), vpns.end(), nurTexte))
        return {};
    Tunnelbericht bericht;
    for (const json& vpn : vpns) {
        const auto name = textOder(vpn, "dienst", "VPN").value_or("");
        const auto server = textOder(vpn, "server", "").value_or("");
        bericht.eintraege.push_back(server.empty() ? name : name + std::string(punkt) + server);
        bericht.namen.push_back(name.substr(0, name.find(" (")));
    }
    return bericht;
}

std::vector<std::string> Erhebung::liesDienste(std::string_view ausgabe,
                                               const std::vector<std::string>& bekannte) {
    const std::set<std::string_view> bekannt(bekannte.begin(), bekannte.end());
    std::vector<std::string> namen;
    for (const auto zeile : teile(ausgabe, '\n')) {
        if (zeile.find("(Connected)") == std::string_view::npos ||
            inKleinbuchstaben(zeile).find("tailscale") != std::string::npos)
            continue;
        const auto auf = zeile.find('"');
        const auto zu = auf == std::string_view::npos ? auf : zeile.find('"', auf + 1);
        if (zu == std::string_view::npos)
            continue;
        const auto name = zeile.substr(auf + 1, zu - auf - 1);
        if (!name.empty() && !bekannt.contains(name))
            namen.emplace_back(name);
    }
    return namen;
}

Erhebung::Verbindungen Erhebung::liesVerbindungen(std::string_view lsof) {
    const std::string zumProxy = "->" + amMac(socksPort);
    std::map<std::string, int> durch;
    std::map<std::string, int> vorbei;
    const auto hat = [](std::string_view text, std::string_view stueck) {
        return text.find(stueck) != std::string_view::npos;
    };
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
        const std::string_view ende =
            letzter == std::string::npos ? eintrag : std::string_view(eintrag).substr(letzter + punkt.size());
        if (teile(ende, '.').size() == 4)
            adressen.emplace_back(ohneRandblanks(ende));
    }
    return adressen;
}

} // namespace mobilsteg
