// What the controller looks at every n-th tick: VPNs, connections, browsers; and the reports that it sends.

#include "plattform/Dateien.hpp"
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
                           "* (Connected)    5 ohne Namen\n* (Connected) 6 \"offen\n* (Connected) 7 \"\"\n";

TEST(Erhebung, vpnsAusTunnelberichtUndSystem) {
    HandyWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.einstellungen.werte = {{"volltunnel.erklaert", true}};
    w.ausgaben = {{"scutil", nc}, {"pgrep", "4711\n"}};
    w.starteBis(2.5);
    const auto helferNennt = [&](const std::string& vpns) {
        schreibeAtomar(w.stoppPfad() + ".vpns.json", "{\"vpns\":[" + vpns + "]}", Haltbarkeit::fluechtig);
    };
    helferNennt(R"J({"dienst":"Firma (Büro)","server":"10.1.2.3"},{"server":"10.0.0.9"},{"dienst":"X"},
                    {"dienst":"Y","server":"1.2.3"},{"dienst":"Z · z","server":"10.1.2.3"})J");
    w.laufeBisSekunde(6.5);
    EXPECT_THAT(w.zustand().vpnsGesichert, ElementsAre("Firma (Büro) · 10.1.2.3", "VPN · 10.0.0.9", "X",
                                                       "Y · 1.2.3", "Z · z · 10.1.2.3"));
    EXPECT_THAT(w.zustand().vpnsOffen, ElementsAre("Firma (Zürich)", "OpenVPN")) << "„Firma“ is secured";
    EXPECT_THAT(w.anmeldungen.back(), HasSubstr(R"("vpn":["10.0.0.9","10.1.2.3"])"));

    helferNennt(R"J({"dienst":"OpenVPN (Büro)"})J");
    w.laufeBisSekunde(10);
    EXPECT_THAT(w.zustand().vpnsOffen, ElementsAre("Firma (Zürich)", "Firma"));
    helferNennt(R"({"dienst":"X"},"Y")");
    w.laufeBisSekunde(16);
    EXPECT_THAT(w.zustand().vpnsGesichert, IsEmpty()) << "half a report is none";
    w.handys.clear();
    w.laufeBisSekunde(18.5); // an odd tick: the survey comes with the next one
    EXPECT_THAT(w.zustand().vpnsGesichert, IsEmpty());
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
    EXPECT_THAT(Erhebung::liesVerbindungen(lsof).durch, ElementsAre("Google Chrome H (1)"));
    EXPECT_THAT(Erhebung::liesVerbindungen(lsof).vorbei, ElementsAre("Mail (2)"));
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
        w.ausgaben["lsof"] = "Mail 1 anna 8u IPv4 0x1 0t0 TCP 192.0.2.1:5->198.51.100.1:993 (ESTABLISHED)\n"
                             "Mail 1 anna 8u IPv4 0x1 0t0 TCP 192.0.2.1:6->127.0.0.1:1080 (ESTABLISHED)\n";
        w.starteBis(0.2 + 29 * 3 + 1);
        EXPECT_EQ(w.zustand().durch.size() + w.zustand().vorbei.size(), lsof > 0 ? 2U : 0U);
        w.bediene([](Kabel& k) { k.proxyUmschalten(); });
        EXPECT_TRUE(w.zustand().durch.empty() && w.zustand().vorbei.empty()) << "they speak of the proxy";
        EXPECT_THAT(w.aufrufe, Contains(StartsWith("lsof")).Times(lsof)) << profil << experte;
        EXPECT_THAT(w.aufrufe, Contains(StartsWith("scutil")).Times(scutil)) << profil << experte;
    }
}

TEST(Erhebung, browserBeimErstenUndJedemZehntenTakt) {
    KabelWelt w;
    w.browser = {{"Chrome", "c", true, "/c"}, {"Edge", "e", false, "/e"}};
    w.starteBis(0.5);
    EXPECT_THAT(w.zustand().browserOhne, ElementsAre(w.browser[1]));
    w.browser[0].fahrtwind = false;
    w.bediene([](Kabel& k) { k.siehNach(); }); // a look is no tick
    w.laufeBisSekunde(29);
    EXPECT_EQ(w.zustand().browserOhne.size(), 1U);
    w.laufeBisSekunde(31);
    EXPECT_EQ(w.zustand().browserOhne.size(), 2U);
    w.bediene([&](Kabel& k) { k.fahrtwindHinzufuegen(w.browser[0]); });
    EXPECT_THAT(w.geoeffnet, ElementsAre("Chrome"));
    EXPECT_THAT(w.protokoll(), Contains("fahrtwind: Store/Download in Chrome"));
}

TEST(Berichte, jedenHundertstenTaktUndBeiAerger) {
    HandyWelt w;
    w.ordner.lege("/heim/Library/Logs/MobilstegBordlotse.log", "alt\n");
    w.starteBis(0.2 + 98 * 3 + 1);
    EXPECT_THAT(w.berichte, IsEmpty());
    w.laufeBisSekunde(0.2 + 99 * 3 + 1);
    EXPECT_THAT(w.berichte,
                ElementsAre(Pair("mac%2Dbordlotse%2Elog", EndsWith("\n14.03.2025 09:41:07  Fährt mit\n")),
                            Pair("mac%2Ddiagnose%2Etxt", _)));

    HandyWelt aerger;
    aerger.handys[0].austritt.reset();
    aerger.starteBis(4);
    EXPECT_EQ(aerger.berichte.size(), 3U) << "after each tick; the log has nothing new at the second";
    aerger.handys[0].teilt = false;
    aerger.laufeBisSekunde(300);
    EXPECT_EQ(aerger.berichte.size(), 3U) << "none without the phone's answer";
}

/// Lets the controller report once, by a proof that fails; the reports by their encoded names.
std::map<std::string, std::string> melde(KabelWelt& w) {
    w.berichte.clear();
    w.handys = {Modellhandy{.austritt = std::nullopt}};
    w.welt.laufe(3s);
    w.handys.clear();
    w.welt.laufe(3s);
    return {w.berichte.begin(), w.berichte.end()};
}

TEST(Berichte, protokolleInStuecken) {
    std::string langes(3'000'011, 'x');
    langes.back() = '!';
    // What the log holds, whether the phone takes it, where the piece that is sent begins (-1: none is), that
    // piece, and what is remembered afterwards.
    const std::tuple<std::string, bool, int, std::string, int> schritte[] = {
        {"erste\n", true, 0, "erste\n", 6},
        {"erste\n", true, -1, "", 6},
        {"erste\nzwei\xC3", false, 6, "zwei\xC3", 6}, // cut in the middle of a character: bytes are bytes
        {"erste\nzwei\xC3", true, 6, "zwei\xC3", 11},
        {"neu\n", true, -1, "", 11}, // truncated: nothing until it has outgrown the old count
        {langes, true, 11, langes.substr(langes.size() - 1'500'000), 3'000'011},
    };
    KabelWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.version = "2.1";
    w.bauversion.reset();
    w.einstellungen.werte = {{"volltunnel", false}};
    w.starteBis(0.1);
    for (const auto& [log, angenommen, ab, stueck, stand] : schritte) {
        w.ordner.lege("/heim/Library/Logs/MobilstegVolltunnel.log", log);
        w.nimmtBerichte = angenommen;
        const std::string kopf = "# mac-volltunnel.log ab Byte " + std::to_string(ab) + ", Testmac (" +
                                 w.kabel->id().substr(0, 8) + "), Mobilsteg VPN-Lotse 2.1 (?)\n";
        EXPECT_EQ(melde(w)["mac%2Dvolltunnel%2Elog"], ab < 0 ? "" : kopf + stueck);
        EXPECT_EQ(w.einstellungen.tabelle("bericht.stand").value()["mac-volltunnel.log"], stand);
    }
}

/// Each part with its cap.
TEST(Berichte, diagnose) {
    KabelWelt w;
    const auto mal = [](int n, const std::string& zeile) {
        std::string text;
        for (int i = 0; i < n; ++i)
            text += zeile + "\n";
        return text;
    };
    w.ausgaben = {{"netstat", "Internet:\n127 2\n100.64.0.1/32 3\n10 4 utun3\n0/1 5\n128.0/1 6\n" +
                                  mal(30, "default 1")},
                  {"scutil", "resolver #1\n  domain : x\n\n" + mal(30, "nameserver 1")},
                  {"mdfind", "/Applications/TS.app\n/zweite\n"},
                  {"Tailscale", mal(30, "100.64.0.1 mac")}};
    w.ordner.lege("/wurzel/Applications/TS.app/Contents/MacOS/Tailscale", "#!", true);
    w.ordner.lege("/wurzel/usr/local/var/log/tailscaled.log", "zu alt\n" + mal(25, "neu"));
    w.starte();
    EXPECT_EQ(
        melde(w)["mac%2Ddiagnose%2Etxt"],
        "# mac-diagnose 2025-03-14T08:41:07Z · Phase: Der Proxy des Handys antwortet nicht — Weitergabe "
        "wirklich an? · Volltunnel: false · Proxy: false\n"
        "## route default\n    gateway: 10.0.0.1\n  interface: en0\n"
        "## routen (Auszug)\n100.64.0.1/32 3\n10 4 utun3\n0/1 5\n128.0/1 6\n" +
            mal(16, "default 1") + "## dns\nresolver #1\n" + mal(11, "nameserver 1") +
            "## schnittstellen\nresolver #1\n  domain : x\n" + mal(14, "nameserver 1") +
            "## tailscale status\n" + mal(8, "100.64.0.1 mac") + "## tailscale netcheck\n" +
            mal(14, "100.64.0.1 mac") + "## tailscaled.log (letzte 25)\n" + mal(25, "neu"));
}

} // namespace
