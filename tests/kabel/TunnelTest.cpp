// The full tunnel through the whole controller: wish, start, loss, and everything that can go wrong with it.

#include "plattform/Dateien.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A Mac whose user knows the explanation and wants the tunnel, with a willing phone on the cable.
void ruesteAus(KabelWelt& w) {
    w.einstellungen.werte["volltunnel.erklaert"] = true;
    w.einstellungen.werte["volltunnel"] = true;
    w.handys = {Modellhandy{}};
}

void mitTunnel(KabelWelt& w) {
    ruesteAus(w);
    w.starte();
    w.laufeBisSekunde(2.5);
    ASSERT_TRUE(w.zustand().volltunnelLaeuft);
    ASSERT_EQ(w.helfer, 1);
}

std::optional<bool> gespeichert(const KabelWelt& w, const char* name) {
    return w.einstellungen.flagge(name);
}

TEST(Volltunnel, folgtDemWunschUndDerVerbindung) {
    KabelWelt w;
    mitTunnel(w);
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
    KabelWelt w;
    w.handys = {Modellhandy{}};
    w.starte();
    w.laufeBisSekunde(1);
    w.antworten = {1};
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(true); });
    EXPECT_FALSE(w.zustand().volltunnelAn);
    EXPECT_EQ(gespeichert(w, "volltunnel"), false);
    EXPECT_EQ(gespeichert(w, "volltunnel.erklaert"), std::nullopt);
    w.laufeBisSekunde(4);
    EXPECT_TRUE(w.skripte.empty());

    w.antworten = {0};
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(true); });
    EXPECT_EQ(gespeichert(w, "volltunnel"), true);
    w.laufeBisSekunde(7);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(false); });
    w.laufeBisSekunde(9);
    EXPECT_EQ(w.helfer, 0);
    EXPECT_EQ(gespeichert(w, "volltunnel"), false);
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(true); });
    w.laufeBisSekunde(12);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
    EXPECT_THAT(w.fragen, testing::Each("Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort"));
    EXPECT_EQ(w.fragen.size(), 2U);
}

struct Fehlschlag {
    const char* name;
    std::function<void(KabelWelt&)> macht;
    std::string grund;
    std::string hinweis; ///< nothing: "Volltunnel: " and the reason
};

TEST(Volltunnel, misslungenerStartSchaltetAusAberVergisstDenWunschNicht) {
    const auto skriptfehler = [](int nummer, std::optional<std::string> meldung) {
        return [=](KabelWelt& w) { w.tunnel.skriptfehler = Skriptfehler{false, nummer, meldung}; };
    };
    const Fehlschlag faelle[] = {
        {"abgebrochen", skriptfehler(-128, "Vom Benutzer abgebrochen."), "Abgebrochen",
         "Volltunnel: Passwortdialog abgebrochen — Haken wieder setzen, wenn es losgehen soll; beim nächsten "
         "Start "
         "fragt die App erneut"},
        {"mit Meldung", skriptfehler(-60007, "Keine Berechtigung"), "Keine Berechtigung", ""},
        {"ohne Meldung", skriptfehler(-60007, std::nullopt), "Fehler -60007", ""},
        {"nicht gebaut",
         [](auto& w) {
             w.tunnel.skriptfehler = Skriptfehler{true, 0, std::nullopt};
         },
         "AppleScript nicht gebaut", ""},
        {"Helfer fehlt",
         [](auto& w) { std::filesystem::remove(w.ordner.pfad() + "/Resources/mobilsteg-volltunnel"); },
         "Helfer mobilsteg-volltunnel fehlt im Bundle", ""},
        {"zurückgebaut", [](auto& w) { w.tunnel.zurueckgebaut = " utun belegt\n"; },
         "zurückgebaut — utun belegt", ""},
        {"Grund ist kein Text", [](auto& w) { w.tunnel.zurueckgebaut = "kaputt \xFF"; },
         "Helfer meldet sich nicht (siehe LOG)", ""},
        {"stumm", [](auto& w) { w.tunnel.stumm = true; }, "Helfer meldet sich nicht (siehe LOG)", ""},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        ruesteAus(w);
        fall.macht(w);
        w.starte();
        w.laufeBisSekunde(45);
        std::string grund = fall.grund;
        if (const auto log = grund.find("LOG"); log != std::string::npos)
            grund.replace(log, 3, w.ordner.pfad() + "/heim/Library/Logs/MobilstegVolltunnel.log");
        EXPECT_THAT(w.protokoll(), Contains("Volltunnel nicht gestartet: " + grund));
        EXPECT_EQ(w.zustand().meldung, fall.hinweis.empty() ? "Volltunnel: " + grund : fall.hinweis);
        EXPECT_FALSE(w.zustand().volltunnelAn);
        EXPECT_FALSE(w.zustand().volltunnelLaeuft);
        EXPECT_EQ(gespeichert(w, "volltunnel"), true);
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        EXPECT_LE(w.skripte.size(), 1U) << "not tried again by itself";
    }
}

TEST(Volltunnel, selbstrueckbauWirdBemerktUndBleibtAus) {
    for (const std::string geschrieben : {"", "kein Text \xFF", " kein Netz \n"}) {
        const std::string grund = geschrieben.ends_with('\n') ? "kein Netz" : "";
        KabelWelt w;
        mitTunnel(w);
        w.helferBautZurueck(geschrieben);
        w.laufeBisSekunde(3.5);
        EXPECT_FALSE(w.zustand().volltunnelLaeuft);
        EXPECT_FALSE(w.zustand().volltunnelAn);
        EXPECT_EQ(gespeichert(w, "volltunnel"), false);
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
    KabelWelt w;
    ruesteAus(w);
    w.tunnel.bisLaeuft = 39900ms;
    w.starte();
    w.laufeBisSekunde(5);
    schreibeAtomar(w.stoppPfad() + ".fehler", "", Haltbarkeit::fluechtig);
    w.laufeBisSekunde(40);
    EXPECT_FALSE(w.zustand().volltunnelLaeuft);
    w.laufeBisSekunde(41);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
}

TEST(Volltunnel, ohneProxyGiltDerDienstDerStandardroute) {
    for (const std::string dienst : {"USB LAN", "Wi-Fi"}) {
        KabelWelt w;
        ruesteAus(w);
        w.einstellungen.werte["proxy.automatisch"] = false;
        w.schnittstelle = "en7";
        if (dienst == "Wi-Fi")
            w.dienste.clear(); // whoever knows no service guesses
        w.starte();
        w.laufeBisSekunde(3);
        EXPECT_THAT(w.skripte, ElementsAre(HasSubstr("-dienst '" + dienst + "' ")));
        EXPECT_TRUE(w.zustand().volltunnelLaeuft && w.socksAn.empty());
    }
}

TEST(Volltunnel, ohneTunnelWirdDieArtNurGespeichert) {
    KabelWelt w;
    w.fahreLos();
    w.haupt.sync([&] {
        w.kabel->setzeVpnDurch(true);
        w.kabel->setzeNurVPN(true);
    });
    w.laufeBisSekunde(10);
    EXPECT_TRUE(gespeichert(w, "vpnDurch").value_or(false) && gespeichert(w, "nurVPN").value_or(false));
    EXPECT_TRUE(w.zustand().vpnDurch && w.zustand().nurVPN && w.skripte.empty());
}

TEST(Volltunnel, geaenderteArtStartetNeu) {
    KabelWelt w;
    mitTunnel(w);
    w.haupt.sync([&] { w.kabel->setzeVpnDurch(true); });
    w.laufeBisSekunde(6);
    w.haupt.sync([&] { w.kabel->setzeNurVPN(true); });
    w.laufeBisSekunde(10);
    EXPECT_THAT(w.skripte, ElementsAre(Not(HasSubstr("-durch")), HasSubstr(" -vpn-durch </dev/null"),
                                       HasSubstr(" -nur-vpn </dev/null")));
    EXPECT_THAT(w.protokoll(),
                Contains("Volltunnel läuft: Standardroute des Mac geht durchs Handy (VPNs durch das Handy)"));
    EXPECT_THAT(w.protokoll(),
                Contains("Volltunnel läuft: nur VPN-Server fahren durchs Handy, Standardroute bleibt"));
    EXPECT_EQ(w.meisteHelfer, 1);
    EXPECT_EQ(w.helfer, 1);
    EXPECT_EQ(gespeichert(w, "nurVPN"), true);
}

TEST(Volltunnel, einAlterFehlerSchadetNichtUndEinWaisenhelferWirdBeendet) {
    KabelWelt w;
    ruesteAus(w);
    legeOrdnerAn(w.stoppPfad());
    schreibeAtomar(w.stoppPfad() + ".fehler", "von gestern", Haltbarkeit::fluechtig);
    schreibeAtomar(w.stoppPfad(), "", Haltbarkeit::fluechtig);
    w.starte();
    w.laufeBisSekunde(3);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);

    // Killed, and started again while its helper still runs.
    Kabel* const alter = w.kabel.release();
    const auto stopps = w.welt.jetzt();
    w.einstellungen.werte["volltunnel"] = false;
    w.starte();
    w.welt.laufe(500ms);
    EXPECT_EQ(w.helfer, 0);
    EXPECT_LT(stopps, w.welt.jetzt());
    w.welt.beende();
    delete alter;
}

TEST(Volltunnel, einHelferDerGehtBevorWirVonIhmHoerenFragtNichtEndlos) {
    KabelWelt w;
    ruesteAus(w);
    w.tunnel.bisLaeuft = 100ms;
    w.starte();
    w.laufeBisSekunde(0.21);
    w.q->async([&] { w.welt.uhr().schlafe(5s); }); // the work queue is busy when the news comes
    w.laufeBisSekunde(2);
    ASSERT_EQ(w.helfer, 1);
    w.helferBautZurueck("kein Netz");
    w.laufeBisSekunde(60);
    EXPECT_EQ(w.skripte.size(), 1U);
    EXPECT_EQ(w.zustand().meldung, "Volltunnel hat sich zurückgebaut: kein Netz");
    EXPECT_EQ(gespeichert(w, "volltunnel"), false);
}

TEST(Volltunnel, nachEinemTotenHelferStartetDerNaechsteVonSelbst) {
    KabelWelt w;
    mitTunnel(w);
    w.helferleben.back().reset(); // killed: its mark stays, and nobody answers
    w.helfer = 0;
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(false); });
    w.welt.laufe(12s); // the request goes unanswered
    EXPECT_FALSE(w.zustand().volltunnelLaeuft);
    w.haupt.sync([&] { w.kabel->setzeVolltunnelAn(true); });
    w.welt.laufe(10s);
    EXPECT_EQ(w.helfer, 0) << "it might still be there";
    w.welt.laufe(40s);
    EXPECT_EQ(w.helfer, 1);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft);
}

TEST(Volltunnel, einToterHelferHaeltDieTakteNichtEndlosAuf) {
    KabelWelt w;
    mitTunnel(w);
    w.helferleben.back().reset();
    w.handys.clear();
    w.welt.laufe(45s);
    w.aufrufe.clear();
    w.welt.laufe(30s);
    EXPECT_EQ(std::count(w.aufrufe.begin(), w.aufrufe.end(), "adb devices -l"), 10);
}

/// The wait for it ends after ten seconds, and the next look comes with the end of a tick.
TEST(Volltunnel, derNeustartKommtAuchNachEinemHelferDerSichZeitLaesst) {
    for (Dauer bisWeg = 9900ms; bisWeg < 14s; bisWeg += 100ms) {
        SCOPED_TRACE(bisWeg / 1ms);
        KabelWelt w;
        w.tunnel.bisWeg = bisWeg;
        mitTunnel(w);
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
    struct Wendung {
        const char* name;
        std::function<void(KabelWelt&)> geschieht;
        bool laeuftAmEnde;
    };
    const Wendung wendungen[] = {
        {"Kabel gezogen", [](auto& w) { w.handys.clear(); }, false},
        {"ausgeschaltet", [](auto& w) { w.haupt.async([&w] { w.kabel->setzeVolltunnelAn(false); }); }, false},
        {"aus und wieder an",
         [](auto& w) {
             w.haupt.async([&w] { w.kabel->setzeVolltunnelAn(false); });
             w.haupt.async([&w] { w.kabel->setzeVolltunnelAn(true); });
         },
         true},
        {"andere Art", [](auto& w) { w.haupt.async([&w] { w.kabel->setzeNurVPN(true); }); }, true},
        {"beendet", [](auto& w) { w.raeumeAuf(); }, false},
    };
    for (const auto& wendung : wendungen) {
        for (std::uint64_t samen = 0; samen < 40; ++samen) {
            SCOPED_TRACE(wendung.name + std::string(", Samen ") + std::to_string(samen));
            KabelWelt w(samen);
            ruesteAus(w);
            w.tunnel.passwort = samen % 2 == 0 ? 5s : 0s;
            w.tunnel.bisLaeuft = std::chrono::milliseconds(300 * (samen % 7));
            w.starte();
            w.laufeBisSekunde(1 + static_cast<double>(samen) / 10);
            wendung.geschieht(w);
            w.welt.laufe(60s);
            EXPECT_EQ(w.helfer, wendung.laeuftAmEnde ? 1 : 0);
            EXPECT_EQ(w.zustand().volltunnelLaeuft, wendung.laeuftAmEnde);
            EXPECT_LE(w.meisteHelfer, 1);
            EXPECT_EQ(w.welt.verklemmte(), 0U);
            if (testing::Test::HasFailure())
                return;
        }
    }
}

TEST(Profil, uebernehmenNimmtWasGespeichertIst) {
    KabelWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.baue();
    ASSERT_TRUE(w.zustand().volltunnelAn && w.zustand().vpnDurch && w.zustand().nurVPN);
    w.haupt.sync([&] { w.kabel->profilUebernehmen(); });
    EXPECT_FALSE(w.zustand().volltunnelAn || w.zustand().vpnDurch || w.zustand().nurVPN)
        << "nothing stored is off";
    EXPECT_EQ(w.einstellungen.text("profil"), "vpn") << "the current one stays, and is stored";
    EXPECT_EQ(gespeichert(w, "nurVPN"), false);
    w.einstellungen.werte = {{"profil", std::string("reise")}, {"vpnDurch", true}};
    w.haupt.sync([&] { w.kabel->profilUebernehmen(); });
    EXPECT_EQ(w.zustand().profil, "reise");
    EXPECT_TRUE(w.zustand().vpnDurch);
}

} // namespace
