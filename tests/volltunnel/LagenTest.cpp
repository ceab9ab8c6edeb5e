// What the helper decides and what it says to the system's tools, without a tunnel.

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/volltunnel/Pakete.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <cerrno>

#include "volltunnel/Befehlszeile.hpp"
#include "volltunnel/Namen.hpp"
#include "volltunnel/Umschau.hpp"
#include "volltunnel/Wegewart.hpp"

using namespace mobilsteg;
using namespace mobilsteg::volltunnel;
using namespace testing;
using namespace std::string_literals;
using std::chrono::seconds;

namespace {

std::vector<std::string> worte(std::string_view zeile) {
    const auto stuecke = teile(zeile, ' ');
    return {stuecke.begin(), stuecke.end()};
}

TEST(Befehlszeile, liestWasDasProgrammSchreibtUndSonstNichts) {
    const std::string gute = "-proxy 127.0.0.1:65535 -stopp /a/volltunnel.stopp -dienst Wi-Fi -wache 42";
    std::string fehler;
    const auto a = liesBefehlszeile(worte(gute + " -nur-vpn -wurzel /w"), fehler);
    ASSERT_TRUE(a) << fehler;
    EXPECT_EQ(a->proxy, stelle("127.0.0.1", 65535));
    EXPECT_EQ(a->stopp + a->dienst + a->wurzel + std::to_string(a->wache), "/a/volltunnel.stoppWi-Fi/w42");
    EXPECT_TRUE(a->nurVPN && !a->vpnDurch && liesBefehlszeile(worte(gute + " -vpn-durch"), fehler)->vpnDurch);
    for (const auto& [was, alle] : std::map<std::string, std::string>{
             {"127.0.0.1:65535", "10.0.0.1:1080 127.0.0.1 127.0.0.1:65536 127.0.0.1: :1080"},
             {"/a/volltunnel.stopp", "a/b /a/ /a"},
             {"42", "42x 0 -1"},
             {"-wache", "-wach"},
             {"-wache 42", "-wache -vpn-durch"}})
        for (const auto& stattdessen : worte(alle)) {
            std::string zeile = gute;
            zeile.replace(zeile.find(was), was.size(), stattdessen);
            std::string grund;
            EXPECT_FALSE(liesBefehlszeile(worte(zeile), grund)) << zeile;
            EXPECT_NE(grund, "") << zeile;
        }
}

// One question for "a.b", type A; with EDNS for `laenge` behind another record.
std::string frage(int laenge) {
    std::string f("\x12\x34\1\0\0\1\0\0\0\0\0\0\1a\1b\0\0\1\0\1", 21);
    if (laenge > 0) {
        f[11] = 2;
        f += "\1c\0\0\1\0\1\0\0\0\0\0\4abcd\0\0\x29"s + static_cast<char>(laenge >> 8) +
             static_cast<char>(laenge) + std::string(6, '\0');
    }
    return f;
}

TEST(Namen, antwortenSoLangWieDerFragendeSieNimmt) {
    EXPECT_EQ(hoechstlaenge(frage(0)), 512U);
    EXPECT_EQ(hoechstlaenge(frage(1232)), 1232U);
    EXPECT_EQ(hoechstlaenge(frage(100)), 512U);
    EXPECT_EQ(hoechstlaenge(frage(1232).substr(0, 42)), 512U);
    EXPECT_TRUE(istFrage(frage(0)) && !istFrage(frage(0).substr(0, 12)));
    EXPECT_FALSE(istFrage(frage(0).replace(2, 1, 1, '\x81')) || istFrage(frage(0).replace(5, 1, 1, '\0')));
    EXPECT_EQ(servfail(frage(0)), "\x12\x34\x81\x82\0\1\0\0\0\0\0\0\1a\1b\0\0\1\0\1"s);
    EXPECT_EQ(servfail(frage(0).substr(0, 20)), "\x12\x34\x81\x82\0\0\0\0\0\0\0\0"s)
        << "only a header is sure";
    std::string antwort = frage(0) + std::string(500, 'x');
    antwort.replace(2, 6, "\x81\x80\0\1\0\1"s);
    EXPECT_EQ(gekuerzt(antwort, 521), antwort);
    EXPECT_EQ(gekuerzt(antwort, 520), "\x12\x34\x83\x80\0\1\0\0\0\0\0\0\1a\1b\0\0\1\0\1"s);
}

TEST(Ausfall, zaehltNurWasVersuchtWurde) {
    using enum Ausgang;
    // What was tried, from which second to which; whether the last one ends it all.
    for (const auto& [was, versuche, zurueck] :
         std::vector<std::tuple<const char*, std::vector<std::tuple<Ausgang, int, int>>, bool>>{
             {"one refusal", {{kaputt, 20, 20}}, false},
             {"refusals for 14 s", {{kaputt, 20, 20}, {kaputt, 34, 34}}, false},
             {"refusals for 15 s", {{kaputt, 20, 20}, {kaputt, 28, 28}, {kaputt, 35, 35}}, true},
             {"silence for 15 s", {{stumm, 20, 35}}, true},
             {"a success", {{kaputt, 1, 1}, {verbunden, 5, 6}, {kaputt, 11, 11}, {kaputt, 17, 17}}, false},
             {"begun before the success", {{verbunden, 20, 30}, {stumm, 19, 34}}, false},
             {"the target refuses", {{kaputt, 20, 20}, {nein, 27, 28}, {kaputt, 36, 36}}, false},
             {"idle between", {{kaputt, 20, 20}, {kaputt, 37, 37}}, false},
             {"a radio gap", {{haengt, 20, 110}, {haengt, 21, 111}}, false}}) {
        Ausfall ausfall;
        bool zuletzt = false;
        for (const auto& [ausgang, von, bis] : versuche)
            zuletzt = ausfall.melde(ausgang, Zeit(seconds(von)), Zeit(seconds(bis)));
        EXPECT_EQ(zuletzt, zurueck) << was;
    }
}

TEST(Wege, sagenJedemWerkzeugDasSeine) {
    const Wege ip(Wegewerkzeug::ip, "");
    const Wege mac(Wegewerkzeug::route, "");
    const Ausweg wlan{"10.0.0.1", "en0"};
    EXPECT_EQ(mac.fuehre("1.2.3.4", wlan), worte("/sbin/route -n add -inet -host 1.2.3.4 10.0.0.1"));
    EXPECT_EQ(mac.fuehre("8000::/1", {"", "utun5"}, true),
              worte("/sbin/route -n delete -inet6 -net 8000::/1 -interface utun5"));
    EXPECT_THAT(mac.geraetEin("utun5", "198.19.108.1", "198.19.108.2"),
                ElementsAre(worte("/sbin/ifconfig utun5 inet 198.19.108.1 198.19.108.2 mtu " +
                                  std::to_string(groesstesPaket()) + " up")));
    EXPECT_THAT(mac.geraetEin("utun5", "fd6d::1", "fd6d::2"),
                ElementsAre(worte("/sbin/ifconfig utun5 inet6 fd6d::1 prefixlen 128"),
                            worte("/sbin/route -n add -inet6 -host fd6d::2 -interface utun5")));
    EXPECT_EQ(
        ip.liesAusweg(
            "default via 10.0.0.1 dev en0 proto dhcp metric 6 \ndefault via 10.9.9.9 dev en1 metric 9\n"),
        wlan);
    EXPECT_EQ(ip.liesAusweg("default dev ppp0 scope link\n"), (Ausweg{"", "ppp0"}));
    EXPECT_EQ(ip.liesAusweg(""), std::nullopt);
    EXPECT_EQ(mac.liesAusweg(
                  "   route to: default\ndestination: default\n    gateway: 10.0.0.1\n  interface: en0\n"),
              wlan);
    EXPECT_EQ(mac.liesAusweg("    gateway: link#14\n  interface: utun3\n"), (Ausweg{"", "utun3"}));
    EXPECT_EQ(mac.liesAusweg("route: writing to routing socket: not in table\n"), std::nullopt);
    EXPECT_THAT(liesDnsserver("10.0.0.1\nThere aren't any DNS Servers set on Wi-Fi.\nfd00::1\n"
                              "  nameserver[0] : 8.8.8.8\n  flags : A\nnameserver[\n"),
                ElementsAre("10.0.0.1", "fd00::1", "8.8.8.8"));
}

// What must be there before it is done, and what comes of it when the tools fail.
TEST(Rueckbau, merktVorherUndNimmtInUmgekehrterFolgeZurueck) {
    const Ordner ordner;
    const std::string notiz = ordner.pfad() + "/rueckbau";
    const std::string protokoll = ordner.pfad() + "/protokoll";
    const auto befehl = [&](const std::string& name, const std::string& status = "0") {
        return Befehl{ordner.lege("/" + name,
                                  "#!/bin/sh\necho \"${0##*/} $1 $(grep -c \"$1\" " + notiz + ")\" >>" +
                                      protokoll + "; exit $2\n",
                                  true),
                      name + "-weg", status};
    };
    {
        Rueckbau r(notiz);
        EXPECT_FALSE(
            r.tue({befehl("networksetup")[0], "networksetup-weg", "0"}, befehl("networksetup", "4")));
        EXPECT_FALSE(r.tue({befehl("drei")[0], "drei-weg", "0"}, befehl("drei", "2")));
        EXPECT_TRUE(r.tue({befehl("zwei")[0], "zwei-weg", "3"}, befehl("zwei"))) << "it failed";
    } // a crash
    EXPECT_EQ(ordner.lies("/protokoll"),
              "networksetup networksetup-weg 1\ndrei drei-weg 1\nzwei zwei-weg 1\n");
    std::filesystem::remove(protokoll);
    EXPECT_FALSE(Rueckbau(notiz).alles()) << "the name servers stay";
    EXPECT_EQ(ordner.lies("/protokoll"), "drei drei-weg 1\nnetworksetup networksetup-weg 1\n");
    EXPECT_EQ(ordner.lies("/rueckbau"), nlohmann::json({befehl("networksetup", "4")}).dump());
    std::filesystem::permissions(notiz, std::filesystem::perms::all);
    EXPECT_TRUE(Rueckbau(notiz).leer()) << "anybody could have written it";
    std::filesystem::permissions(notiz, std::filesystem::perms(0600));
    EXPECT_TRUE(::chown(notiz.c_str(), 65534, 65534) != 0 || Rueckbau(notiz).leer()) << "a user wrote it";
    ordner.lege("/rueckbau", "[]");
    errno = 0; // what an earlier call left is no answer
    EXPECT_TRUE(Rueckbau(notiz).alles() && !existiert(notiz)) << "nothing to take back";
    Rueckbau ohnePlatz(ordner.pfad() + "/fehlt/rueckbau");
    std::filesystem::remove(protokoll);
    EXPECT_TRUE(ohnePlatz.tue(befehl("eins"), befehl("eins")) && ohnePlatz.leer());
    EXPECT_EQ(ordner.lies("/protokoll"), "") << "no note, no change";
}

Adresse a(const char* text) {
    return asio::ip::make_address(text);
}

TEST(Vpnwege, einVerbundenesBehaeltSeinenWeg) {
    const Openvpn daneben{a("10.0.0.9"), a("2.2.2.2")};
    for (const auto& [lage, soll] : std::map<std::string, std::string>{
             {"alles, ruhend", " 1.1.1.1"},
             {"alles, verbunden, daneben", " 1.1.1.1 2.2.2.2"},
             {"alles, verbunden, durch", " Firma=1.1.1.1 OpenVPN=2.2.2.2"},
             {"auch VPN, ruhend", ""},
             {"auch VPN, verbunden, daneben", " 1.1.1.1 2.2.2.2"},
             {"nur VPN, ruhend", " 1.1.1.1"},
             {"nur VPN, verbunden, daneben", ""},
             {"nur VPN, verbunden, durch", " 1.1.1.1 2.2.2.2 Firma=1.1.1.1 OpenVPN=2.2.2.2"}}) {
        const auto ist = [&lage = lage](const char* wort) { return lage.find(wort) != std::string::npos; };
        std::vector<Openvpn> openvpn;
        if (ist("daneben") || ist("durch"))
            openvpn = {ist("durch") ? Openvpn{tunnelenden(false).hier, a("2.2.2.2")} : daneben};
        const auto b = Vpnwege(ist("nur"), ist("auch"))
                           .werte({{"Firma", {a("1.1.1.1")}, ist("verbunden")}}, openvpn,
                                  [&](const Adresse&) { return ist("durch"); });
        std::string text;
        for (const Adresse& weg : b.wege)
            text += " " + weg.to_string();
        for (const auto& [name, server] : b.gesichert)
            text += " " + name + "=" + server;
        EXPECT_EQ(text, soll) << lage;
    }
    Vpnwege wege(true, false);
    EXPECT_THAT(wege.werte({}, {daneben}, [](const Adresse&) { return false; }).wege, IsEmpty());
    EXPECT_THAT(wege.werte({}, {}, [](const Adresse&) { return false; }).wege, ElementsAre(a("2.2.2.2")))
        << "it is gone: its next connection goes through the tunnel";
}

TEST(Umschau, fragtDieWerkzeugeDesSystems) {
    const Ordner ordner;
    ordner.lege("/usr/sbin/scutil", "#!/bin/sh\ncat \"$0 ${3-list}\"\n", true);
    ordner.lege("/usr/sbin/scutil list", "Available network connection services:\n"
                                         "* (Connected) 1 VPN \"Firma Süd\" [VPN]\n"
                                         "* (Disconnected) 2 PPP \"Heim\" [PPP]\n"
                                         "* (Connected) 3 VPN \"Tailscale\" [VPN]\n");
    ordner.lege("/usr/sbin/scutil Firma Süd", "  Type : IPSec\n  CommRemoteAddress : 203.0.113.6 \n");
    ordner.lege("/usr/sbin/scutil Heim", "ServerAddress : 2001:db8::6\nRemoteAddress : 1.1.1.1");
    EXPECT_THAT(Vpnsuche(ordner.pfad()).sieh(),
                ElementsAre(FieldsAre("Firma Süd", ElementsAre(a("203.0.113.6")), true),
                            FieldsAre("Heim", ElementsAre(a("2001:db8::6")), false)));
    ordner.lege("/usr/sbin/lsof",
                "#!/bin/sh\necho 'p12\nf3\nn10.0.0.9:5->2.2.2.2:1194\nn[fd00::1]:6->[2001:db8::1]:443\n"
                "n127.0.0.1:7->127.0.0.1:8\nn*:9\nnx->3.3.3.3:9'\n",
                true);
    EXPECT_EQ(frageOpenvpn(ordner.pfad()), "") << "none runs";
    ordner.lege("/usr/bin/pgrep", "#!/bin/sh\n", true);
    EXPECT_THAT(
        liesOpenvpn("openvpn" + frageOpenvpn(ordner.pfad())),
        ElementsAre(FieldsAre(a("10.0.0.9"), a("2.2.2.2")), FieldsAre(a("fd00::1"), a("2001:db8::1"))));
}

} // namespace
