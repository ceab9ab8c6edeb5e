// What is said to tools, the phone and the service behind it, and what is made of their answers.

#include "handy/Handy.hpp"

#include "handy/Adb.hpp"
#include "handy/Adbserver.hpp"
#include "tests/hilfe/Gegenstelle.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gmock/gmock.h>

#include <csignal>

using namespace mobilsteg;
using namespace testing;

namespace {

using Faelle = std::map<std::string, std::string>; // what comes, what is made of it

TEST(Adb, nenntDasHandyWieEsVerkauftWird) {
    for (const auto& [modell, soll] : Faelle{{"Pixel_8_Pro", "Google Pixel-8-Pro"},
                                             {"sm-s911b", "Samsung Galaxy S23"},
                                             {"SM-S91/1B", "Samsung SM-S91/1B"},
                                             {"SM-\u00A0S911", "Samsung Galaxy S23"},
                                             {"SM-\u00A0\u00A0S911", "Samsung SM-\u00A0\u00A0S911"}})
        EXPECT_EQ(Adb::lies("List of devices attached\nallein\nX device usb:1-1 model:" + modell),
                  (std::vector<Adb::Geraet>{{"X", "device", soll, true}}));
}

TEST(Adb, suchtDerReiheNach) {
    const Ordner ordner;
    const Adb adb(nullptr, {ordner.pfad() + "/heim", ordner.pfad()}, ordner.pfad() + "/Resources");
    const auto pfade = {"/Resources/adb", "/opt/homebrew/bin/adb",
                        "/heim/Library/Android/sdk/platform-tools/adb", "/usr/local/bin/adb",
                        "/opt/homebrew/share/android-commandlinetools/platform-tools/adb"};
    for (const auto* pfad : pfade)
        ordner.lege(pfad, "", true);
    for (const auto* pfad : pfade) {
        EXPECT_EQ(adb.finden(), ordner.pfad() + pfad);
        std::filesystem::remove(ordner.pfad() + pfad);
    }
}

TEST(Adb, kenntDenPortSeinesServers) {
    const auto port = [](const char* eigener, const char* andere = "") {
        const char* namen[] = {"ANDROID_ADB_SERVER_PORT", "ADB_SERVER_SOCKET", "ANDROID_ADB_SERVER_ADDRESS"};
        for (const char* name : namen)
            ::unsetenv(name);
        if (eigener != nullptr)
            ::setenv(namen[0], eigener, 1);
        if (*andere != '\0')
            ::setenv(andere, "woanders", 1);
        const auto gelesen = adbServerport();
        for (const char* name : namen)
            ::unsetenv(name);
        return gelesen.value_or(0);
    };
    EXPECT_EQ(port(nullptr), 5037);
    EXPECT_EQ(port(""), 5037);
    EXPECT_EQ(port("15037"), 15037);
    EXPECT_EQ(port("65536") + port("15037x") + port("x"), 0) << "adb would not use it either";
    EXPECT_EQ(port("15037", "ADB_SERVER_SOCKET") + port("15037", "ANDROID_ADB_SERVER_ADDRESS"), 0)
        << "not a port of this Mac";
}

const std::string voll = R"({"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","mehr":[{"x":null}],
 "kabel":{"anfrage":null,"gast":{"id":"a1","name":"Mac","neu":1}},
 "status":{"paths":[{"iface":"wifi","healthy":true,"rtt_ms":42,"rtt_ruhe_ms":12.5},
                    {"iface":"cellular","healthy":false,"rtt_ms":-1e2}],
  "alles":false,"notlage":true,"notlage_grund":"Tunnel",
  "guests":[{"IP":"kabel:Mac","BytesUp":9223372036854775807,"BytesDown":-9223372036854775808}],
  "funkloecher":3,"gerettet":2.0}})";

TEST(Antwort, liestJedesFeldUndErfindetNichts) {
    const auto fehlt = Eq(std::nullopt);
    EXPECT_THAT(
        Antwort::ausJson(voll).value(),
        FieldsAre(
            "mobilsteg", 1080, "erlaubt", FieldsAre(fehlt, Optional(FieldsAre("a1", "Mac"))),
            Optional(FieldsAre(
                ElementsAre(FieldsAre("wifi", true, 42, 12.5), FieldsAre("cellular", false, -100, 0)), false,
                true, "Tunnel", ElementsAre(FieldsAre("kabel:Mac", INT64_MAX, INT64_MIN)), 3, 2))));
    const std::string knapp = R"({"app":"","proxy_port":0,"kabel":{},"status":)";
    EXPECT_THAT(Antwort::ausJson(knapp + "null}").value(),
                FieldsAre("", 0, fehlt, FieldsAre(fehlt, fehlt), fehlt));
    EXPECT_THAT(Antwort::ausJson(knapp + "{}}")->status,
                Optional(FieldsAre(IsEmpty(), false, false, "", IsEmpty(), 0, 0)));
}

TEST(Antwort, ganzeZahlenWieSieGeschriebenSind) {
    const auto port = [](const std::string& zahl) {
        const auto a = Antwort::ausJson(R"({"app":"","kabel":{},"proxy_port":)" + zahl + "}");
        return a ? std::to_string(a->proxy_port) : "-";
    };
    for (const auto* zahl : {"1080.0", "1.08e+3", "108000E-2", "0.00108e6"})
        EXPECT_EQ(port(zahl), "1080") << zahl;
    EXPECT_EQ(port("-0.0e-99") + port("1e18"), "01000000000000000000");
    // No double is one of these.
    for (const std::string zahl : {"9007199254740993", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(port(zahl + ".0"), zahl);
    for (const auto* zahl : {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "1080.5",
                             "1.00000000000000000001", "1e-1", "1e19", "1e400", "\"1080\"", "true"})
        EXPECT_EQ(port(zahl), "-") << zahl;
}

TEST(Antwort, einFalschesFeldVerdirbtDasGanze) {
    const auto gilt = [](const std::string& aenderung) {
        const auto pfeil = aenderung.find("->");
        std::string dokument = voll;
        dokument.replace(dokument.find(aenderung.substr(0, pfeil)), pfeil, aenderung.substr(pfeil + 2));
        return Antwort::ausJson(dokument).has_value();
    };
    for (const auto* a :
         {R"("mobilsteg"->null)", "mobilsteg->\xFF", R"("erlaubt"->1)", R"("Mac","neu"->null,"neu")",
          R"("anfrage":null->"anfrage":{})", R"("healthy":true->"healthy":1)", "42->true",
          R"("rtt_ms":42,->)", R"("alles":false->"alles":0)", R"([{"IP"->[null,{"IP")",
          "9223372036854775807->1.5", R"("guests":[->"guests":{},"y":[)", "2.0}}->2.0}"})
        EXPECT_FALSE(gilt(a)) << a;
    for (const auto* a : {R"("erlaubt"->null)", "12.5->null", R"("guests":[->"guests":null,"y":[)"})
        EXPECT_TRUE(gilt(a)) << a;
    for (const std::size_t tiefe : {510U, 511U})
        EXPECT_EQ(gilt("{\"x\":null}->" + std::string(tiefe, '[') + std::string(tiefe, ']')), tiefe == 510);
    EXPECT_FALSE(Antwort::ausJson("[]"));
}

TEST(Antwort, nimmtNichtMehrAlsDasPanelZeigenKann) {
    const std::string pfad = R"({"iface":")" + std::string(201, 'w') + R"(","healthy":true,"rtt_ms":1},)";
    std::string pfade;
    for (int i = 0; i < 17; ++i)
        pfade += pfad;
    pfade.back() = ']';
    EXPECT_THAT(Antwort::ausJson(R"({"app":"","proxy_port":0,"kabel":{},"status":{"paths":[)" + pfade + "}}")
                    ->status->paths,
                AllOf(SizeIs(16), Each(Field(&Pfad::iface, SizeIs(200)))));
}

struct HandyTest : Test {
    Gegenstelle http;
    Handy handy{http, "https://austritt.example/"};
};

TEST_F(HandyTest, glaubtNurErfolgUndNurDerApp) {
    const auto gilt = [&](int status, const std::string& app) {
        http.antwort = HttpErgebnis{status, R"({"app":")" + app + R"(","proxy_port":1080,"kabel":{}})"};
        return handy.anmelden("", "", {}).has_value();
    };
    EXPECT_TRUE(gilt(200, "mobilsteg") && gilt(299, "mobilsteg"));
    EXPECT_FALSE(gilt(199, "mobilsteg") || gilt(300, "mobilsteg") || gilt(200, "Mobilsteg"));
}

TEST_F(HandyTest, fragtNurNachDemAustrittDurchDenProxy) {
    const std::string daten("zeile\n\0\xFF", 8);
    (void)handy.anmelden("1f-2", "Annas „Mac“\xFF", {"vpn.example", "10.0.0.1"});
    (void)handy.bericht("azAZ09 log.ä-_~/:@[`{", daten);
    (void)handy.austrittsIP();
    using enum HttpAnfrage::Weg;
    const std::string api = "http://127.0.0.1:8080/api/";
    EXPECT_THAT(
        http.gesendet,
        ElementsAre(
            FieldsAre(direkt, "POST", api + "kabel", ElementsAre(Pair("Content-Type", "application/json")),
                      R"({"id":"1f-2","name":"Annas „Mac“�","vpn":["vpn.example","10.0.0.1"]})"),
            FieldsAre(direkt, "POST", api + "bericht?name=azAZ09%20log%2E%C3%A4%2D%5F%7E%2F%3A%40%5B%60%7B",
                      ElementsAre(Pair("Content-Type", "text/plain")), daten),
            FieldsAre(durchProxy, "GET", "https://austritt.example/", IsEmpty(), "")));
}

TEST_F(HandyTest, nimmtNurWasEineAdresseSeinKann) {
    const std::string lang(45, '1');
    for (const auto& [koerper, soll] :
         Faelle{{"\u00A0\n\u2028à\u00A0à\u3000\v", "à\u00A0à"}, // à ends like U+00A0
                {lang + "\n", lang},
                {lang + "1", "-"},
                {"10.0.0.1\x7F", "-"},
                {" \n", "-"},
                {"1\n\xFF", "-"}}) {
        http.antwort = HttpErgebnis{200, koerper};
        EXPECT_EQ(handy.austrittsIP().value_or("-"), soll) << koerper;
    }
}

// --- running tools for real: small ones that every system has

Ergebnis skript(const std::string& text, double sekunden = 20) {
    return lauf("/bin/sh", {"-c", text}, sekunden);
}

TEST(Lauf, bringtStatusUndBeideStroemeGetrennt) {
    ::setenv("PROBE", "geerbt", 1);
    for (const auto& [text, soll] : std::map<std::string, Ergebnis>{
             {"printf \"aus $PROBE\"; printf feh >&2; exit 3", {3, "aus geerbt", "feh"}},
             {R"(printf 'a\377b\342\202'; printf '\200' >&2)", {0, "a\uFFFDb\uFFFD", "\uFFFD"}},
             {"printf vorher; kill -9 $$", {9, "vorher", ""}},
             {"exec >&- 2>&-; sleep 0.05; exit 5", {5, "", ""}},
             {"(sleep 0.6; printf spät) 2>&- & printf f", {0, "fspät", ""}}}) // its child holds on
        EXPECT_EQ(skript(text), soll) << text;
    const auto e = skript("for i in 1 2 3; do head -c 200000 /dev/zero >&2; head -c 300000 /dev/zero; done");
    EXPECT_EQ(e.ausgabe.size(), 900'000U);
    EXPECT_EQ(e.fehler.size(), 600'000U);
}

TEST(Lauf, reichtNurDieStandardstroemeWeiter) {
    const Deskriptor unmarkiert(::socket(AF_INET, SOCK_STREAM, 0));
    EXPECT_EQ(lauf("/bin/ls", {"/dev/fd"}, 20).ausgabe, "0\n1\n2\n3\n"); // 3 is the folder it reads
}

TEST(Lauf, sagtWarumEinWerkzeugNichtBeginnt) {
    const Ordner ordner;
    for (const auto& [pfad, grund] :
         Faelle{{"true", "Datei oder Ordner nicht gefunden"}, // PATH is not consulted
                {ordner.pfad(), "Keine Berechtigung"},
                {ordner.lege("/skript", "echo ohne Shell", true), "Kein ausführbares Programm"}})
        EXPECT_EQ(lauf(pfad, {}, 20), (Ergebnis{-1, "", pfad + ": " + grund}));
}

TEST(Lauf, bittetAmLimitUmDasEndeUndErzwingtEsNicht) {
    for (const auto& [text, soll] : std::map<std::string, Ergebnis>{
             {"trap 'printf nachher; exit 4' TERM; while :; do sleep 0.01; done", {4, "nachher", "", true}},
             {"printf halt; kill -STOP $$", {SIGTERM, "halt", "", true}},
             {"trap '' TERM; sleep 2.6; printf fertig; exit 7", {7, "fertig", "", true}},
             {"trap '' TERM; exec >&- 2>&-; sleep 5", {SIGTERM, "", "", true}}}) // nobody waits for this one
        EXPECT_EQ(skript(text, 0.45), soll) << text;
    // One that may not hold anybody up is left behind, and so is who keeps its outputs.
    for (const auto& [text, soll] : std::map<std::string, Ergebnis>{
             {"trap '' TERM; sleep 9", {SIGTERM, "", "/bin/sh: keine Antwort in 0 s", true}},
             {"sleep 9 & printf da", {0, "da", ""}}})
        EXPECT_EQ(laufBefristet({"/bin/sh", "-c", text}, text.starts_with('t') ? 0.45 : 5), soll) << text;
}

TEST(Lauf, gibtDemWerkzeugDieUeblichenSignaleZurueck) {
    sigset_t alle, vorher;
    sigfillset(&alle);
    ::pthread_sigmask(SIG_BLOCK, &alle, &vorher);
    for (const int signal : {SIGPIPE, SIGTERM, SIGINT}) {
        const auto frueher = std::signal(signal, SIG_IGN);
        EXPECT_EQ(skript("kill -" + std::to_string(signal) + " $$; echo lebt"), (Ergebnis{signal, "", ""}));
        std::signal(signal, frueher);
    }
    ::pthread_sigmask(SIG_SETMASK, &vorher, nullptr);
}

TEST(Lauf, beginntNochmalWennEinSignalDerGruppeDenAnfangTraf) {
    const Ordner ordner;
    for (const auto& [erstes, soll] :
         std::map<std::string, Ergebnis>{{"kill -HUP $$", {0, "zweites\n", ""}},
                                         {"kill -KILL $$", {SIGKILL, "", ""}},
                                         {"echo da; kill -HUP $$", {1, "da\n", ""}},
                                         {"exit 1", {1, "", ""}}})
        EXPECT_EQ(lauf("/bin/sh",
                       {"-c", R"([ -e "$0" ] && exec echo zweites; : >"$0"; eval "$1")",
                        ordner.pfad() + "/" + erstes, erstes},
                       20),
                  soll)
            << erstes;
}

TEST(Lauf, kommtMitDescriptormangelZurecht) {
    const Ergebnis mangel{-1, "", "/bin/sh: Zu viele offene Dateien"};
    for (std::size_t frei = 0; frei <= 5; ++frei)
        imEngpass(frei, [&] {
            // Two pipes take four. Without a fifth, the tool's end is asked for instead of announced.
            EXPECT_EQ(skript("echo da; exec >&- 2>&-; sleep 0.02"),
                      frei < 4 ? mangel : (Ergebnis{0, "da\n", ""}))
                << frei;
        });
}

} // namespace
