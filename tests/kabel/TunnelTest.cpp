// The full tunnel through the whole controller: wish, start, loss, and everything that can go wrong with it.

#include "plattform/Dateien.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

/// A Mac whose user knows the explanation and wants the tunnel, with a willing phone on the cable.
struct TunnelWelt : HandyWelt {
    explicit TunnelWelt(std::uint64_t samen = 1) : HandyWelt(samen) {
        einstellungen.werte = {{"volltunnel.erklaert", true}, {"volltunnel", true}};
    }
    void starteMitTunnel() {
        starteBis(2.5);
        ASSERT_TRUE(zustand().volltunnelLaeuft);
        ASSERT_EQ(helfer, 1);
    }
    void schalte(bool an) {
        haupt.sync([&] { kabel->setzeVolltunnelAn(an); });
    }
    [[nodiscard]] std::optional<bool> gespeichert(const char* name = "volltunnel") const {
        return einstellungen.flagge(name);
    }
};

TEST(Volltunnel, folgtDemWunschUndDerVerbindung) {
    TunnelWelt w;
    w.starteMitTunnel();
    EXPECT_THAT(w.skripte, ElementsAre(HasSubstr("-dienst 'Wi-Fi' -wache " + std::to_string(::getpid()) +
                                                 " </dev/null")));
    EXPECT_THAT(
        w.protokoll(),
        Contains("Volltunnel läuft: Standardroute des Mac geht durchs Handy (Tailscale/VPNs direkt)"));
    EXPECT_THAT(w.standdienst.dokument, HasSubstr("\"volltunnel\": false"))
        << "the document tells its tick's end";
    w.laufeBisSekunde(4);
    EXPECT_THAT(w.standdienst.dokument, HasSubstr("\"volltunnel\": true"));

    w.handys.clear();
    w.laufeBisSekunde(6.5);
    EXPECT_EQ(w.helfer, 0);
    EXPECT_FALSE(w.zustand().volltunnelLaeuft);
    EXPECT_TRUE(w.zustand().volltunnelAn) << "the wish stays";
    const auto zeilen = w.protokoll();
    const auto zeile = [&](const char* text) {
        return std::find(zeilen.begin(), zeilen.end(), text) - zeilen.begin();
    };
    EXPECT_LT(zeile("Volltunnel beendet, Routen und DNS zurückgebaut"),
              zeile("System-Proxy entfernt von Wi-Fi"));

    w.handys = {Modellhandy{}};
    w.laufeBisSekunde(12);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft) << "it comes back with the link";
    w.raeumeAuf();
    EXPECT_EQ(w.helfer, 0);
    EXPECT_EQ(w.meisteHelfer, 1);
}

TEST(Volltunnel, erklaertSichEinmal) {
    TunnelWelt w;
    w.einstellungen.werte.clear();
    w.starteBis(1);
    w.antworten = {1};
    w.schalte(true);
    EXPECT_FALSE(w.zustand().volltunnelAn);
    EXPECT_EQ(w.gespeichert(), false);
    EXPECT_EQ(w.gespeichert("volltunnel.erklaert"), std::nullopt);
    w.laufeBisSekunde(4);
    EXPECT_TRUE(w.skripte.empty());

    w.antworten = {0};
    w.schalte(true);
    EXPECT_EQ(w.gespeichert(), true);
    w.laufeBisSekunde(7);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
    w.schalte(false);
    w.laufeBisSekunde(9);
    EXPECT_EQ(w.helfer, 0);
    EXPECT_EQ(w.gespeichert(), false);
    w.schalte(true);
    w.laufeBisSekunde(12);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
    EXPECT_THAT(w.fragen, testing::Each("Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort"));
    EXPECT_EQ(w.fragen.size(), 2U);
}

TEST(Volltunnel, misslungenerStartSchaltetAusAberVergisstDenWunschNicht) {
    const auto skript = [](bool nichtGebaut, int nummer, std::optional<std::string> meldung) {
        return [=](KabelWelt& w) { w.tunnel.skriptfehler = Skriptfehler{nichtGebaut, nummer, meldung}; };
    };
    const auto helferSagt = [](const char* grund) {
        return [=](KabelWelt& w) { w.tunnel.zurueckgebaut = grund; };
    };
    const auto ohneHelfer = [](KabelWelt& w) {
        std::filesystem::remove(w.ordner.pfad() + "/Resources/mobilsteg-volltunnel");
    };
    const std::string stumm = "Helfer meldet sich nicht (siehe LOG)";
    const std::pair<std::function<void(KabelWelt&)>, std::string> faelle[] = {
        {skript(false, -128, "Vom Benutzer abgebrochen."), "Abgebrochen"},
        {skript(false, -60007, "Keine Berechtigung"), "Keine Berechtigung"},
        {skript(false, -60007, std::nullopt), "Fehler -60007"},
        {skript(true, 0, std::nullopt), "AppleScript nicht gebaut"},
        {ohneHelfer, "Helfer mobilsteg-volltunnel fehlt im Bundle"},
        {helferSagt(" utun belegt\n"), "zurückgebaut — utun belegt"},
        {helferSagt("kein Text \xFF"), stumm},
        {[](KabelWelt& w) { w.tunnel.stumm = true; }, stumm},
    };
    for (auto [macht, grund] : faelle) {
        SCOPED_TRACE(grund);
        TunnelWelt w;
        macht(w);
        w.starteBis(45);
        if (const auto log = grund.find("LOG"); log != std::string::npos)
            grund.replace(log, 3, w.ordner.pfad() + "/heim/Library/Logs/MobilstegVolltunnel.log");
        EXPECT_THAT(w.protokoll(), Contains("Volltunnel nicht gestartet: " + grund));
        EXPECT_EQ(w.zustand().meldung,
                  "Volltunnel: " +
                      (grund != "Abgebrochen"
                           ? grund
                           : "Passwortdialog abgebrochen — Haken wieder setzen, wenn es losgehen "
                             "soll; beim nächsten Start fragt die App erneut"));
        EXPECT_FALSE(w.zustand().volltunnelAn || w.zustand().volltunnelLaeuft);
        EXPECT_EQ(w.gespeichert(), true);
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        EXPECT_LE(w.skripte.size(), 1U) << "not tried again by itself";
    }
}

TEST(Volltunnel, selbstrueckbauWirdBemerktUndBleibtAus) {
    for (const std::string geschrieben : {"", "kein Text \xFF", " kein Netz \n"}) {
        const std::string grund = geschrieben.ends_with('\n') ? "kein Netz" : "";
        TunnelWelt w;
        w.starteMitTunnel();
        w.helferBautZurueck(geschrieben);
        w.laufeBisSekunde(3.5);
        EXPECT_FALSE(w.zustand().volltunnelLaeuft);
        EXPECT_FALSE(w.zustand().volltunnelAn);
        EXPECT_EQ(w.gespeichert(), false);
        EXPECT_EQ(w.zustand().meldung, grund.empty()
                                           ? "Volltunnel hat sich zurückgebaut (kein Netz durch den Tunnel)"
                                           : "Volltunnel hat sich zurückgebaut: kein Netz");
        w.laufeBisSekunde(10);
        const auto zeilen = w.protokoll();
        EXPECT_EQ(std::count(zeilen.begin(), zeilen.end(),
                             std::string("Volltunnel: Helfer hat sich zurückgebaut") +
                                 (grund.empty() ? "" : " — kein Netz")),
                  1);
        EXPECT_EQ(w.skripte.size(), 1U);
    }
}

TEST(Volltunnel, wartetVierzigSekundenUndEinLeererGrundIstKeiner) {
    TunnelWelt w;
    w.tunnel.bisLaeuft = 39900ms;
    w.starteBis(5);
    schreibeAtomar(w.stoppPfad() + ".fehler", "", Haltbarkeit::fluechtig);
    w.laufeBisSekunde(40);
    EXPECT_FALSE(w.zustand().volltunnelLaeuft);
    w.laufeBisSekunde(41);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
}

TEST(Volltunnel, ohneProxyGiltDerDienstDerStandardroute) {
    for (const std::string dienst : {"USB LAN", "Wi-Fi"}) {
        TunnelWelt w;
        w.einstellungen.werte["proxy.automatisch"] = false;
        w.schnittstelle = "en7";
        if (dienst == "Wi-Fi")
            w.dienste.clear(); // whoever knows no service guesses
        w.starteBis(3);
        EXPECT_THAT(w.skripte, ElementsAre(HasSubstr("-dienst '" + dienst + "' ")));
        EXPECT_TRUE(w.zustand().volltunnelLaeuft && w.socksAn.empty());
    }
}

TEST(Volltunnel, geaenderteArtStartetNeuUndOhneTunnelNichts) {
    for (const bool mitTunnel : {true, false}) {
        TunnelWelt w;
        w.einstellungen.werte["volltunnel"] = mitTunnel;
        w.starteBis(2.5);
        w.bediene([](Kabel& k) { k.setzeVpnDurch(true); });
        w.laufeBisSekunde(6);
        w.bediene([](Kabel& k) { k.setzeNurVPN(true); });
        w.laufeBisSekunde(10);
        EXPECT_TRUE(w.zustand().vpnDurch && w.zustand().nurVPN);
        EXPECT_TRUE(w.gespeichert("vpnDurch") == true && w.gespeichert("nurVPN") == true);
        EXPECT_EQ(w.helfer, mitTunnel ? 1 : 0);
        EXPECT_EQ(w.meisteHelfer, w.helfer);
        if (!mitTunnel) {
            EXPECT_THAT(w.skripte, IsEmpty());
            continue;
        }
        EXPECT_THAT(w.skripte, ElementsAre(Not(HasSubstr("-durch")), HasSubstr(" -vpn-durch </dev/null"),
                                           HasSubstr(" -nur-vpn </dev/null")));
        const std::string laeuft = "Volltunnel läuft: ";
        EXPECT_THAT(w.protokoll(),
                    IsSupersetOf({laeuft + "Standardroute des Mac geht durchs Handy (VPNs durch das Handy)",
                                  laeuft + "nur VPN-Server fahren durchs Handy, Standardroute bleibt"}));
    }
}

TEST(Volltunnel, einAlterFehlerSchadetNichtUndEinWaisenhelferWirdBeendet) {
    TunnelWelt w;
    legeElternordnerAn(w.stoppPfad());
    schreibeAtomar(w.stoppPfad() + ".fehler", "von gestern", Haltbarkeit::fluechtig);
    schreibeAtomar(w.stoppPfad(), "", Haltbarkeit::fluechtig);
    w.starteBis(3);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);

    // Killed, and started again while its helper still runs.
    Kabel* const alter = w.kabel.release();
    w.einstellungen.werte["volltunnel"] = false;
    w.starte();
    w.welt.laufe(500ms);
    EXPECT_EQ(w.helfer, 0);
    w.welt.beende();
    delete alter;
}

TEST(Volltunnel, einHelferDerGehtBevorWirVonIhmHoerenFragtNichtEndlos) {
    TunnelWelt w;
    w.tunnel.bisLaeuft = 100ms;
    w.starteBis(0.21);
    w.q->async([&] { w.welt.uhr().schlafe(5s); }); // the work queue is busy when the news comes
    w.laufeBisSekunde(2);
    ASSERT_EQ(w.helfer, 1);
    w.helferBautZurueck("kein Netz");
    w.laufeBisSekunde(60);
    EXPECT_EQ(w.skripte.size(), 1U);
    EXPECT_EQ(w.zustand().meldung, "Volltunnel hat sich zurückgebaut: kein Netz");
    EXPECT_EQ(w.gespeichert(), false);
}

TEST(Volltunnel, nachEinemTotenHelferStartetDerNaechsteVonSelbst) {
    TunnelWelt w;
    w.starteMitTunnel();
    w.helferleben.back().reset(); // killed: its mark stays, and nobody answers
    w.helfer = 0;
    w.schalte(false);
    w.welt.laufe(12s); // the request goes unanswered
    EXPECT_FALSE(w.zustand().volltunnelLaeuft);
    w.schalte(true);
    w.welt.laufe(9s);
    EXPECT_EQ(w.helfer, 0) << "it might still be there";
    w.welt.laufe(40s);
    EXPECT_EQ(w.helfer, 1);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
}

TEST(Volltunnel, derToteHelferEinesAbgestuerztenMacsHindertKeinenStart) {
    TunnelWelt w;
    legeElternordnerAn(w.stoppPfad());
    schreibeAtomar(w.stoppPfad() + ".laeuft", "", Haltbarkeit::fluechtig);
    w.starteBis(15);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
    EXPECT_EQ(w.helfer, 1);
}

TEST(Volltunnel, einToterHelferHaeltDieTakteNichtEndlosAuf) {
    TunnelWelt w;
    w.starteMitTunnel();
    w.helferleben.back().reset();
    w.handys.clear();
    w.welt.laufe(45s);
    w.aufrufe.clear();
    w.welt.laufe(30s);
    EXPECT_EQ(std::count(w.aufrufe.begin(), w.aufrufe.end(), "adb devices -l"), 10);
}

/// The stop waits ten seconds for it, and the new start ten more.
TEST(Volltunnel, derNeustartKommtAuchNachEinemHelferDerSichZeitLaesst) {
    for (Dauer bisWeg = 9900ms; bisWeg < 14s; bisWeg += 100ms) {
        SCOPED_TRACE(bisWeg / 1ms);
        TunnelWelt w;
        w.tunnel.bisWeg = bisWeg;
        w.starteMitTunnel();
        w.dauerWerkzeug = 300ms;
        w.haupt.sync([&] { w.kabel->setzeVpnDurch(true); });
        w.welt.laufe(30s);
        EXPECT_EQ(w.skripte.size(), 2U);
        EXPECT_TRUE(w.zustand().volltunnelLaeuft);
        EXPECT_EQ(w.meisteHelfer, 1);
    }
}

/// Whatever happens while the dialog stands open or the helper comes up: in the end the helper runs exactly
/// when it is wanted and can, there never were two, and nobody waits for anybody in a circle.
TEST(Volltunnel, wasImmerWaehrendDesStartsGeschieht) {
    const auto klick = [](const std::function<void(Kabel&)>& was) {
        return [was](KabelWelt& w) { w.haupt.async([&w, was] { was(*w.kabel); }); };
    };
    const auto aus = klick([](Kabel& k) { k.setzeVolltunnelAn(false); });
    const auto an = klick([](Kabel& k) { k.setzeVolltunnelAn(true); });
    const std::tuple<const char*, std::function<void(KabelWelt&)>, bool> wendungen[] = {
        {"Kabel gezogen", [](KabelWelt& w) { w.handys.clear(); }, false},
        {"ausgeschaltet", aus, false},
        {"aus und wieder an",
         [&](KabelWelt& w) {
             aus(w);
             an(w);
         },
         true},
        {"andere Art", klick([](Kabel& k) { k.setzeNurVPN(true); }), true},
        {"beendet", [](KabelWelt& w) { w.raeumeAuf(); }, false},
    };
    for (const auto& [name, geschieht, laeuftAmEnde] : wendungen) {
        for (std::uint64_t samen = 0; samen < 40; ++samen) {
            SCOPED_TRACE(name + std::string(", Samen ") + std::to_string(samen));
            TunnelWelt w(samen);
            w.tunnel.passwort = samen % 2 == 0 ? 5s : 0s;
            w.tunnel.bisLaeuft = std::chrono::milliseconds(300 * (samen % 7));
            w.starteBis(1 + static_cast<double>(samen) / 10);
            geschieht(w);
            w.welt.laufe(60s);
            EXPECT_EQ(w.helfer, laeuftAmEnde ? 1 : 0);
            EXPECT_EQ(w.zustand().volltunnelLaeuft, laeuftAmEnde);
            EXPECT_LE(w.meisteHelfer, 1);
            EXPECT_EQ(w.welt.verklemmte(), 0U);
            if (testing::Test::HasFailure())
                return;
        }
    }
}

TEST(Profil, uebernehmenNimmtWasGespeichertIst) {
    TunnelWelt w;
    w.einstellungen.werte.clear();
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.baue();
    ASSERT_TRUE(w.zustand().volltunnelAn && w.zustand().vpnDurch && w.zustand().nurVPN);
    w.haupt.sync([&] { w.kabel->profilUebernehmen(); });
    EXPECT_FALSE(w.zustand().volltunnelAn || w.zustand().vpnDurch || w.zustand().nurVPN)
        << "nothing stored is off";
    EXPECT_EQ(w.einstellungen.text("profil"), "vpn") << "the current one stays, and is stored";
    EXPECT_EQ(w.gespeichert("nurVPN"), false);
    w.einstellungen.werte = {{"profil", std::string("reise")}, {"vpnDurch", true}};
    w.haupt.sync([&] { w.kabel->profilUebernehmen(); });
    EXPECT_EQ(w.zustand().profil, "reise");
    EXPECT_TRUE(w.zustand().vpnDurch);
}

} // namespace
