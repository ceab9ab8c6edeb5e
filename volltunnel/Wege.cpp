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

bool istAdresse(const std::string& text) {
    std::error_code keine;
    (void)asio::ip::make_address(text, keine);
    return !keine;
}

/// A route that is gone already is no failure; DNS servers that stay are.
bool fuehreZurueck(const Befehl& zurueck) {
    const auto lauf = fuehreAus(zurueck, werkzeugfrist);
    if (lauf.gelungen || !zurueck.front().ends_with("/networksetup"))
        return true;
    protokolliere("Nicht zurückgenommen: " + verbunden(zurueck, " ") + " · " + lauf.grund());
    return false;
}

} // namespace

Enden tunnelenden(bool sechs) {
    const auto ende = [](const char* text) { return asio::ip::make_address(text); };
    // A range for measurements, which no network uses; and a private one.
    return sechs ? Enden{ende("fd6d:6f62:7374:6567::1"), ende("fd6d:6f62:7374:6567::2")}
                 : Enden{ende("198.19.108.1"), ende("198.19.108.2")};
}

bool istSechs(const std::string& netz) {
    return netz.find(':') != std::string::npos;
}

std::vector<Befehl> Wege::geraetEin(const std::string& geraet, bool sechs) const {
    const std::string hier = tunnelenden(sechs).hier.to_string();
    const std::string drueben = tunnelenden(sechs).drueben.to_string();
    const std::string mtu = std::to_string(groesstesPaket());
    const std::string ifconfig = wurzel_ + "/sbin/ifconfig";
    const std::string ip = wurzel_ + "/sbin/ip";
    if (art_ == Wegewerkzeug::route && sechs)
        return {{ifconfig, geraet, "inet6", hier, "prefixlen", "128"}, fuehre(drueben, {"", geraet})};
    if (art_ == Wegewerkzeug::route)
        return {{ifconfig, geraet, "inet", hier, drueben, "mtu", mtu, "up"}};
    if (sechs) // nobody there could have the address already
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
        if ((vorher == "via" || vorher == "gateway:") && istAdresse(std::string(wort))) // not "link#14"
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
            zeile = zeile.substr(std::min(zeile.find(" : "), zeile.size() - 3) + 3);
        if (istAdresse(std::string(zeile))) // else it is a sentence that says there are none
            server.emplace_back(zeile);
    }
    return server;
}

Rueckbau::Rueckbau(std::string pfad) : pfad_(std::move(pfad)) {
    // Its commands are run with all rights: only what root alone could write is believed.
    const Deskriptor datei(::open(pfad_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat lage {};
    if (!datei || ::fstat(datei.nummer(), &lage) != 0 || lage.st_uid != ::geteuid() ||
        (lage.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return;
    try {
        offene_ = nlohmann::json::parse(liesDatei(pfad_).value_or("")).get<std::vector<Befehl>>();
    } catch (const nlohmann::json::exception&) {
        protokolliere("Nicht zu verstehen: " + pfad_);
    }
    std::erase_if(offene_, [](const Befehl& b) { return b.empty(); });
}

bool Rueckbau::sichere() const {
    if (offene_.empty())
        return ::unlink(pfad_.c_str()) == 0 || errno == ENOENT;
    return schreibeAtomar(pfad_, nlohmann::json(offene_).dump(), Haltbarkeit::dauerhaft);
}

std::optional<std::string> Rueckbau::tue(const Befehl& befehl, const Befehl& zurueck) {
    offene_.push_back(zurueck);
    if (!sichere()) {
        offene_.pop_back();
        return pfad_ + " lässt sich nicht schreiben";
    }
    const auto lauf = fuehreAus(befehl, werkzeugfrist);
    if (lauf.gelungen)
        return std::nullopt;
    if (!lauf.abgelaufen) {
        offene_.pop_back();
        sichere();
    }
    return lauf.grund();
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
