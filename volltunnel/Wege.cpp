#include "volltunnel/Wege.hpp"

#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "volltunnel/Werkzeug.hpp"

namespace mobilsteg::volltunnel {

namespace {

constexpr std::chrono::seconds werkzeugfrist{5};

bool istSechs(const std::string& netz) {
    return netz.find(':') != std::string::npos;
}

/// The word behind `name` in a line of words.
std::string hinter(const std::vector<std::string_view>& worte, std::string_view name) {
    const auto stelle = std::ranges::find(worte, name);
    return stelle == worte.end() || stelle + 1 == worte.end() ? "" : std::string(stelle[1]);
}

} // namespace

Enden tunnelenden(bool sechs) {
    if (sechs)
        return {asio::ip::make_address("fd6d:6f62:7374:6567::1"),
                asio::ip::make_address("fd6d:6f62:7374:6567::2")};
    return {asio::ip::make_address("198.19.108.1"), asio::ip::make_address("198.19.108.2")};
}

std::vector<Befehl> Wege::geraetEin(const std::string& geraet, bool sechs) const {
    const auto [hier, drueben] = tunnelenden(sechs);
    const std::string mtu = std::to_string(groesstesPaket());
    if (art_ == Wegewerkzeug::route) {
        const std::string ifconfig = wurzel_ + "/sbin/ifconfig";
        if (sechs)
            return {{ifconfig, geraet, "inet6", hier.to_string(), "prefixlen", "128"},
                    durch(drueben.to_string(), geraet)};
        return {{ifconfig, geraet, "inet", hier.to_string(), drueben.to_string(), "mtu", mtu, "up"}};
    }
    const std::string ip = wurzel_ + "/sbin/ip";
    const Befehl adresse{ip, "addr", "add", hier.to_string(), "peer", drueben.to_string(), "dev", geraet};
    if (!sechs)
        return {{ip, "link", "set", "dev", geraet, "mtu", mtu, "up"}, adresse};
    Befehl ohneSuche = adresse; // there is nobody who could have the address already
    ohneSuche.emplace_back("nodad");
    return {ohneSuche};
}

Befehl Wege::route(const std::string& netz, const std::string& geraet, const std::string& gateway,
                   bool weg) const {
    const bool sechs = istSechs(netz);
    if (art_ == Wegewerkzeug::route) {
        Befehl befehl{wurzel_ + "/sbin/route",
                      "-n",
                      weg ? "delete" : "add",
                      sechs ? "-inet6" : "-inet",
                      netz.find('/') == std::string::npos ? "-host" : "-net",
                      netz};
        if (gateway.empty())
            befehl.insert(befehl.end(), {"-interface", geraet});
        else
            befehl.push_back(gateway);
        return befehl;
    }
    Befehl befehl{wurzel_ + "/sbin/ip", sechs ? "-6" : "-4", "route", weg ? "del" : "add", netz};
    if (!gateway.empty())
        befehl.insert(befehl.end(), {"via", gateway});
    befehl.insert(befehl.end(), {"dev", geraet});
    return befehl;
}

Befehl Wege::durch(const std::string& netz, const std::string& geraet, bool weg) const {
    return route(netz, geraet, "", weg);
}

Befehl Wege::vorbei(const std::string& netz, const Ausweg& ausweg, bool weg) const {
    // Nobody routes multicast: it goes to the device itself.
    return route(netz, ausweg.geraet, netz.starts_with("224.") ? "" : ausweg.gateway, weg);
}

std::vector<std::string> Wege::immerVorbei() const {
    // A Mac has a road of its own for multicast; on Linux it takes the default one.
    return art_ == Wegewerkzeug::ip ? std::vector<std::string>{"224.0.0.0/4"} : std::vector<std::string>{};
}

Befehl Wege::frageAusweg(bool sechs) const {
    if (art_ == Wegewerkzeug::route)
        return {wurzel_ + "/sbin/route", "-n", "get", sechs ? "-inet6" : "-inet", "default"};
    return {wurzel_ + "/sbin/ip", sechs ? "-6" : "-4", "route", "show", "default"};
}

std::optional<Ausweg> Wege::liesAusweg(std::string_view text) const {
    Ausweg ausweg;
    for (const auto zeile : teile(text, '\n')) {
        const auto worte = teile(zeile, ' ');
        if (art_ == Wegewerkzeug::ip) {
            ausweg = {hinter(worte, "via"), hinter(worte, "dev")};
            break; // the first one has the lowest metric
        }
        if (worte.size() == 2 && worte[0] == "gateway:")
            ausweg.gateway = worte[1];
        if (worte.size() == 2 && worte[0] == "interface:")
            ausweg.geraet = worte[1];
    }
    std::error_code keine;
    (void)asio::ip::make_address(ausweg.gateway, keine); // "link#14": the device itself
    if (keine)
        ausweg.gateway.clear();
    return ausweg.geraet.empty() ? std::nullopt : std::optional(ausweg);
}

std::vector<std::string> liesDnsserver(std::string_view text) {
    std::vector<std::string> server;
    for (const auto zeile : teile(text, '\n')) {
        std::error_code keine;
        const std::string eine(beschnitten(zeile));
        (void)asio::ip::make_address(eine, keine); // else it is a sentence that says there are none
        if (!keine)
            server.push_back(eine);
    }
    return server;
}

std::vector<std::string> liesGeltendeDnsserver(std::string_view text) {
    std::string alle;
    for (const auto zeile : teile(text, '\n'))
        if (const auto trenner = zeile.find(" : ");
            zeile.find("nameserver[") < trenner && trenner < zeile.size())
            alle.append(zeile.substr(trenner + 3)).append("\n");
    return liesDnsserver(alle);
}

bool fuehrenInsNetz(const std::vector<std::string>& dnsserver) {
    const auto oeffentlich = [](const std::string& a) { return istOeffentlich(asio::ip::make_address(a)); };
    return !dnsserver.empty() && std::ranges::all_of(dnsserver, oeffentlich);
}

Rueckbau::Rueckbau(std::string pfad) : pfad_(std::move(pfad)) {
    // Its lines are run with all rights: only what root alone could write is believed.
    const Deskriptor datei(::open(pfad_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat lage {};
    if (!datei || ::fstat(datei.nummer(), &lage) != 0 || lage.st_uid != ::geteuid() ||
        (lage.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return;
    const auto alte = nlohmann::json::parse(liesDatei(pfad_).value_or(""), nullptr, false);
    try {
        if (alte.is_array())
            offene_ = alte.get<std::vector<Befehl>>();
    } catch (const nlohmann::json::exception&) {
        protokolliere("Rückbau: " + pfad_ + " ist nicht zu verstehen");
    }
    std::erase_if(offene_, [](const Befehl& b) { return b.empty(); });
}

bool Rueckbau::sichere() const {
    if (offene_.empty())
        return ::unlink(pfad_.c_str()) == 0 || errno == ENOENT;
    return schreibeAtomar(pfad_, nlohmann::json(offene_).dump(), Haltbarkeit::dauerhaft);
}

bool Rueckbau::tue(const Befehl& befehl, const Befehl& zurueck, std::string& grund) {
    offene_.push_back(zurueck);
    if (!sichere()) {
        offene_.pop_back();
        grund = pfad_ + " lässt sich nicht schreiben";
        return false;
    }
    const auto lauf = fuehreAus(befehl, werkzeugfrist);
    if (lauf.gelungen)
        return true;
    if (!lauf.abgelaufen) {
        offene_.pop_back();
        sichere();
    }
    grund = std::string(beschnitten(lauf.fehler.empty() ? lauf.ausgabe : lauf.fehler));
    return false;
}

bool Rueckbau::fuehreZurueck(const Befehl& zurueck) {
    const auto lauf = fuehreAus(zurueck, werkzeugfrist);
    if (lauf.gelungen || !zurueck.front().ends_with("/networksetup"))
        return true;
    protokolliere("Nicht zurückgenommen: " + verbunden(zurueck, " ") + " · " +
                  std::string(beschnitten(lauf.fehler.empty() ? lauf.ausgabe : lauf.fehler)));
    return false;
}

void Rueckbau::nimmZurueck(const Befehl& zurueck) {
    if (fuehreZurueck(zurueck)) {
        std::erase(offene_, zurueck);
        sichere();
    }
}

bool Rueckbau::alles() {
    std::vector<Befehl> gebliebene;
    for (; !offene_.empty(); offene_.pop_back())
        if (!fuehreZurueck(offene_.back()))
            gebliebene.insert(gebliebene.begin(), offene_.back());
    offene_ = std::move(gebliebene);
    return sichere() && offene_.empty();
}

} // namespace mobilsteg::volltunnel
