// The panel as a tree: what it shows for which state, and what its controls do.

#include "ansicht/Inhalt.hpp"

#include "ansicht/Ausfuehrung.hpp"
#include "ansicht/Tafel.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

/// The tree in short: what a reader sees, without the dividers.
std::vector<std::string> kurzform(const Baum& baum) {
    struct {
        std::vector<std::string> zeilen;
        void operator()(const Kopf& k) { zeilen.push_back("# " + k.titel); }
        void operator()(const Satz& s) { zeilen.push_back(s.text); }
        void operator()(const Trenner&) {}
        void operator()(const Zeile& z) { zeilen.push_back(z.bezeichnung + ": " + z.wert); }
        void operator()(const Symbolzeile& s) {
            zeilen.push_back(s.symbol + " " + s.text + " | " + s.zusatz);
        }
        void operator()(const Schalter& s) { zeilen.push_back((s.an ? "[x] " : "[ ] ") + s.text); }
        void operator()(const Knopf& k) { zeilen.push_back("<" + k.text + ">"); }
        void operator()(const Wahl& w) { zeilen.push_back(w.bezeichnung + "=" + w.gewaehlt); }
        void operator()(const Reihe& r) {
            for (const auto& teil : r.teile)
                std::visit(*this, teil);
        }
    } sammler;
    for (const auto& element : baum)
        std::visit(sammler, element);
    return sammler.zeilen;
}

Zustand fahrend() {
    Zustand z;
    z.phase = Phase::Art::faehrt;
    z.handy = "Samsung Galaxy S23";
    z.klasse = "1. Klasse";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    z.menge = "12,4 MB · 350 kB/s";
    return z;
}

TEST(Inhalt, reise) {
    EXPECT_THAT(kurzform(inhalt(Zustand{}, false)),
                ElementsAre("# Mobilsteg Bordlotse", "Starte …", "Handy: —", "Klasse: —", "Durchs Handy: —",
                            "[ ] Expertenmodus", "<Beenden>"));
    Zustand z = fahrend();
    z.notlage = true;
    z.rettung = "1 Funkloch überstanden · 0 Verbindungen gerettet";
    z.volltunnelLaeuft = true;
    z.meldung = "Erst muss das Handy freigeben.";
    EXPECT_THAT(kurzform(inhalt(z, false)),
                ElementsAre("# Mobilsteg Bordlotse", "Fährt mit", "Handy: Samsung Galaxy S23",
                            "Klasse: 1. Klasse · Notlage", "Gleis 1: WLAN · 42 ms",
                            "Gleis 2: Mobilfunk · weg", "Durchs Handy: 12,4 MB · 350 kB/s",
                            "checkmark.shield.fill 1 Funkloch überstanden · 0 Verbindungen gerettet | ",
                            "Volltunnel: aktiv — alles fährt mit", "Erst muss das Handy freigeben.",
                            "[ ] Expertenmodus", "<Beenden>"));
    z.klasse = "";
    EXPECT_THAT(kurzform(inhalt(z, false)), Contains("Klasse: —")) << "no emergency without a class";
}

TEST(Inhalt, experte) {
    Zustand z = fahrend();
    z.experte = true;
    z.proxyGesetzt = true;
    z.austritt = "203.0.113.7";
    z.durch = {"Safari (3)", "curl (1)"};
    z.vorbei = {"Mail (2)"};
    z.volltunnelLaeuft = true;
    const auto zeilen = kurzform(inhalt(z, false));
    const std::vector<std::string> block(zeilen.begin() + 7, zeilen.end());
    EXPECT_THAT(
        block, ElementsAre("Proxy am Mac: 127.0.0.1:1080 an", "Draußen als: 203.0.113.7",
                           "Durch Proxy: Safari (3), curl (1)", "Am Proxy vorbei: Mail (2)",
                           "Diese Programme beachten den System-Proxy nicht oder halten alte Verbindungen. "
                           "Browser einmal neu "
                           "starten; Terminal: ALL_PROXY=socks5://127.0.0.1:1080",
                           "[x] System-Proxy automatisch setzen", "<Proxy entfernen>",
                           "[ ] Volltunnel: alles vom Mac durchs Handy (Admin-Passwort)",
                           "Volltunnel: aktiv — Standardroute über utun",
                           "[ ] VPNs durch das Handy (Tailscale, Firmen-VPN) — sonst direkt",
                           "[ ] Nur VPNs durchs Handy (Standardroute bleibt, Rest direkt)",
                           "An: VPN-Clients fahren gebündelt mit und überleben Funklöcher; Screen Sharing "
                           "über Tailscale läuft dann "
                           "auch durchs Handy. Aus: Tailscale & Co. gehen direkt über das WLAN.",
                           "Protokoll: ~/Library/Logs/MobilstegBordlotse.log · Zustand: 127.0.0.1:1081/stand",
                           "Profil=reise", "[x] Expertenmodus", "<Beenden>"));
    z.proxyGesetzt = false;
    z.austritt = "";
    z.volltunnelLaeuft = false;
    z.durch = z.vorbei = {};
    EXPECT_THAT(kurzform(inhalt(z, false)), IsSupersetOf({"Proxy am Mac: aus", "Draußen als: —",
                                                          "<Proxy jetzt setzen>", "Volltunnel: aus"}));
}

TEST(Inhalt, vpn) {
    Zustand z;
    z.profil = "vpn";
    z.nurVPN = true;
    EXPECT_THAT(kurzform(inhalt(z, false)),
                ElementsAre("# Mobilsteg Bordlotse · VPN", "Ihr VPN übersteht Funklöcher", "Starte …",
                            "Kein VPN verbunden.", "Handy: —", "Klasse: —", "Durchs Handy: —",
                            "[ ] Funkloch-Schutz (Volltunnel, Admin-Passwort)",
                            "[x] Nur den VPN durchs Handy — alles andere direkt", "[ ] Expertenmodus",
                            "<Beenden>"));
    EXPECT_EQ(std::get<Kopf>(inhalt(Zustand{}, true).front()).titel, "Mobilsteg VPN-Lotse");
    z.experte = true;
    const auto mitExperte = kurzform(inhalt(z, true));
    EXPECT_THAT(mitExperte, Not(Contains("[ ] Funkloch-Schutz (Volltunnel, Admin-Passwort)")));
    EXPECT_THAT(mitExperte, Contains("Kein VPN verbunden."));
}

TEST(Inhalt, vpnBlock) {
    const auto zeilen = [](std::vector<std::string> gesichert, std::vector<std::string> offen, bool tunnel,
                           const Phase& phase = Phase::Art::faehrt) {
        Zustand z;
        z.vpnsGesichert = std::move(gesichert);
        z.vpnsOffen = std::move(offen);
        z.volltunnelLaeuft = tunnel;
        z.phase = phase;
        return kurzform(vpnBlock(z));
    };
    const std::string note = "Fällt WLAN oder Mobilfunk aus, läuft der VPN auf dem anderen Weg weiter.";
    const std::string keiner =
        "Kein VPN verbunden — verbinden Sie Ihren VPN wie gewohnt, er fährt dann durch das Handy.";
    EXPECT_THAT(zeilen({}, {}, true), ElementsAre(keiner));
    EXPECT_THAT(zeilen({"Firma · 10.1.2.3"}, {}, true),
                ElementsAre("lock.shield.fill Firma · 10.1.2.3 | gesichert", note));
    EXPECT_THAT(zeilen({"A", "A"}, {"B", "C", "B"}, false),
                ElementsAre("lock.shield.fill A | gesichert", note, "shield.slash B | ungesichert",
                            "shield.slash C | ungesichert",
                            "Funkloch-Schutz einschalten, dann fährt der VPN durch das Handy."));
    EXPECT_THAT(zeilen({}, {"B"}, true), ElementsAre("shield.slash B | noch nicht gesichert"));
    EXPECT_THAT(zeilen({}, {"B"}, false, Phase::proxyFehler("x")),
                ElementsAre("shield.slash B | ungesichert",
                            "Sobald das Handy am Kabel freigibt, fährt der VPN durch das Handy."));
}

TEST(Inhalt, punktFolgtDerPhase) {
    using Art = Phase::Art;
    const std::pair<Phase, Farbe> faelle[] = {
        {Art::start, Farbe::gelb},           {Art::wartetAufHandy, Farbe::gelb},
        {Art::pruefung, Farbe::gelb},        {Art::faehrt, Farbe::gruen},
        {Art::keinAdb, Farbe::rot},          {Art::keinHandy, Farbe::rot},
        {Art::nichtAutorisiert, Farbe::rot}, {Art::weitergabeAus, Farbe::rot},
        {Art::abgelehnt, Farbe::rot},        {Phase::proxyFehler("Fährt mit"), Farbe::rot}};
    for (const auto& [phase, farbe] : faelle) {
        Zustand z;
        z.phase = phase;
        EXPECT_EQ(std::get<Kopf>(inhalt(z, false).front()).punkt, farbe) << phase.text();
    }
}

TEST(Tafel, zeichnetNurWennSichDerBaumAendert) {
    KabelWelt w;
    w.baue();
    int gezeichnet = 0;
    const Tafel tafel(w.kabel->speicher(), false, [&](const Baum&) { ++gezeichnet; });
    EXPECT_EQ(gezeichnet, 1);
    w.kabel->speicher().veroeffentliche([](Zustand& z) { z.kurz = "1."; }); // the menu bar's, not the panel's
    w.welt.laufe({});
    EXPECT_EQ(gezeichnet, 1);
    w.kabel->speicher().veroeffentliche([](Zustand& z) { z.meldung = "neu"; });
    w.welt.laufe({});
    EXPECT_EQ(gezeichnet, 2);
}

TEST(Ausfuehrung, jederGezeigteSchalterWirkt) {
    KabelWelt w;
    w.einstellungen.werte["volltunnel.erklaert"] = true;
    w.baue();
    int beendet = 0;
    Ausfuehrung pult(*w.kabel, [&] { ++beendet; });
    w.haupt.sync([&] { pult.bediene({Bedienung::experte, "an"}); });
    const auto liste = angebote(inhalt(w.zustand(), false));
    EXPECT_EQ(liste.size(), 8U);
    for (const auto& angebot : liste) {
        const auto vorher = w.zustand();
        w.haupt.sync([&] { pult.bediene(angebot.aktion); });
        w.welt.laufe({});
        EXPECT_TRUE(!(w.zustand() == vorher) || beendet == 1) << angebot.text;
    }
    EXPECT_EQ(beendet, 1);
}

} // namespace
