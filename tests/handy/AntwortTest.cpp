#include "handy/Antwort.hpp"

#include <gtest/gtest.h>

#include <sstream>

using namespace mobilsteg;

namespace {

/// Everything that was read, in one line; "-" when it is no such document.
std::string gelesen(const std::string& json) {
    const auto a = Antwort::ausJson(json);
    if (!a)
        return "-";
    std::ostringstream t;
    t << a->app << '|' << a->proxy_port << '|' << a->zustand.value_or("?");
    for (const auto& gast : {a->kabel.anfrage, a->kabel.gast})
        t << '|' << (gast ? gast->id + "," + gast->name : "?");
    if (const auto& s = a->status) {
        t << '|' << s->alles << s->notlage << s->notlage_grund << ',' << s->funkloecher << ',' << s->gerettet;
        for (const auto& p : s->paths)
            t << '|' << p.iface << p.healthy << ',' << p.rtt_ms << ',' << p.rtt_ruhe_ms;
        for (const auto& g : s->guests)
            t << '|' << g.IP << ',' << g.BytesUp << ',' << g.BytesDown;
    }
    return t.str();
}

const std::string voll = R"({"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","mehr":[{"x":null}],
 "kabel":{"anfrage":null,"gast":{"id":"a1","name":"Mac","neu":1}},
 "status":{"paths":[{"iface":"wifi","healthy":true,"rtt_ms":42,"rtt_ruhe_ms":12.5},
                    {"iface":"cellular","healthy":false,"rtt_ms":-1e2}],
  "alles":false,"notlage":true,"notlage_grund":"Tunnel",
  "guests":[{"IP":"kabel:Mac","BytesUp":9223372036854775807,"BytesDown":-9223372036854775808}],
  "funkloecher":3,"gerettet":2.0}})";

TEST(Antwort, liestJedesFeldUndErfindetNichts) {
    EXPECT_EQ(gelesen(voll), "mobilsteg|1080|erlaubt|?|a1,Mac|01Tunnel,3,2|wifi1,42,12.5|cellular0,-100,0|"
                             "kabel:Mac,9223372036854775807,-9223372036854775808");
    const std::string knapp = R"({"app":"","proxy_port":0,"kabel":{})";
    EXPECT_EQ(gelesen(knapp + "}"), "|0|?|?|?");
    EXPECT_EQ(gelesen(knapp + R"(,"status":null})"), "|0|?|?|?");
    EXPECT_EQ(gelesen(knapp + R"(,"status":{}})"), "|0|?|?|?|00,0,0");
}

TEST(Antwort, ganzeZahlenWieSieGeschriebenSind) {
    const auto port = [](const std::string& zahl) {
        const auto a = Antwort::ausJson(R"({"app":"","kabel":{},"proxy_port":)" + zahl + "}");
        return a ? std::to_string(a->proxy_port) : "-";
    };
    for (const auto* zahl : {"1080.0", "1.08e+3", "108000E-2", "1080e0", "0.00108e6"})
        EXPECT_EQ(port(zahl), "1080") << zahl;
    EXPECT_EQ(port("-0.0e-99"), "0");
    // No double is one of these.
    for (const std::string zahl : {"9007199254740993", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(port(zahl + ".0"), zahl);
    for (const auto* zahl : {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "1080.5",
                             "1.00000000000000000001", "1e-1", "1e19", "1e400", "\"1080\"", "true"})
        EXPECT_EQ(port(zahl), "-") << zahl;
}

TEST(Antwort, einFalschesFeldVerdirbtDasGanze) {
    const auto mit = [](const std::string& aenderung) {
        const auto pfeil = aenderung.find("->");
        std::string dokument = voll;
        return gelesen(
            dokument.replace(dokument.find(aenderung.substr(0, pfeil)), pfeil, aenderung.substr(pfeil + 2)));
    };
    using Aenderungen = std::vector<std::string>;
    for (const auto& a : Aenderungen{
             R"("mobilsteg"->null)", "mobilsteg->\xFF", R"("erlaubt"->1)", R"("anfrage":null->"anfrage":{})",
             R"("Mac","neu"->null,"neu")", R"("healthy":true->"healthy":1)", R"("healthy":true,->)",
             R"("rtt_ms":42,->)", "42->true", R"("alles":false->"alles":0)", "9223372036854775807->1.5",
             R"([{"IP"->[null,{"IP")", R"("guests":[->"guests":{},"y":[)", "2.0}}->2.0}", "2.0}}->2.0}}}",
             R"({"x":null}->)" + std::string(1'000'000, '[') + std::string(1'000'000, ']')})
        EXPECT_EQ(mit(a), "-") << a.substr(0, 80);
    for (const auto& a : Aenderungen{R"("erlaubt"->null)", "12.5->null", R"("guests":[->"guests":null,"y":[)",
                                     R"({"x":null}->)" + std::string(500, '[') + std::string(500, ']')})
        EXPECT_NE(mit(a), "-") << a.substr(0, 80);
    for (const auto* muell : {"", "null", "[]", "[[["})
        EXPECT_EQ(gelesen(muell), "-") << muell;
}

} // namespace
