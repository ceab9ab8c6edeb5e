// The trip with the shipped program and the real adb: the cable's ups and downs, the surveys, the reports.

#include "tests/hilfe/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Kabel, vonDerStrassensperreBisZurFahrtUndMitEinemAnderenHandyBisZumAbsturz) {
    Fahrtbank bank;
    const std::string tunnel("erste\r\n\0\xFF\xC3", 10); // no text, and cut inside a character
    bank.ordner.lege(tunnellog, tunnel);
    const Programm jemand({programmpfad("mobilsteg-probehandy"), "--port", "8080"},
                          bank.ordner.pfad() + "/jemand");
    ASSERT_TRUE(warteBis([] { return !portFrei(8080); }));
    const auto handy = bank.handy({"--stecken", "--ohne-debugging", "--weitergabe-aus"});
    bank.starte();
    bank.erwartePhase("Am Handy „USB-Debugging zulassen“");
    handy.sage("debugging an");
    bank.erwartePhase("In Mobilsteg");
    handy.sage("weitergabe an");
    bank.erwartePhase("Warte auf das Ja");
    handy.sage("erlauben");
    bank.erwartePhase("Fährt mit");
    EXPECT_TRUE(bank.imStand(R"("austritt": "203.0.113.7")") && bank.imStand(R"("faehrt": true)") &&
                bank.imStand(R"("dienst": "Wi-Fi")"));
    EXPECT_TRUE(bank.proxyAn());
    EXPECT_THAT(handy.sage("zustand"), HasSubstr("austritt.probe")) << "the name is resolved on the phone";
    EXPECT_THAT(bank.forwards(), AllOf(HasSubstr("tcp:18080 tcp:8080"), Not(HasSubstr("tcp:8080 tcp:8080"))));

    handy.sage("weitergabe aus");
    bank.erwartePhase("In Mobilsteg");
    EXPECT_FALSE(bank.proxyAn());
    handy.sage("weitergabe an");
    bank.erwartePhase("Fährt mit");
    (void)bank.adb({"kill-server"}); // all forwards are gone with it
    EXPECT_TRUE(warteBis([&] { return bank.forwards().find("tcp:1080 tcp:1080") != std::string::npos; }));
    EXPECT_TRUE(warteBis([&] { return bank.proxyAn(); }));
    handy.sage("ziehen");
    bank.erwartePhase("Kein Handy am Kabel");
    EXPECT_FALSE(bank.proxyAn());
    EXPECT_EQ(bank.forwards(), "");

    const auto zweites = bank.handy({"--stecken", "--erlaubt", "--modell", "Pixel_8"});
    bank.erwartePhase("Fährt mit");
    EXPECT_THAT(bank.forwards(), HasSubstr(zweites.serial + " tcp:1080 tcp:1080"));
    EXPECT_TRUE(bank.zeigt("Samsung Galaxy S23") && bank.zeigt("Google Pixel-8"));

    zweites.sage("proxy kaputt"); // trouble: the reports go out
    const std::string berichte = "/handy2/berichte/00";
    EXPECT_TRUE(bank.kommt(berichte + "3-mac-diagnose.txt", "Report:\n\t* UDP: true\n"));
    EXPECT_THAT(bank.ordner.lies(berichte + "3-mac-diagnose.txt"),
                AllOf(HasSubstr("## routen (Auszug)\ndefault            192.168.178.1"),
                      HasSubstr("nameserver[0]"), HasSubstr("## tailscale status\n100.64.0.5 ")));
    EXPECT_THAT(bank.ordner.lies(berichte + "2-mac-volltunnel.log"), EndsWith(")\n" + tunnel));
    const auto log = bank.ordner.lies(berichte + "1-mac-bordlotse.log");
    EXPECT_THAT(bank.protokoll(), AllOf(StartsWith(log.substr(log.find('\n') + 1)), Not(IsEmpty())));

    zweites.sage(R"(antwort {"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","kabel":{},)"
                 R"("status":{"paths":[{"iface":"wlan0","healthy":true,"rtt_ms":1e300}]}})");
    EXPECT_EQ(bank.programm->warteAufEnde(), SIGABRT);
    EXPECT_THAT(bank.protokoll(), HasSubstr("Programmierfehler: Das Handy meldet unmögliche Zahlen"));
    bank.erwarteNichts();
}

/// In expert mode the panel shows what the simulated Mac's tools tell.
TEST(Erhebung, expertenfahrtMitBrowsernUndVpns) {
    Fahrtbank bank;
    bank.ordner.lege("/mac/Applications/Google Chrome.app/Contents/Info.plist", "");
    bank.ordner.lege(einstellungsdatei, R"({"profil":"reise","experte":true,"volltunnel.erklaert":true,
                                        "austritt.dienst":"http://austritt.probe/"})");
    bank.helfer = attrappe; // the real one finds VPNs that are really there
    bank.ordner.lege(anwendungsordner + "volltunnel.stopp.vpns.vorlage",
                     R"({"vpns":[{"dienst":"Werk Nord","server":"198.51.100.20"}]})");
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    const auto zeigtAlle = [&](const std::vector<const char*>& zeilen) {
        for (const char* zeile : zeilen)
            EXPECT_TRUE(bank.zeigt(zeile)) << zeile;
    };
    zeigtAlle({"Durch Proxy      Google Ch (2)", "Am Proxy vorbei  Mail (2)", "fahrtwind fehlt im Browser"});
    bank.programm->tippe("browser Chrome");
    EXPECT_TRUE(bank.kommt("/mac/zustand/geoeffnet", "-b com.google.Chrome http"));
    bank.programm->tippe("profil vpn");
    zeigtAlle({"Firmen-VPN (Zürich) · ungesichert", "OpenVPN · ungesichert"});
    bank.programm->tippe("volltunnel an");
    zeigtAlle({"Werk Nord · 198.51.100.20 · gesichert", "OpenVPN · noch nicht gesichert"});
    EXPECT_TRUE(warteBis([&] {
        return handy.sage("zustand").find(R"("vpn":["198.51.100.20"])") != std::string::npos;
    })) << "the phone hears of the server";
}

} // namespace
