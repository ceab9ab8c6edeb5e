// What the controller takes back: at its end, and at the next start after a crash.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

const std::string standdatei = "/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json";

/// The second and the third are in the middle of switching the proxy on, which is on by then.
TEST(Ende, woDerProzessAuchStirbtDerNaechsteStartNimmtAllesVorDemErstenTakt) {
    for (const std::string beim :
         {"adb devices -l", "networksetup -setsocksfirewallproxy Wi-Fi 127.0.0.1 1080",
          "networksetup -setsocksfirewallproxystate Wi-Fi on"}) {
        SCOPED_TRACE(beim);
        HandyWelt w;
        w.einstellungen.werte = {{"volltunnel.erklaert", true}, {"volltunnel", true}};
        w.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
            if (aufruf == beim && aufruf.ends_with(" 1080")) {
                w.socksAn["Wi-Fi"] = true;
                w.socksZiel["Wi-Fi"] = {"127.0.0.1", 1080};
            }
            if (aufruf == beim && w.socksAn["Wi-Fi"])
                w.welt.stirb();
            return std::nullopt;
        };
        w.starteBis(4);
        ASSERT_TRUE(w.socksAn["Wi-Fi"]);
        ASSERT_EQ(w.helfer, beim.starts_with("adb") ? 1 : 0);
        w.stuerzeAb();
        w.bewacht = false;
        w.stattWerkzeug = [&](const std::string& aufruf) {
            EXPECT_TRUE(w.bewacht) << aufruf;
            return std::optional<Ergebnis>();
        };
        const auto rest = w.ordner.lege(standdatei + ".neu-x", "a file half written");
        w.starte();
        w.welt.laufe(150ms);
        EXPECT_FALSE(w.socksAn["Wi-Fi"]);
        EXPECT_EQ(w.helfer, 0);
        w.welt.laufe(2s);
        EXPECT_FALSE(std::filesystem::exists(rest));
    }
}

/// The tool of a run that died may end its work only after our first look.
struct SpaeteWelt : HandyWelt {
    SpaeteWelt() {
        einstellungen.werte["proxy.ungewiss"] = "USB LAN\n";
        starteBis(1);
        socksAn["USB LAN"] = true;
        socksZiel["USB LAN"] = {"127.0.0.1", 1080};
    }
};

TEST(Ende, derZweiteBlickSagtWasErNichtWegnehmenKann) {
    SpaeteWelt w;
    w.networksetupFehler = "gesperrt";
    w.laufeBisSekunde(7);
    EXPECT_THAT(w.protokoll(), Contains("System-Proxy nicht entfernt von USB LAN: gesperrt").Times(1));
    w.networksetupFehler.clear();
    w.raeumeAuf();
    EXPECT_FALSE(w.socksAn["USB LAN"]);
}

TEST(Ende, aufraeumenNimmtAllesZurueckUndLaesstNichtsMehrZu) {
    KabelWelt w;
    w.einstellungen.werte["volltunnel.erklaert"] = true;
    w.belegtePorts = {8080};
    w.fahreLos();
    w.aufrufe.clear();
    w.raeumeAuf();
    w.raeumeAuf();
    EXPECT_EQ(w.zustand().phase.text() + w.zustand().austritt + w.zustand().klasse, "Beendet");
    EXPECT_FALSE(w.bewacht);
    EXPECT_THAT(w.aufrufe, ElementsAre("networksetup -setsocksfirewallproxystate Wi-Fi off",
                                       "adb -s R5CT1 forward --remove tcp:1080",
                                       "adb -s R5CT1 forward --remove tcp:18080"));
    // The process may still live for a tick or a click.
    w.bediene([](Kabel& k) {
        k.proxyUmschalten();
        k.setzeVolltunnelAn(true);
    });
    w.welt.laufe(10s);
    EXPECT_EQ(w.aufrufe.size(), 3U);
    EXPECT_EQ(w.protokoll().back(), "Beendet");
    EXPECT_THAT(w.ordner.lies(standdatei),
                AllOf(HasSubstr(R"("faehrt": false)"), HasSubstr(R"("phase": "Beendet")"),
                      HasSubstr(R"("proxy_gesetzt": false)"), HasSubstr(R"("austritt": "")")));
    EXPECT_THAT(w.skripte, IsEmpty());
}

/// Its own queue may hang in a tool for ever.
TEST(Ende, imNotfallGehtDerProxyAuchOhneDenRestWeg) {
    SpaeteWelt w;
    w.kabel->nimmProxyNotfallsWeg();
    EXPECT_EQ(w.einstellungen.text("proxy.ungewiss"), "USB LAN\n") << "its tool may be the one that hangs";
    EXPECT_FALSE(w.socksAn["USB LAN"] || w.socksAn["Wi-Fi"]);
    const auto zeilen = w.protokoll();
    EXPECT_THAT(std::vector(zeilen.end() - 3, zeilen.end()),
                ElementsAre("Das Aufräumen kommt nicht voran -- schalte nur den System-Proxy aus",
                            "System-Proxy entfernt von Wi-Fi", "Beendet"));
    EXPECT_THAT(w.ordner.lies(standdatei),
                AllOf(HasSubstr(R"("phase": "Beendet")"), HasSubstr(R"("proxy_gesetzt": false)")));
}

/// A call that was cut off at its limit may have done its work, or none.
TEST(Ende, einAndererPortWirdNichtVergessenWennAdbHaengt) {
    for (const std::string haengt : {"forward tcp:18080 tcp:8080", "forward --remove tcp:18080"}) {
        HandyWelt w;
        w.belegtePorts = {8080};
        w.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
            if (!aufruf.ends_with(haengt))
                return std::nullopt;
            w.forwards[18080] = "R5CT1";
            return Ergebnis{15, "", ""};
        };
        w.starteBis(1);
        const auto handys = std::exchange(w.handys, {});
        w.laufeBisSekunde(3.5); // adb does not list the phone; the forwards stand
        w.raeumeAuf();
        EXPECT_FALSE(w.forwards.contains(1080));
        w.stattWerkzeug = nullptr;
        w.belegtePorts.clear();
        w.handys = handys;
        w.starte(); // the next run needs no other port
        w.welt.laufe(1s);
        EXPECT_FALSE(w.forwards.contains(18080)) << haengt;
    }
}

} // namespace
