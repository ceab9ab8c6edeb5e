// The full tunnel through the whole controller: wish, start, loss, and everything that can go wrong with it.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

const std::string stopp = "/heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp";

/// A Mac whose user knows the explanation and wants the tunnel, with a willing phone on the cable.
struct TunnelWelt : HandyWelt {
    TunnelWelt() { einstellungen.werte = {{"volltunnel.erklaert", true}, {"volltunnel", true}}; }
    void starteMitTunnel() {
        starteBis(2.5);
        ASSERT_TRUE(zustand().volltunnelLaeuft);
    }
    [[nodiscard]] std::optional<bool> gespeichert() const { return einstellungen.flagge("volltunnel"); }
};

TEST(Volltunnel, folgtDemWunschUndDerVerbindung) {
    TunnelWelt w;
    w.ordner.lege(stopp + ".fehler", "von gestern");
    w.ordner.lege(stopp, "");
    w.starteMitTunnel();
    EXPECT_THAT(w.skripte, ElementsAre(HasSubstr("-dienst 'Wi-Fi' ")));
    EXPECT_THAT(w.protokoll().back(),
                "Volltunnel läuft: Standardroute des Mac geht durchs Handy (Tailscale/VPNs direkt)");
    EXPECT_THAT(w.protokoll(), Contains("Volltunnel: starte (Admin-Passwort)…"));
    w.handys.clear();
    w.laufeBisSekunde(5);
    EXPECT_EQ(w.helfer, 0);
    EXPECT_TRUE(!w.zustand().volltunnelLaeuft && w.zustand().volltunnelAn) << "the wish stays";
    const auto zeilen = w.protokoll();
    EXPECT_THAT(
        std::vector(zeilen.end() - 2, zeilen.end()),
        ElementsAre("Volltunnel beendet, Routen und DNS zurückgebaut", "System-Proxy entfernt von Wi-Fi"));
    w.handys = {Modellhandy{}};
    w.laufeBisSekunde(12);
    EXPECT_TRUE(w.zustand().volltunnelLaeuft) << "it comes back with the link";
    w.raeumeAuf();
    EXPECT_EQ(w.helfer, 0);
    EXPECT_THAT(w.forwards, IsEmpty());
}

TEST(Volltunnel, erklaertSichEinmal) {
    TunnelWelt w;
    w.einstellungen.werte.clear();
    w.starteBis(1);
    w.bediene([](Kabel& k) { k.setzeVolltunnelAn(false); }); // asks nothing
    w.antworten = {1, 0};                                    // one more question would fail the test
    w.bediene([](Kabel& k) { k.setzeVolltunnelAn(true); });
    EXPECT_FALSE(w.zustand().volltunnelAn);
    EXPECT_EQ(w.gespeichert(), false);
    w.laufeBisSekunde(4);
    EXPECT_TRUE(w.skripte.empty());
    for (double sekunde = 4; const bool an : {true, false, true}) {
        w.bediene([an](Kabel& k) { k.setzeVolltunnelAn(an); });
        EXPECT_EQ(w.gespeichert(), an);
        w.laufeBisSekunde(sekunde += 3);
        EXPECT_EQ(w.zustand().volltunnelLaeuft, an);
    }
    EXPECT_TRUE(w.antworten.empty());
}

TEST(Volltunnel, misslungenerStartSchaltetAusAberVergisstDenWunschNicht) {
    const std::pair<std::optional<Skriptfehler>, std::string> faelle[] = {
        {Skriptfehler{false, -128, "Vom Benutzer abgebrochen."}, "Abgebrochen"},
        {Skriptfehler{false, -60007, "Keine Berechtigung"}, "Keine Berechtigung"},
        {Skriptfehler{false, -60007, std::nullopt}, "Fehler -60007"},
        {Skriptfehler{true, 0, std::nullopt}, "AppleScript nicht gebaut"},
        {std::nullopt, "zurückgebaut — utun belegt"},
        {std::nullopt, "Helfer meldet sich nicht (siehe "},
        {std::nullopt, "Helfer mobilsteg-volltunnel fehlt im Bundle"},
    };
    for (const auto& [fehler, grund] : faelle) {
        SCOPED_TRACE(grund);
        TunnelWelt w;
        w.tunnel.skriptfehler = fehler;
        w.tunnel.stumm = grund.starts_with("Helfer meldet");
        if (grund.ends_with("belegt"))
            w.tunnel.zurueckgebaut = " utun belegt\n";
        if (grund.ends_with("Bundle"))
            std::filesystem::remove(w.ordner.pfad() + "/Resources/mobilsteg-volltunnel");
        w.starteBis(45);
        EXPECT_THAT(w.protokoll(), Contains(StartsWith("Volltunnel nicht gestartet: " + grund)));
        EXPECT_THAT(w.zustand().meldung,
                    StartsWith("Volltunnel: " + (fehler && fehler->nummer == -128
                                                     ? "Passwortdialog abgebrochen — Haken wieder setzen"
                                                     : grund)));
        EXPECT_FALSE(w.zustand().volltunnelAn || w.zustand().volltunnelLaeuft);
        EXPECT_EQ(w.gespeichert(), true);
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        EXPECT_LE(w.skripte.size(), 1U) << "not tried again by itself";
        w.tunnel = {};
        w.ordner.lege("/Resources/mobilsteg-volltunnel", "#!", true);
        w.bediene([](Kabel& k) { k.setzeVolltunnelAn(true); });
        w.welt.laufe(3s);
        EXPECT_TRUE(w.zustand().volltunnelLaeuft && w.zustand().meldung.empty());
    }
}

TEST(Volltunnel, selbstrueckbauWirdBemerktUndBleibtAus) {
    const std::tuple<bool, std::string, std::string, std::string> faelle[] = {
        {false, "kein Text \xFF", "", " (kein Netz durch den Tunnel)"},
        {false, " kein Netz \n", " — kein Netz", ": kein Netz"},
        {true, "kein Netz", " — kein Netz", ": kein Netz"}};
    for (const auto& [bevorWirVonIhmHoeren, geschrieben, zeile, meldung] : faelle) {
        TunnelWelt w;
        w.tunnel.bisLaeuft = 100ms;
        w.starteBis(0.21);
        w.q->async([&, dauer = bevorWirVonIhmHoeren ? 5s : 0s] { w.welt.uhr().schlafe(dauer); });
        w.laufeBisSekunde(2);
        EXPECT_EQ(w.zustand().volltunnelLaeuft, !bevorWirVonIhmHoeren);
        w.helferBautZurueck(geschrieben);
        w.laufeBisSekunde(8.5);
        EXPECT_FALSE(w.zustand().volltunnelLaeuft || w.zustand().volltunnelAn);
        EXPECT_EQ(w.gespeichert(), false);
        EXPECT_EQ(w.zustand().meldung, "Volltunnel hat sich zurückgebaut" + meldung);
        w.laufeBisSekunde(60);
        EXPECT_THAT(w.protokoll(), Contains("Volltunnel: Helfer hat sich zurückgebaut" + zeile).Times(1));
        EXPECT_EQ(w.skripte.size(), 1U);
    }
}

TEST(Volltunnel, wartetVierzigSekundenUndEinLeererGrundIstKeiner) {
    for (const Dauer bisLaeuft : {39900ms, 40100ms}) {
        const bool rechtzeitig = bisLaeuft < 40s;
        TunnelWelt w;
        w.tunnel.bisLaeuft = bisLaeuft;
        w.starteBis(5);
        w.ordner.lege(stopp + ".fehler", "");
        w.laufeBisSekunde(41.5);
        EXPECT_EQ(w.zustand().volltunnelLaeuft, rechtzeitig);
        w.laufeBisSekunde(45);
        EXPECT_EQ(w.helfer, rechtzeitig ? 1 : 0) << "one that comes up too late goes again";
    }
}

TEST(Volltunnel, geaenderteArtStartetNeu) {
    TunnelWelt w;
    w.einstellungen.werte["proxy.automatisch"] = false; // so it goes by the default route
    w.schnittstelle = "en7";
    w.starteMitTunnel();
    w.bediene([](Kabel& k) { k.setzeVpnDurch(true); });
    w.laufeBisSekunde(6);
    w.bediene([](Kabel& k) { k.setzeNurVPN(true); });
    w.laufeBisSekunde(10);
    EXPECT_TRUE(w.einstellungen.flagge("vpnDurch") == true && w.einstellungen.flagge("nurVPN") == true);
    EXPECT_TRUE(w.helfer == 1 && w.meisteHelfer == 1);
    EXPECT_THAT(
        w.skripte,
        ElementsAre(HasSubstr("-dienst 'USB LAN' -wache " + std::to_string(::getpid()) + " </dev/null"),
                    HasSubstr(" -vpn-durch </dev/null"), HasSubstr(" -nur-vpn </dev/null")));
    EXPECT_THAT(
        w.protokoll(),
        IsSupersetOf({"Volltunnel läuft: Standardroute des Mac geht durchs Handy (VPNs durch das Handy)",
                      "Volltunnel läuft: nur VPN-Server fahren durchs Handy, Standardroute bleibt"}));
}

/// The stop waits ten seconds for it, and the new start ten more.
TEST(Volltunnel, derNeustartKommtAuchNachEinemHelferDerSichZeitLaesst) {
    for (Dauer bisWeg = 9900ms; bisWeg < 14s; bisWeg += 100ms) {
        TunnelWelt w;
        w.tunnel.bisWeg = bisWeg;
        w.starteMitTunnel();
        w.dauerWerkzeug = 300ms;
        w.haupt.sync([&] { w.kabel->setzeVpnDurch(true); });
        w.welt.laufe(30s);
        EXPECT_TRUE(w.skripte.size() == 2 && w.meisteHelfer == 1 && w.zustand().volltunnelLaeuft)
            << bisWeg / 1ms;
    }
}

TEST(Volltunnel, wasSichImPasswortdialogAendertGiltDanach) {
    const std::tuple<std::function<void(KabelWelt&)>, std::size_t, int> faelle[] = {
        {[](auto& w) { w.haupt.async([&w] { w.kabel->setzeVolltunnelAn(false); }); }, 1, 0},
        {[](auto& w) { w.haupt.async([&w] { w.kabel->setzeNurVPN(true); }); }, 2, 1},
        {[](auto& w) { w.raeumeAuf(); }, 1, 0}};
    TunnelWelt davor; // a click while the tools run, just before the dialog
    davor.dauerWerkzeug = 10ms;
    davor.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
        if (aufruf.ends_with("Wi-Fi on"))
            davor.haupt.async([&] { davor.kabel->setzeVolltunnelAn(false); });
        return std::nullopt;
    };
    davor.starteBis(4);
    EXPECT_THAT(davor.skripte, IsEmpty());
    davor.bediene([](Kabel& k) { k.setzeVolltunnelAn(true); });
    davor.welt.laufe(3s);
    EXPECT_EQ(davor.helfer, 1);
    for (const auto& [geschieht, skripte, helfer] : faelle) {
        TunnelWelt w;
        w.tunnel.passwort = 5s;
        w.starteBis(3);
        geschieht(w);
        w.welt.laufe(20s);
        EXPECT_EQ(w.helfer, helfer);
        EXPECT_EQ(w.skripte.size(), skripte);
        EXPECT_EQ(w.meisteHelfer, 1);
    }
}

} // namespace
