// The system proxy: the tools' texts, their calls, and what is remembered about them.

#include "netz/SystemProxy.hpp"

#include "netz/Variante.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using Vielleicht = std::optional<std::string>;

namespace {

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

TEST(SystemProxy, waehltDenDienstDerStandardrouteOderDenErstenEingeschalteten) {
    for (const auto& [route, text, soll] : std::vector<std::tuple<std::string, std::string, Vielleicht>>{
             {"   route to: default\n    gateway: fe80::1%en9\n  interface: en1\n      flags: <UP>\n",
              reihenfolge, "Wi-Fi (zu Hause) )x"}, // not en10, which comes first
             {"interface:\ten9 \t\n  interface: en1\n", reihenfolge, "Bluetooth PAN"}, // although disabled
             {"if: x interface: a:en1::", reihenfolge, "Wi-Fi (zu Hause) )x"},
             {"route: writing to routing socket: not in table\n", reihenfolge, "USB 10/100 LAN"},
             {"interface: en0", "(Hardware Port: Wi-Fi, Device: en0)\n(1) LAN\n", "LAN"}, // no service
             {"interface: en0", "(1) LAN\n(2 Wi-Fi\n(Hardware Port: Wi-Fi, Device: en0)", "LAN"},
             {"interface: en7", "(*) Wi-Fi\n(Hardware Port: Wi-Fi, Device: en0)\n", std::nullopt}})
        EXPECT_EQ(SystemProxy::dienstFuer(SystemProxy::schnittstelle(route), SystemProxy::liesDienste(text)),
                  soll)
            << route << text;
}

// --- the tools' runs: program, arguments and limit with bars between them --------------------------------

std::string netz(const std::string& worte) {
    return "/w/usr/sbin/networksetup|-" + worte;
}

const std::string route = "/w/sbin/route|-n|get|default|5";
const std::string liste = netz("listnetworkserviceorder|5");
const std::string setze = netz("setsocksfirewallproxy|LAN|127.0.0.1|1080|10");
const std::string an = netz("setsocksfirewallproxystate|LAN|on|10");
const std::string aus = netz("setsocksfirewallproxystate|LAN|off|10");
const std::string frage = netz("getsocksfirewallproxy|LAN|5");

const Ergebnis gut{0, "", ""};
const Ergebnis nein{14, "nicht\n", "so"};
const Ergebnis zeigtAufUns{
    0, " Enabled: Yes \r\n\tServer: 127.0.0.1\r\nPort: 1080\r\nAuthenticated Proxy Enabled: 0\n", ""};
const Ergebnis zeigtWoandershin{0, "Enabled: Yes\nServer: 10.0.0.1\nPort: 1080\n", ""};
const Ergebnis zuSpaet{15, " \n", "", true}; // behind its work or before it
const Ergebnis unbekannterDienst{4, "X is not a recognized network service.\n", ""};

/// A run of the program in which each tool must be the next one of the script, and none may be left over; the
/// settings outlive it as those of the user do.
struct Lauf {
    using Skript = std::vector<std::pair<std::string, Ergebnis>>;

    Lauf(Einstellungen& einstellungen, Skript s)
        : skript(std::move(s)),
          proxy([this](const auto&... w) { return spiele(w...); }, {"/heim", "/w"}, einstellungen) {}
    ~Lauf() { EXPECT_EQ(naechster, skript.size()) << "the script was not played to its end"; }

    Ergebnis spiele(const std::string& programm, const std::vector<std::string>& worte, double sekunden) {
        const auto lauf = programm + "|" + verbunden(worte, "|") + "|" + std::to_string(int(sekunden));
        EXPECT_EQ(lauf, naechster < skript.size() ? skript[naechster].first : "nothing more");
        return naechster < skript.size() ? skript[naechster++].second : Ergebnis{};
    }

    Skript skript;
    std::size_t naechster = 0;
    SystemProxy proxy;
};

TEST(SystemProxy, nachEinemMisslungenenSetzenWirdNachgesehen) {
    for (auto [skript, grund, bleibt] : std::vector<std::tuple<Lauf::Skript, std::string, bool>>{
             {{{setze, nein}, {frage, zeigtWoandershin}}, "so nicht", false},
             {{{setze, zuSpaet}, {frage, zeigtAufUns}, {aus, gut}}, "networksetup: Rückgabe 15", false},
             {{{setze, gut}, {an, nein}, {frage, nein}}, "so nicht", true}}) {
        skript.insert(skript.begin(), {{route, gut}, {liste, {1, "(1) LAN", "its status does not count"}}});
        SpeicherEinstellungen e;
        Lauf lauf(e, skript);
        const auto setzung = lauf.proxy.setze();
        EXPECT_EQ(setzung.ausgang, SystemProxy::Ausgang::misslungen);
        EXPECT_EQ(setzung.text, grund);
        EXPECT_EQ(e.text("proxy.ungewiss"), bleibt ? Vielleicht("LAN\n") : std::nullopt);
        EXPECT_FALSE(e.text("proxy.dienst") || lauf.proxy.gesetzt() || lauf.proxy.gesetzterDienst());
    }
}

TEST(SystemProxy, ungewissesWirdGefragtUndDerEigeneProxyDesBenutzersBleibt) {
    const std::string unbefragt = "sein Proxy lässt sich nicht befragen";
    for (const auto& [skript, bleibt, fehler] : std::vector<std::tuple<Lauf::Skript, bool, std::string>>{
             {{{frage, zeigtAufUns}, {aus, gut}}, false, ""},
             {{{frage, zeigtAufUns}, {aus, nein}}, true, "so nicht"},
             {{{frage, zeigtAufUns}, {aus, zuSpaet}}, true, "networksetup: Rückgabe 15"},
             {{{frage, zeigtWoandershin}}, false, ""},
             {{{frage, {0, "Enabled: No\nServer: 127.0.0.1\nPort: 1080\n", ""}}}, false, ""},
             {{{frage, {0, "Enabled: Yes\nServer: 127.0.0.1\n", ""}}}, true, unbefragt},
             {{{frage, {0, "Enabled: Yes\nPort: 1080\n", ""}}}, true, unbefragt},
             {{{frage, {0, "Enabled: Yes\nServer: 127.0.0.1\nPort: 10", ""}}}, true, unbefragt}, // half of it
             {{{frage, unbekannterDienst},
               {liste, {0, "(1) Neu\n(2) Fremd", ""}}, // renamed, its proxy still on
               {netz("getsocksfirewallproxy|Neu|5"), zeigtAufUns},
               {netz("setsocksfirewallproxystate|Neu|off|10"), gut},
               {netz("getsocksfirewallproxy|Fremd|5"), zeigtWoandershin}},
              false,
              "den Netzwerkdienst gibt es nicht mehr"}}) {
        SpeicherEinstellungen e;
        e.setzeText("proxy.ungewiss", "LAN\n"); // by a run that died
        Lauf lauf(e, skript);
        const auto misslungene = lauf.proxy.klaereUngewisse();
        EXPECT_EQ(misslungene.empty() ? "" : *misslungene[0].grund, fehler);
        EXPECT_EQ(!e.werte.empty(), bleibt);
    }
}

TEST(SystemProxy, eineHalbeListeIstKeine) {
    SpeicherEinstellungen e;
    std::string grund;
    EXPECT_FALSE(Lauf(e, {{liste, {0, "(1) LAN", "", true}}}).proxy.dienste(grund));
    EXPECT_EQ(grund, "networksetup antwortet nicht");
    EXPECT_FALSE(Lauf(e, {{liste, nein}}).proxy.dienste(grund));
    EXPECT_EQ(grund, "so nicht");
}

TEST(SystemProxy, vergisstKeinenDienstDessenProxyNochAnSeinKann) {
    SpeicherEinstellungen e;
    e.setzeText("proxy.dienst", "LAN");
    Lauf lauf(e, {{aus, zuSpaet},
                  {aus, zuSpaet},
                  {route, gut},
                  {liste, {0, "(1) Neu", ""}},
                  {netz("setsocksfirewallproxy|Neu|127.0.0.1|1080|10"), gut},
                  {netz("setsocksfirewallproxystate|Neu|on|10"), gut},
                  {netz("setsocksfirewallproxystate|Neu|off|10"), unbekannterDienst},
                  {liste, gut}});
    EXPECT_EQ(lauf.proxy.nimmWeg().value().grund, "networksetup: Rückgabe 15");
    EXPECT_EQ(lauf.proxy.entfernen("LAN", SystemProxy::scheitern), "networksetup antwortet nicht");
    EXPECT_EQ(e.text("proxy.dienst"), "LAN") << "it may still be on";
    EXPECT_EQ(lauf.proxy.setze().ausgang, SystemProxy::Ausgang::gesetzt);
    EXPECT_EQ(e.text("proxy.ungewiss"), "LAN\n");
    EXPECT_EQ(lauf.proxy.nimmWeg().value().grund, "X is not a recognized network service.");
    EXPECT_FALSE(e.text("proxy.dienst") || lauf.proxy.nimmWeg()) << "there is no such service any more";
    EXPECT_EQ(e.text("proxy.ungewiss"), "LAN\n");
    e.werte = {{"proxy.dienst", std::string("LAN")}};
    EXPECT_FALSE(Lauf(e, {{netz("setsocksfirewallproxystate|Neu|off|10"), gut}}).proxy.entfernen("Neu"));
    EXPECT_EQ(e.text("proxy.ungewiss"), "LAN\n") << "the other one's note has moved";
    EXPECT_FALSE(e.text("proxy.dienst"));
}

TEST(Variante, ausgabeUndProfilEntscheiden) {
    for (const auto& [kennung, profil, soll] : std::vector<std::tuple<std::string, Vielleicht, std::string>>{
             {"de.mobilsteg.vpnlotse", std::nullopt, "vpn: Mobilsteg VPN-Lotse braucht einmal "},
             {"de.mobilsteg.vpnlotse", "VPN", "VPN: Mobilsteg Bordlotse braucht einmal "},
             {"de.mobilsteg.bordlotse", "vpn", "vpn: Mobilsteg Bordlotse · VPN braucht einmal "},
             {"vpnlotse.mobilsteg", "", ": Mobilsteg Bordlotse braucht einmal "}}) {
        SpeicherEinstellungen e;
        const Variante v(Buendel{kennung, {}, {}, {}}, e);
        if (profil)
            e.setzeText("profil", *profil); // asked for anew each time
        const auto gesagt = v.profil() + ": " + v.adminGrund();
        EXPECT_TRUE(gesagt.starts_with(soll)) << gesagt;
    }
}

} // namespace
