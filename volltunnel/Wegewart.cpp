#include "volltunnel/Wegewart.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace mobilsteg::volltunnel {

namespace {

constexpr double frist = 2; // for each tool, in seconds
constexpr double aenderungsfrist = 5;
const std::vector<std::string> neueDnsserver{"1.1.1.1", "9.9.9.9"};

/// A route that is gone already is no failure; DNS servers that stay are, and a tool that was cut off.
bool fuehreZurueck(const Befehl& zurueck) {
    const auto lauf = laufBefristet(zurueck, aenderungsfrist);
    if (lauf.gelungen() || !(lauf.abgelaufen || zurueck.front().ends_with("/networksetup")))
        return true;
    protokolliere("Nicht zurückgenommen: " + verbunden(zurueck, " ") + " · " + lauf.grund());
    return false;
}

} // namespace

Rueckbau::Rueckbau(std::string pfad) : pfad_(std::move(pfad)) {
    // Its commands are run with all rights: only what root alone could write is believed.
    if (vertrauteDatei(pfad_).empty())
        return;
    try {
        offene_ = nlohmann::json::parse(liesDatei(pfad_).value_or("")).get<std::vector<Befehl>>();
    } catch (const nlohmann::json::exception&) {
        protokolliere("Nicht zu verstehen: " + pfad_);
    }
}

bool Rueckbau::sichere() const {
    if (offene_.empty())
        return ::unlink(pfad_.c_str()) == 0 || errno == ENOENT;
    return schreibeAtomar(pfad_, nlohmann::json(offene_).dump(), Haltbarkeit::dauerhaft);
}

Fehler Rueckbau::tue(const Befehl& befehl, const Befehl& zurueck) {
    offene_.push_back(zurueck);
    if (!sichere()) {
        offene_.pop_back();
        return pfad_ + " lässt sich nicht schreiben";
    }
    const auto lauf = laufBefristet(befehl, aenderungsfrist);
    if (lauf.gelungen())
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

Fehler Wegewart::richteEin(const std::string& geraet) {
    geraet_ = geraet;
    const auto versuche = [&](bool sechs) -> Fehler {
        const Enden enden = tunnelenden(sechs);
        for (const auto& befehl : wege_.geraetEin(geraet, enden.hier.to_string(), enden.drueben.to_string()))
            if (const auto lauf = laufBefristet(befehl, frist); !lauf.gelungen())
                return geraet + " lässt sich nicht einrichten: " + lauf.grund();
        return std::nullopt;
    };
    const auto fehler = versuche(false);
    sechs_ = !fehler && !versuche(true); // not every machine has IPv6
    return fehler;
}

Fehler Wegewart::setze() {
    steht_ = true;
    gleicheAb();
    if (!a_.nurVPN) {
        setzeDns();
        for (const std::string netz :
             {"0.0.0.0/1", "128.0.0.0/1", "::/1", "8000::/1"}) // beats a default route
            if (sechs_ || !istSechs(netz))
                if (const auto lauf = laufBefristet(wege_.fuehre(netz, {"", geraet_}), frist);
                    !lauf.gelungen())
                    return "kein Weg für " + netz + ": " + lauf.grund();
    }
    protokolliere("Wege über " + geraet_ + ": " + (a_.nurVPN ? "die Server der VPNs" : "alles") +
                  (sechs_ ? "" : " (ohne IPv6)"));
    return std::nullopt;
}

void Wegewart::fuehre(std::set<std::string> server) {
    server_ = std::move(server);
    gleicheAb();
}

void Wegewart::gleicheAb() {
    if (!steht_)
        return;
    std::map<std::string, Ausweg> soll;
    for (const bool sechs : {false, true}) {
        const auto frage = a_.nurVPN ? Ergebnis{} : laufBefristet(wege_.frageAusweg(sechs), frist);
        if (frage.abgelaufen) // a busy machine; what is set stays until there is an answer
            return;
        const auto ausweg = a_.nurVPN
                                ? (sechs && !sechs_ ? std::nullopt : std::optional<Ausweg>({"", geraet_}))
                                : wege_.liesAusweg(frage.ausgabe);
        if (!ausweg)
            continue;
        for (const auto& netz : server_)
            if (istSechs(netz) == sechs)
                soll.emplace(netz, *ausweg);
        if (!sechs && !a_.nurVPN && wegewerkzeug() == Wegewerkzeug::ip)
            soll.emplace("224.0.0.0/4", *ausweg); // on a Mac multicast has its own road anyway
    }
    std::erase_if(gesetzte_, [&](const auto& gesetzter) {
        const auto& [netz, ausweg] = gesetzter;
        const bool weg = !soll.contains(netz) || soll.at(netz) != ausweg;
        if (weg)
            rueckbau_.nimmZurueck(wege_.fuehre(netz, ausweg, true));
        return weg;
    });
    for (const auto& [netz, ausweg] : soll) {
        if (gesetzte_.contains(netz))
            continue;
        const auto fehler = rueckbau_.tue(wege_.fuehre(netz, ausweg), wege_.fuehre(netz, ausweg, true));
        if (!fehler)
            gesetzte_.emplace(netz, ausweg);
        if (!fehler ||
            std::exchange(wegfehler_[netz], *fehler) != *fehler) // tried again and again, told once
            protokolliere("Weg für " + netz + (a_.nurVPN ? " durch den Tunnel" : " am Tunnel vorbei") +
                          (fehler ? ": " + *fehler : ""));
    }
}

/// On a Mac the network service has its servers, often the router's own, which the phone cannot reach.
void Wegewart::setzeDns() {
    const std::string werkzeug = a_.wurzel + "/usr/sbin/networksetup";
    if (!istAusfuehrbar(werkzeug))
        return;
    const auto frage = laufBefristet({werkzeug, "-getdnsservers", a_.dienst}, frist);
    auto alte = liesDnsserver(frage.ausgabe);
    const auto geltende =
        !alte.empty()
            ? alte
            : liesDnsserver(laufBefristet({a_.wurzel + "/usr/sbin/scutil", "--dns"}, frist).ausgabe);
    if (frage.gelungen() && !geltende.empty() && std::ranges::all_of(geltende, istOeffentlich))
        return; // they are reached through the tunnel
    if (alte.empty())
        alte = {"Empty"};
    Befehl hin{werkzeug, "-setdnsservers", a_.dienst};
    Befehl zurueck = hin;
    hin.insert(hin.end(), neueDnsserver.begin(), neueDnsserver.end());
    zurueck.insert(zurueck.end(), alte.begin(), alte.end());
    const auto fehler = frage.gelungen() ? rueckbau_.tue(hin, zurueck)
                                         : Fehler(std::string(beschnitten(frage.ausgabe + frage.fehler)));
    protokolliere(fehler ? "DNS bleibt, wie es ist: " + *fehler
                         : "DNS von " + a_.dienst + ": " + verbunden(neueDnsserver, ", ") + " statt " +
                               verbunden(alte, ", "));
}

} // namespace mobilsteg::volltunnel
