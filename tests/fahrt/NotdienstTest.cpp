// "My internet is gone": the clean-up by hand, with nothing else in order.

#include "plattform/Dateien.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <csignal>

using namespace mobilsteg;
using namespace testing;

namespace {

constexpr const char* einstellungen = "/heim/Library/Preferences/de.mobilsteg.bordlotse.json";

TEST(Aufraeumen, nachEinemAbschussMitKaputtenEinstellungen) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    bank.programm->sende(SIGKILL);
    bank.programm->warteAufEnde();
    bank.ordner.lege(einstellungen, "{ kaputt");
    ASSERT_TRUE(bank.proxyAn());
    const std::string fremder =
        handy->serial() + " tcp:" + bank.adb({"forward", "tcp:0", "tcp:8080"}) + " tcp:8080";
    EXPECT_THAT(bank.adb({"forward", "--list"}), HasSubstr("tcp:1080 tcp:1080"));

    const auto ergebnis = bank.rufe({"--aufraeumen"});
    EXPECT_EQ(ergebnis.status, 0) << ergebnis.fehler;
    EXPECT_THAT(ergebnis.ausgabe,
                AllOf(HasSubstr("System-Proxy: an „Wi-Fi“ ausgeschaltet"),
                      HasSubstr("Volltunnel: keiner läuft"), HasSubstr("Forwards: 2 entfernt")));
    EXPECT_FALSE(bank.proxyAn());
    EXPECT_EQ(bank.adb({"forward", "--list"}), fremder) << "nobody else's is taken away";
    EXPECT_EQ(bank.ordner.lies(einstellungen), "{ kaputt") << "not overwritten";
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe,
                HasSubstr("System-Proxy: keiner zeigt auf 127.0.0.1:1080"));

    const std::string networksetup = bank.ordner.pfad() + "/mac/usr/sbin/networksetup";
    std::filesystem::rename(networksetup, networksetup + ".echt");
    bank.ordner.lege("/mac/usr/sbin/networksetup",
                     "#!/bin/sh\ncase $* in -getsocks*Wi-Fi) exit 4 ;; esac\nexec \"$0.echt\" \"$@\"\n",
                     true);
    EXPECT_THAT(
        bank.rufe({"--aufraeumen"}).ausgabe,
        AllOf(HasSubstr("System-Proxy: „Wi-Fi“ lässt sich nicht befragen"), Not(HasSubstr("keiner zeigt"))));
}

TEST(Aufraeumen, nebenEinemLaufendenUndMitLebendemHelfer) {
    Fahrtbank bank;
    bank.ordner.lege(einstellungen, R"({"profil":"reise","austritt.dienst":"http://austritt.probe/",
                                        "volltunnel":true,"volltunnel.erklaert":true})");
    const auto handy = bank.handy();
    bank.starte();
    ASSERT_TRUE(bank.imStand(R"("volltunnel": true)"));
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe,
                AllOf(HasSubstr("Achtung: Ein Bordlotse läuft noch"),
                      HasSubstr("Volltunnel: beendet, Routen und DNS zurückgebaut")));
}

TEST(Aufraeumen, laesstFremdeProxysInRuheUndGehtOhneAdbUndNetworksetup) {
    const Fahrtbank bank;
    const std::string networksetup = bank.ordner.pfad() + "/mac/usr/sbin/networksetup";
    (void)lauf(networksetup, {"-setsocksfirewallproxy", "Wi-Fi", "10.0.0.5", "1080"}, 5);
    const std::string adb = bank.ordner.pfad() + "/mac/opt/homebrew/bin/adb";
    std::filesystem::remove(adb); // it leads to the real one
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe, HasSubstr("adb ist nicht da"));
    const auto mitAdb = [&](const std::string& skript) {
        bank.ordner.lege("/mac/opt/homebrew/bin/adb", "#!/bin/sh\n" + skript, true);
        return bank.rufe({"--aufraeumen"}).ausgabe;
    };
    EXPECT_THAT(mitAdb("echo kein Server >&2; exit 1"),
                HasSubstr("Forwards: adb lässt sich nicht befragen: kein Server\n"));
    EXPECT_THAT(
        mitAdb("[ $# = 2 ] && exec echo A tcp:1080 tcp:1080; echo fort >&2; exit 1"),
        AllOf(HasSubstr("Forwards: tcp:1080 nicht entfernt: fort\n"), Not(HasSubstr("keine gefunden"))));
    EXPECT_TRUE(bank.proxyAn()) << "somebody else's";

    bank.ordner.lege(einstellungen, R"({"proxy.dienst":"Wi-Fi"})");
    std::filesystem::remove(networksetup);
    const auto ergebnis = bank.rufe({"--aufraeumen"});
    EXPECT_EQ(ergebnis.status, 0);
    EXPECT_THAT(ergebnis.ausgabe, HasSubstr("an „Wi-Fi“ nicht ausgeschaltet"));
    EXPECT_THAT(bank.ordner.lies(einstellungen), HasSubstr("proxy.dienst")) << "the next one can try again";
}

TEST(Selbsttest, zeigtWasErSiehtUndAendertNichts) {
    const Fahrtbank bank;
    const auto vorher = bank.ordner.lies(einstellungen);
    bank.ordner.lege("/mac/Applications/Google Chrome.app/Contents/Info.plist", "");
    const auto ergebnis = bank.rufe({"--selbsttest"});
    EXPECT_EQ(ergebnis.status, 0);
    EXPECT_THAT(ergebnis.ausgabe,
                AllOf(HasSubstr("de.mobilsteg.bordlotse"), HasSubstr("Netzwerkdienst  Wi-Fi"),
                      HasSubstr("/mac/opt/homebrew/bin/adb"), HasSubstr("Chrome ohne fahrtwind")));
    EXPECT_EQ(bank.ordner.lies(einstellungen), vorher);
    EXPECT_FALSE(existiert(bank.ordner.pfad() + "/heim/Library/Logs"));

    const std::string neuling =
        bank.ordner.pfad() + "/neuling"; // who has never started it, and gives no option
    EXPECT_THAT(
        lauf("/usr/bin/env", {"HOME=" + neuling, programmpfad("mobilsteg-bordlotse"), "--selbsttest"}, 60)
            .ausgabe,
        AllOf(HasSubstr("Heim            " + neuling + "\nWurzel          /\n"), HasSubstr("kabel.id —\n")));
    EXPECT_FALSE(existiert(neuling));
}

/// In expert mode the panel shows what the simulated Mac's tools tell, and the reports reach the phone as
/// they are.
TEST(Erhebung, expertenfahrtMitBrowsernVpnsUndBerichten) {
    Fahrtbank bank;
    bank.ordner.lege("/mac/Applications/Google Chrome.app/Contents/Info.plist", "");
    bank.ordner.lege(einstellungen,
                     R"({"profil":"reise","experte":true,"austritt.dienst":"http://austritt.probe/",
                         "volltunnel.erklaert":true})");
    bank.ordner.lege("/heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp.vpns.vorlage",
                     R"({"vpns":[{"dienst":"Werk Nord","server":"198.51.100.20"}]})");
    const auto handy = bank.handy();
    handy->sage("proxy kaputt"); // trouble: the reports go out
    bank.starte();
    bank.erwartePhase("Der Proxy des Handys antwortet nicht");
    EXPECT_TRUE(
        warteBis([&] { return existiert(bank.ordner.pfad() + "/handy1/berichte/002-mac-diagnose.txt"); }));
    EXPECT_THAT(bank.ordner.lies("/handy1/berichte/002-mac-diagnose.txt"),
                AllOf(HasSubstr("## routen (Auszug)\ndefault            192.168.178.1"),
                      HasSubstr("nameserver[0]"), HasSubstr("## tailscale status\n100.64.0.5 "),
                      HasSubstr("## tailscale netcheck\nReport:\n\t* UDP: true\n")));

    handy->sage("proxy heil");
    bank.erwartePhase("Fährt mit");
    EXPECT_TRUE(bank.zeigt("Durch Proxy      Google Ch (2)"));
    EXPECT_TRUE(bank.zeigt("Am Proxy vorbei  Mail (2)"));
    EXPECT_TRUE(bank.zeigt("fahrtwind fehlt im Browser"));
    bank.programm->tippe("browser Chrome");
    EXPECT_TRUE(warteBis(
        [&] { return bank.ordner.lies("/mac/zustand/geoeffnet").starts_with("-b com.google.Chrome http"); }));
    bank.programm->tippe("hinweis weg");
    EXPECT_TRUE(warteBis(
        [&] { return bank.ordner.lies(einstellungen).find("hinweisWeg\": true") != std::string::npos; }));
    bank.programm->tippe("profil vpn");
    EXPECT_TRUE(bank.zeigt("Firmen-VPN (Zürich) · ungesichert"));
    EXPECT_TRUE(bank.zeigt("OpenVPN · ungesichert"));
    bank.programm->tippe("volltunnel an");
    EXPECT_TRUE(bank.zeigt("Werk Nord · 198.51.100.20 · gesichert"));
    EXPECT_TRUE(bank.zeigt("OpenVPN · noch nicht gesichert"));
    EXPECT_TRUE(warteBis([&] {
        return handy->sage("zustand").find(R"("vpn":["198.51.100.20"])") != std::string::npos;
    })) << "the phone hears of the server";
}

} // namespace
