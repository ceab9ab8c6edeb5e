// The system proxy: the tools' texts, their calls, and what is remembered about them.

#include "netz/SystemProxy.hpp"

#include "netz/Variante.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using Vielleicht = std::optional<std::string>;

namespace {

/// Plays the outside tools: every run must be the next one of the script, and none may be left over. A run is
/// written as program, arguments and limit with bars between them.
class Drehbuch {
public:
    using Auftritt = std::pair<std::string, Ergebnis>;

    explicit Drehbuch(std::vector<Auftritt> auftritte) : auftritte_(std::move(auftritte)) {}
    ~Drehbuch() { EXPECT_EQ(naechster_, auftritte_.size()) << "the script was not played to its end"; }
    Drehbuch(const Drehbuch&) = delete;
    Drehbuch& operator=(const Drehbuch&) = delete;

    [[nodiscard]] Laeufer laeufer() {
        return [this](const std::string& programm, const std::vector<std::string>& worte, double sekunden) {
            const std::string lauf =
                programm + "|" + verbunden(worte, "|") + "|" + std::to_string(static_cast<int>(sekunden));
            const bool vorgesehen = naechster_ < auftritte_.size();
            EXPECT_EQ(lauf, vorgesehen ? auftritte_[naechster_].first : "nothing more");
            return vorgesehen ? auftritte_[naechster_++].second : Ergebnis{};
        };
    }

private:
    std::vector<Auftritt> auftritte_;
    std::size_t naechster_ = 0;
};

const std::string reihenfolge = R"(An asterisk (*) denotes that a network service is disabled.
(*) Bluetooth PAN
(Hardware Port: Bluetooth PAN, Device: en9)

(1) USB 10/100 LAN
(Hardware Port: USB 10/100 LAN, Device: en10)

(2) Firmen-VPN
(Hardware Port: L2TP, Device: )

	(3)  Wi-Fi (zu Hause) )x 
	(Hardware Port: Wi-Fi, Device: en1)
)";

TEST(SystemProxy, findetDieSchnittstelleDerStandardroute) {
    for (const auto& [ausgabe, soll] : std::vector<std::pair<std::string, Vielleicht>>{
             {"   route to: default\n    gateway: fe80::1%en7\n  interface: en0\n      flags: <UP>\n", "en0"},
             {"interface:\ten0 \t\n  interface: en1\n", "en0"},
             {"if: x interface: utun4", "utun4"},
             {"interface: a:b::", "b"},
             {"route: writing to routing socket: not in table\n", std::nullopt},
             {"", std::nullopt}})
        EXPECT_EQ(SystemProxy::schnittstelle(ausgabe), soll) << ausgabe;
}

TEST(SystemProxy, waehltDenDienstDerSchnittstelleOderDenErstenEingeschalteten) {
    for (const auto& [schnittstelle, text, soll] :
         std::vector<std::tuple<Vielleicht, std::string, Vielleicht>>{
             {"en1", reihenfolge, "Wi-Fi (zu Hause) )x"}, // not en10, which comes first
             {"en10", reihenfolge, "USB 10/100 LAN"},
             {"en9", reihenfolge, "Bluetooth PAN"}, // disabled, but it carries the route
             {"en", reihenfolge, "USB 10/100 LAN"},
             {std::nullopt, reihenfolge, "USB 10/100 LAN"},
             {"en0", "(Hardware Port: Wi-Fi, Device: en0)\n(1) LAN\n", "LAN"}, // a port without its service
             {"en0", "(1) LAN\n(2 Wi-Fi\n(Hardware Port: Wi-Fi, Device: en0)", "LAN"},
             {"en7", "(*) Wi-Fi\n(Hardware Port: Wi-Fi, Device: en0)\n", std::nullopt},
             {"en0", "", std::nullopt}})
        EXPECT_EQ(SystemProxy::dienstFuer(schnittstelle, SystemProxy::liesDienste(text)), soll)
            << schnittstelle.value_or("-") << text;
}

TEST(SystemProxy, erkenntDenEigenenProxyInDerAntwortDesWerkzeugs) {
    const std::string rest = "Authenticated Proxy Enabled: 0\n";
    for (const auto& [antwort, soll] : std::vector<std::pair<std::string, bool>>{
             {"Enabled: Yes\nServer: 127.0.0.1\nPort: 1080\n" + rest, true},
             {" Enabled: Yes \r\n\tServer: 127.0.0.1\r\nPort: 1080\r\n", true},
             {"Enabled: No\nServer: 127.0.0.1\nPort: 1080\n" + rest, false},
             {"Enabled: Yes\nServer: 127.0.0.1\nPort: 10801\n" + rest, false},
             {"Enabled: Yes\nServer: 10.0.0.1\nPort: 1080\n" + rest, false},
             {"", false}})
        EXPECT_EQ(SystemProxy::zeigtAufUns(antwort), soll) << antwort;
}

TEST(SystemProxy, gibtDieMeldungDesWerkzeugsWeiter) {
    for (const auto& [ergebnis, soll] : std::vector<std::pair<Ergebnis, std::string>>{
             {{4, "X is not a recognized network service.\n", ""}, "X is not a recognized network service."},
             {{14, "", "** Error: Command requires admin privileges.\n"},
              "** Error: Command requires admin privileges."},
             {{1, "aus\n", "feh"}, "feh aus"},
             {{15, " \n", "\n"}, "networksetup: Rückgabe 15"},
             {{-9, "", ""}, "networksetup: Rückgabe -9"}})
        EXPECT_EQ(SystemProxy::fehlertext(ergebnis), soll);
}

const std::string netzwerk = "/w/usr/sbin/networksetup|";
const std::string route = "/w/sbin/route|-n|get|default|5";
const std::string liste = netzwerk + "-listnetworkserviceorder|5";

std::string adresse(const std::string& dienst) {
    return netzwerk + "-setsocksfirewallproxy|" + dienst + "|127.0.0.1|1080|10";
}

std::string schalter(const std::string& dienst, const std::string& stellung) {
    return netzwerk + "-setsocksfirewallproxystate|" + dienst + "|" + stellung + "|10";
}

const std::string wlan = "Wi-Fi (zu Hause) )x";
const Ergebnis gut{0, "", ""};

/// What comes first on a Mac whose one service is „LAN“.
std::vector<Drehbuch::Auftritt> aufLAN(std::initializer_list<Drehbuch::Auftritt> weitere) {
    std::vector<Drehbuch::Auftritt> alle = {{route, gut}, {liste, {0, "(1) LAN", ""}}};
    alle.insert(alle.end(), weitere);
    return alle;
}

std::string frage(const std::string& dienst) {
    return netzwerk + "-getsocksfirewallproxy|" + dienst + "|5";
}

const Ergebnis nein{14, "", "verboten"};
const Ergebnis zeigtAufUns{0, "Enabled: Yes\nServer: 127.0.0.1\nPort: 1080\n", ""};
const Ergebnis zeigtWoandershin{0, "Enabled: Yes\nServer: 10.0.0.1\nPort: 1080\n", ""};
const Ergebnis unbekannterDienst{4, "X is not a recognized network service.\n", ""};

/// A run of the program on a script of its own; the settings outlive it as those of the user do.
struct Lauf {
    Lauf(Einstellungen& einstellungen, std::vector<Drehbuch::Auftritt> auftritte)
        : drehbuch(std::move(auftritte)), proxy(drehbuch.laeufer(), {"/heim", "/w"}, einstellungen) {}
    Drehbuch drehbuch;
    SystemProxy proxy;
};

TEST(SystemProxy, setztUndNimmtWegAufDemGefundenenDienst) {
    SpeicherEinstellungen e;
    Lauf lauf(e, {{route, {1, "interface: en1", "its status does not count"}},
                  {liste, {1, reihenfolge, ""}},
                  {adresse(wlan), {0, "", "nor what a success says"}},
                  {schalter(wlan, "on"), gut},
                  {schalter(wlan, "off"), gut}});
    const auto [ausgang, text] = lauf.proxy.setze();
    EXPECT_EQ(ausgang, SystemProxy::Ausgang::gesetzt);
    EXPECT_EQ(text, wlan);
    EXPECT_TRUE(lauf.proxy.gesetzt());
    EXPECT_EQ(e.text("proxy.dienst"), wlan);
    EXPECT_FALSE(e.text("proxy.ungewiss"));
    const auto wegnahme = lauf.proxy.nimmWeg();
    EXPECT_TRUE(wegnahme && wegnahme->dienst == wlan && !wegnahme->grund);
    EXPECT_TRUE(e.werte.empty() && !lauf.proxy.gesetzt());
    EXPECT_EQ(lauf.proxy.gesetzterDienst(), wlan);
    EXPECT_FALSE(lauf.proxy.nimmWeg()) << "nothing to take away: no tool runs";
}

TEST(SystemProxy, nachEinemMisslungenenSetzenWirdNachgesehen) {
    using enum SystemProxy::Ausgang;
    const std::string setze = adresse("LAN");
    const std::string an = schalter("LAN", "on");
    const std::string aus = schalter("LAN", "off");
    const Ergebnis getoetet{9, "", ""}; // behind its work or before it
    for (const auto& [auftritte, ausgang, text, bleibt] :
         std::vector<std::tuple<std::vector<Drehbuch::Auftritt>, SystemProxy::Ausgang, std::string, bool>>{
             {{{route, {-1, "", "x"}}, {liste, gut}}, keinDienst, "", false},
             {aufLAN({{setze, nein}, {frage("LAN"), zeigtWoandershin}}), misslungen, "verboten", false},
             {aufLAN({{setze, getoetet}, {frage("LAN"), zeigtAufUns}, {aus, gut}}), misslungen,
              "networksetup: Rückgabe 9", false},
             {aufLAN({{setze, gut}, {an, getoetet}, {frage("LAN"), zeigtAufUns}, {aus, nein}}), misslungen,
              "networksetup: Rückgabe 9", true},
             {aufLAN({{setze, gut}, {an, nein}, {frage("LAN"), nein}}), misslungen, "verboten", true}}) {
        SpeicherEinstellungen e;
        Lauf lauf(e, auftritte);
        const auto setzung = lauf.proxy.setze();
        EXPECT_EQ(setzung.ausgang, ausgang);
        EXPECT_EQ(setzung.text, text);
        EXPECT_EQ(e.text("proxy.ungewiss"), bleibt ? Vielleicht("LAN\n") : std::nullopt);
        EXPECT_FALSE(e.text("proxy.dienst") || lauf.proxy.gesetzt() || lauf.proxy.gesetzterDienst());
    }
}

TEST(SystemProxy, ungewissesWirdGefragtUndDerEigeneProxyDesBenutzersBleibt) {
    const std::string aus = schalter("LAN", "off");
    for (const auto& [auftritte, bleibt, fehler] :
         std::vector<std::tuple<std::vector<Drehbuch::Auftritt>, bool, std::string>>{
             {{{frage("LAN"), zeigtAufUns}, {aus, gut}}, false, ""},
             {{{frage("LAN"), zeigtAufUns}, {aus, nein}}, true, "verboten"},
             {{{frage("LAN"), zeigtWoandershin}}, false, ""},
             {{{frage("LAN"), nein}}, true, "sein Proxy lässt sich nicht befragen"},
             {{{frage("LAN"), unbekannterDienst},
               {liste, {0, "(1) Neu\n(2) Fremd", ""}}, // renamed, its proxy still on
               {frage("Neu"), zeigtAufUns},
               {schalter("Neu", "off"), gut},
               {frage("Fremd"), zeigtWoandershin}},
              false,
              "den Netzwerkdienst gibt es nicht mehr"}}) {
        SpeicherEinstellungen e;
        e.setzeText("proxy.ungewiss", "LAN\n"); // by a run that died
        Lauf lauf(e, auftritte);
        const auto misslungene = lauf.proxy.klaereUngewisse();
        EXPECT_EQ(misslungene.empty() ? "" : *misslungene[0].grund, fehler);
        EXPECT_EQ(!e.werte.empty(), bleibt);
    }
}

TEST(SystemProxy, vergisstKeinenDienstDessenProxyNochAnSeinKann) {
    SpeicherEinstellungen e;
    e.setzeText("proxy.dienst", "WLAN"); // switching it off failed before
    Lauf lauf(e, aufLAN({{adresse("LAN"), gut},
                         {schalter("LAN", "on"), gut},
                         {schalter("LAN", "off"), gut},
                         {frage("WLAN"), zeigtAufUns},
                         {schalter("WLAN", "off"), gut}}));
    EXPECT_EQ(lauf.proxy.setze().ausgang, SystemProxy::Ausgang::gesetzt);
    EXPECT_EQ(e.text("proxy.ungewiss"), "WLAN\n");
    (void)lauf.proxy.nimmWeg();
    (void)lauf.proxy.klaereUngewisse();
    EXPECT_TRUE(e.werte.empty());
}

TEST(SystemProxy, einMisslungenesWegnehmenWirdWiederholtBisEsDenDienstNichtMehrGibt) {
    SpeicherEinstellungen e;
    e.setzeText("proxy.dienst", "Altes WLAN");
    const std::string aus = schalter("Altes WLAN", "off");
    Lauf lauf(e, {{aus, nein}, {aus, unbekannterDienst}, {liste, gut}});
    EXPECT_EQ(lauf.proxy.nimmWeg().value().grund, "verboten");
    EXPECT_EQ(e.text("proxy.dienst"), "Altes WLAN") << "it may still be on";
    EXPECT_EQ(lauf.proxy.nimmWeg().value().grund, "X is not a recognized network service.");
    EXPECT_TRUE(e.werte.empty());
    EXPECT_FALSE(lauf.proxy.nimmWeg());
}

TEST(Variante, ausgabeUndProfilEntscheiden) {
    const std::string vpn =
        " braucht einmal Administratorrechte: Er legt eine Netzwerkschnittstelle an und leitet "
        "den Verkehr des Mac — auch Ihren VPN — über das Handy, das WLAN und Mobilfunk bündelt. "
        "Beim Abstecken wird alles zurückgebaut.";
    const std::string reise =
        "Mobilsteg Bordlotse braucht einmal Administratorrechte für den Volltunnel: "
        "Netzwerkschnittstelle anlegen, Routen und DNS setzen. Beim Abstecken wird alles "
        "zurückgebaut.";
    for (const auto& [kennung, profil, soll, grund] :
         std::vector<std::tuple<std::string, Vielleicht, std::string, std::string>>{
             {"de.mobilsteg.vpnlotse", std::nullopt, "vpn", "Mobilsteg VPN-Lotse" + vpn},
             {"de.mobilsteg.vpnlotse", "reise", "reise", reise},
             {"de.mobilsteg.vpnlotse", "VPN", "VPN", reise},
             {"de.mobilsteg.bordlotse", std::nullopt, "reise", reise},
             {"de.mobilsteg.bordlotse", "vpn", "vpn", "Mobilsteg Bordlotse · VPN" + vpn},
             {"vpnlotse.mobilsteg", "", "", reise},
             {"", std::nullopt, "reise", reise}}) {
        SpeicherEinstellungen e;
        const Variante v(Buendel{kennung, {}, {}, {}}, e);
        if (profil)
            e.setzeText("profil", *profil); // asked for anew each time
        EXPECT_EQ(v.profil(), soll);
        EXPECT_EQ(v.aktuell() == Variante::Art::vpn, soll == "vpn");
        EXPECT_EQ(v.adminGrund(), grund);
    }
}

} // namespace
