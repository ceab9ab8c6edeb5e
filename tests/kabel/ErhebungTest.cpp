// What the controller looks at every n-th tick: VPNs, connections, browsers; and the reports that it sends.

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

constexpr const char* nc = "* (Connected)    1 VPN (x) \"Firma (Zürich)\"  [VPN:x]\n"
                           "* (Connected)    2 VPN (x) \"Firma\"\n"
                           "* (Disconnected) 3 IPSec   \"Aus\"\n"
                           "* (Connected)    4 VPN (io.TAILSCALE.ipn) \"TS\"\n"
                           "* (Connected)    5 ohne Namen\n* (Connected) 6 \"offen\n";

TEST(Erhebung, vpnsAusTunnelberichtUndSystem) {
    HandyWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.einstellungen.werte = {{"volltunnel.erklaert", true}};
    w.ausgaben = {{"scutil", nc}, {"pgrep", "4711\n"}};
    w.starteBis(2.5);
    ASSERT_TRUE(w.zustand().volltunnelLaeuft);
    const auto helferNennt = [&](const char* vpns) {
        schreibeAtomar(w.stoppPfad() + ".vpns.json", vpns, Haltbarkeit::fluechtig);
    };
    helferNennt(
        R"J({"vpns":[{"dienst":"Firma (Büro)","server":"10.1.2.3"},{"server":"10.0.0.9"},{"dienst":"X"},
                             {"dienst":"Z","server":"10.1.2.3"}]})J");
    w.laufeBisSekunde(6.5);
    EXPECT_THAT(w.zustand().vpnsGesichert,
                ElementsAre("Firma (Büro) · 10.1.2.3", "VPN · 10.0.0.9", "X", "Z · 10.1.2.3"));
    // „Firma“ is known as secured.
    EXPECT_THAT(w.zustand().vpnsOffen, ElementsAre("Firma (Zürich)", "OpenVPN"));
    EXPECT_THAT(w.anmeldungen.back(), HasSubstr(R"("vpn":["10.0.0.9","10.1.2.3"])"));

    helferNennt(R"J({"vpns":[{"dienst":"OpenVPN (Büro)"}]})J");
    w.laufeBisSekunde(10);
    EXPECT_THAT(w.zustand().vpnsOffen, ElementsAre("Firma (Zürich)", "Firma"));
}

TEST(Erhebung, fremdeTexteJederArt) {
    for (const char* bericht : {"", "[]", "{", R"({"vpns":{}})", R"({"vpns":[1]})",
                                R"({"vpns":[{"a":null}]})", R"({"vpns":[{"dienst":5}]})"})
        EXPECT_THAT(Erhebung::liesTunnelbericht(bericht).eintraege, IsEmpty()) << bericht;
    EXPECT_THAT(Erhebung::liste_ips({"A · 10.1.2.3", "B · vpn.firma.example.com", "10.0.0.1", "C",
                                     "D · 1.2.3", "E · a · .1..2.3.4."}),
                ElementsAre("10.1.2.3", "vpn.firma.example.com", "10.0.0.1", ".1..2.3.4."));
}

TEST(Erhebung, verbindungenZaehlen) {
    const auto zeile = [](const std::string& programm, const std::string& ziel) {
        return programm + "  1 anna 8u IPv4 0x1 0t0 TCP 192.0.2.1:5->" + ziel + " (ESTABLISHED)\n";
    };
    std::string lsof =
        "COMMAND PID USER\n" + zeile("Google\\x20Chrome\\x20H", "127.0.0.1:1080") +
        zeile("Mail", "198.51.100.1:993") + zeile("Mail", "[2001:db8::1]:993") +
        zeile("ssh", "100.64.0.1:22") + zeile("node", "127.0.0.1:3000") +
        zeile("MobilstegX", "198.51.100.1:1") + zeile("adb", "198.51.100.1:1") +
        "kurz 1 2 3 4 5 6 ESTABLISHED\nMail 1 anna 8u IPv4 0x1 0t0 TCP 1:5->198.51.100.2:1 (CLOSE_WAIT)\n";
    const auto ergebnis = Erhebung::liesVerbindungen(lsof);
    EXPECT_THAT(ergebnis.durch, ElementsAre("Google Chrome H (1)"));
    EXPECT_THAT(ergebnis.vorbei, ElementsAre("Mail (2)"));
    lsof.clear();
    for (int programm = 0; programm < 10; ++programm)
        for (int n = 0; n <= programm; ++n)
            lsof += zeile("P" + std::to_string(programm), "198.51.100.1:1");
    EXPECT_THAT(Erhebung::liesVerbindungen(lsof).vorbei,
                ElementsAre("P9 (10)", "P8 (9)", "P7 (8)", "P6 (7)", "P5 (6)", "P4 (5)", "P3 (4)", "P2 (3)"));
}

TEST(Erhebung, nurWannSieGebrauchtWird) {
    // Profile, expert mode, proxy; and how often each tool runs within 30 ticks.
    const std::tuple<std::string, bool, bool, std::size_t, std::size_t> faelle[] = {
        {"reise", false, true, 0, 0},
        {"reise", true, true, 6, 15},
        {"reise", true, false, 0, 15},
        {"vpn", false, true, 0, 15}};
    for (const auto& [profil, experte, proxy, lsof, scutil] : faelle) {
        HandyWelt w;
        w.einstellungen.werte = {
            {"profil", profil}, {"volltunnel", false}, {"experte", experte}, {"proxy.automatisch", proxy}};
        w.starteBis(0.2 + 29 * 3 + 1);
        EXPECT_THAT(w.aufrufe, Contains(StartsWith("lsof")).Times(lsof)) << profil << experte;
        EXPECT_THAT(w.aufrufe, Contains(StartsWith("scutil")).Times(scutil)) << profil << experte;
    }
}

TEST(Erhebung, browserBeimErstenUndJedemZehntenTakt) {
    KabelWelt w;
    w.starte();
    w.browser = {{"Chrome", "c", true, "/c"}, {"Edge", "e", false, "/e"}};
    w.laufeBisSekunde(0.5);
    EXPECT_THAT(w.zustand().browserOhne, ElementsAre(w.browser[1]));
    w.browser[0].fahrtwind = false;
    w.laufeBisSekunde(29);
    EXPECT_EQ(w.zustand().browserOhne.size(), 1U);
    w.laufeBisSekunde(31);
    EXPECT_EQ(w.zustand().browserOhne.size(), 2U);
    w.bediene([&](Kabel& k) { k.fahrtwindHinzufuegen(w.browser[0]); });
    EXPECT_THAT(w.geoeffnet, ElementsAre("Chrome"));
    EXPECT_THAT(w.protokoll(), Contains("fahrtwind: Store/Download in Chrome"));
}

// --- reports ---------------------------------------------------------------------------------------------

std::string bericht(const KabelWelt& w, const std::string& name) {
    std::string letzter;
    for (const auto& [kodiert, inhalt] : w.berichte)
        if (kodiert == name)
            letzter = inhalt;
    return letzter;
}

TEST(Berichte, jedenHundertstenTaktUndBeiAerger) {
    HandyWelt w;
    w.starteBis(0.2 + 98 * 3 + 1);
    EXPECT_THAT(w.berichte, IsEmpty());
    w.laufeBisSekunde(0.2 + 99 * 3 + 1);
    EXPECT_THAT(w.berichte, ElementsAre(Pair("mac%2Dbordlotse%2Elog", HasSubstr("Fährt mit\n")),
                                        Pair("mac%2Ddiagnose%2Etxt", _)));

    HandyWelt aerger;
    aerger.handys[0].austritt.reset();
    aerger.starteBis(4);
    EXPECT_EQ(aerger.berichte.size(), 3U) << "after each tick; the log has nothing new at the second";
    aerger.handys[0].teilt = false;
    aerger.laufeBisSekunde(300);
    EXPECT_EQ(aerger.berichte.size(), 3U) << "none without the phone's answer";
}

/// Lets the controller report once, by a proof that fails.
void melde(KabelWelt& w) {
    w.handys = {Modellhandy{.austritt = std::nullopt}};
    w.welt.laufe(3s);
    w.handys.clear();
    w.welt.laufe(3s);
}

TEST(Berichte, protokolleInStuecken) {
    struct Schritt {
        std::string log;      ///< what it holds then
        int ab;               ///< where the piece that is sent begins; -1: none is
        std::string gesendet; ///< that piece
        int stand;            ///< what is remembered afterwards
        bool angenommen = true;
    };
    std::string langes(3'000'011, 'x');
    langes.back() = '!';
    const Schritt schritte[] = {
        {"erste\n", 0, "erste\n", 6},
        {"erste\n", -1, "", 6},
        {"erste\nzwei\xC3", 6, "zwei\xC3", 6, false}, // cut in the middle of a character: bytes are bytes
        {"erste\nzwei\xC3", 6, "zwei\xC3", 11},       // refused: the same again
        {"neu\n", -1, "", 11}, // truncated: nothing until it has outgrown the old count
        {langes, 11, langes.substr(langes.size() - 1'500'000), 3'000'011},
    };
    KabelWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.version = "2.1";
    w.bauversion.reset();
    w.einstellungen.werte = {{"volltunnel", false}};
    w.starteBis(0.1);
    for (const auto& s : schritte) {
        w.ordner.lege("/heim/Library/Logs/MobilstegVolltunnel.log", s.log);
        w.nimmtBerichte = s.angenommen;
        w.berichte.clear();
        melde(w);
        const std::string kopf = "# mac-volltunnel.log ab Byte " + std::to_string(s.ab) + ", Testmac (" +
                                 w.kabel->id().substr(0, 8) + "), Mobilsteg VPN-Lotse 2.1 (?)\n";
        EXPECT_EQ(bericht(w, "mac%2Dvolltunnel%2Elog"), s.ab < 0 ? "" : kopf + s.gesendet);
        EXPECT_EQ(w.einstellungen.tabelle("bericht.stand").value()["mac-volltunnel.log"], s.stand);
    }
}

TEST(Berichte, diagnose) {
    KabelWelt w;
    w.ausgaben = {{"netstat", "Internet:\ndefault 1\n127 2\n100.64.0.1/32 3\n10 4 utun3\n0/1 5\n128.0/1 6\n"},
                  {"scutil", "resolver #1\n  domain : x\n  nameserver[0] : 1.1.1.1\n"},
                  {"mdfind", "/Applications/TS.app\n/zweite\n"},
                  {"Tailscale", "1\n2\n\n3\n4\n5\n6\n7\n8\n9\n"}};
    w.ordner.lege("/wurzel/Applications/TS.app/Contents/MacOS/Tailscale", "#!", true);
    std::string letzte;
    for (int i = 1; i <= 25; ++i)
        letzte += "Zeile " + std::to_string(i) + "\n";
    w.ordner.lege("/wurzel/usr/local/var/log/tailscaled.log", "zu alt\nauch\n" + letzte);
    w.starte();
    melde(w);
    EXPECT_EQ(bericht(w, "mac%2Ddiagnose%2Etxt"),
              "# mac-diagnose 2025-03-14T08:41:07Z · Phase: Der Proxy des Handys antwortet nicht — "
              "Weitergabe wirklich "
              "an? · Volltunnel: false · Proxy: false\n"
              "## route default\n    gateway: 10.0.0.1\n  interface: en0\n"
              "## routen (Auszug)\ndefault 1\n100.64.0.1/32 3\n10 4 utun3\n0/1 5\n128.0/1 6\n"
              "## dns\nresolver #1\n  nameserver[0] : 1.1.1.1\n"
              "## schnittstellen\nresolver #1\n  domain : x\n  nameserver[0] : 1.1.1.1\n"
              "## tailscale status\n1\n2\n3\n4\n5\n6\n7\n8\n"
              "## tailscale netcheck\n1\n2\n3\n4\n5\n6\n7\n8\n9\n"
              "## tailscaled.log (letzte 25)\n" +
                  letzte);

    KabelWelt viel; // every part has its cap
    std::string zeilen;
    for (int i = 0; i < 30; ++i)
        zeilen += "default nameserver\n";
    viel.ausgaben = {{"netstat", zeilen}, {"scutil", zeilen}, {"tailscale", zeilen}};
    viel.ordner.lege("/wurzel/opt/homebrew/bin/tailscale", "#!", true);
    viel.starte();
    melde(viel);
    std::vector<int> anzahlen;
    const std::string lang = bericht(viel, "mac%2Ddiagnose%2Etxt");
    for (const auto zeile : teile(lang, '\n'))
        if (zeile.starts_with('#'))
            anzahlen.push_back(0);
        else
            ++anzahlen.back();
    EXPECT_THAT(anzahlen, ElementsAre(0, 2, 20, 12, 16, 8, 14));
}

} // namespace
