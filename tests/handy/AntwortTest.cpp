#include "handy/Antwort.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using namespace std::string_literals;

namespace {

const std::string voll = R"({"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","mehr":[{"x":null}],
 "kabel":{"anfrage":null,"gast":{"id":"a1","name":"Mac","neu":1}},
 "status":{"paths":[{"iface":"wifi","healthy":true,"rtt_ms":42,"rtt_ruhe_ms":12.5},
                    {"iface":"cellular","healthy":false,"rtt_ms":-1e2}],
  "alles":false,"notlage":true,"notlage_grund":"Tunnel",
  "guests":[{"IP":"kabel:Mac","BytesUp":9223372036854775807,"BytesDown":-9223372036854775808}],
  "funkloecher":3,"gerettet":2.0}})";

TEST(Antwort, liestJedesFeld) {
    const auto a = Antwort::ausJson(voll);
    ASSERT_TRUE(a && a->kabel.gast && a->status && a->status->paths && a->status->guests);
    EXPECT_EQ(std::tuple(a->app, a->proxy_port, a->zustand), std::tuple("mobilsteg"s, 1080, "erlaubt"s));
    EXPECT_FALSE(a->kabel.anfrage);
    EXPECT_EQ(std::tuple(a->kabel.gast->id, a->kabel.gast->name), std::tuple("a1"s, "Mac"s));
    const Status& s = *a->status;
    EXPECT_EQ(std::tuple(s.alles, s.notlage, s.notlage_grund, s.funkloecher, s.gerettet),
              std::tuple(false, true, "Tunnel"s, 3, 2));
    ASSERT_EQ(s.paths->size(), 2U);
    const Pfad& wlan = s.paths->at(0);
    const Pfad& funk = s.paths->at(1);
    EXPECT_EQ(std::tuple(wlan.iface, wlan.healthy, wlan.rtt_ms, wlan.rtt_ruhe_ms),
              std::tuple("wifi"s, true, 42.0, std::optional(12.5)));
    EXPECT_EQ(std::tuple(funk.iface, funk.healthy, funk.rtt_ms, funk.rtt_ruhe_ms),
              std::tuple("cellular"s, false, -100.0, std::nullopt));
    ASSERT_EQ(s.guests->size(), 1U);
    const Gast& gast = s.guests->at(0);
    EXPECT_EQ(std::tuple(gast.IP, gast.BytesUp, gast.BytesDown),
              std::tuple("kabel:Mac"s, INT64_MAX, INT64_MIN));
}

TEST(Antwort, fehlendesBleibtLeerUndErfindetNichts) {
    for (const auto* status : {"", R"(,"status":null)", R"(,"status":{})"}) {
        const auto a = Antwort::ausJson(std::string(R"({"app":"","proxy_port":0,"kabel":{})") + status + "}");
        ASSERT_TRUE(a);
        EXPECT_FALSE(a->zustand || a->kabel.anfrage || a->kabel.gast);
        EXPECT_EQ(a->status.has_value(), std::string_view(status).ends_with("{}"));
        const Status s = a->status.value_or(Status{});
        EXPECT_FALSE(s.paths || s.alles || s.notlage || s.notlage_grund || s.guests || s.funkloecher ||
                     s.gerettet);
    }
}

TEST(Antwort, einFalschesFeldVerdirbtDasGanze) {
    struct Fall {
        std::string statt, steht;
        bool gilt = false;
    };
    const std::string tief(1'000'000, '[');
    for (const auto& [statt, steht, gilt] : std::vector<Fall>{
             {R"("app":"mobilsteg")", R"("app":null)"},
             {"\"mobilsteg\"", "\"mobil\xFFsteg\""},
             {"1080", "1080.0", true},
             {"1080", "1080.5"},
             {"1080", "\"1080\""},
             {"1080", "true"},
             {"1080", "9223372036854775808"},
             {"1080", "9223372036854775808.0"},
             {"1080", "-9223372036854775809"},
             {"1080", "1e400"},
             {"\"erlaubt\"", "1"},
             {"\"erlaubt\"", "null", true},
             {R"({"anfrage":null,)", R"({"anfrage":{},)"},
             {R"("name":"Mac")", R"("name":null)"},
             {R"("healthy":true)", R"("healthy":"true")"},
             {R"("healthy":true)", R"("healthy":1)"},
             {R"("healthy":true,)", ""},
             {R"("rtt_ms":42,)", ""},
             {R"(,"rtt_ruhe_ms":12.5)", R"(,"rtt_ruhe_ms":null)", true},
             {R"(,"rtt_ruhe_ms":12.5)", R"(,"rtt_ruhe_ms":false)"},
             {R"("alles":false)", R"("alles":0)"},
             {"9223372036854775807", "1.5"},
             {R"([{"IP")", R"([null,{"IP")"},
             {R"("guests":[)", R"("guests":{},"x":[)"},
             {R"("mehr":[{"x":null}])", R"("mehr":)" + std::string(500, '[') + std::string(500, ']'), true},
             {R"("mehr":[{"x":null}])", R"("mehr":)" + tief + std::string(tief.size(), ']')},
             {"\"gerettet\":2.0}}", "\"gerettet\":2.0}"},
             {"\"gerettet\":2.0}}", "\"gerettet\":2.0}}}"},
         }) {
        std::string dokument = voll;
        ASSERT_NE(dokument.find(statt), std::string::npos) << statt;
        dokument.replace(dokument.find(statt), statt.size(), steht);
        EXPECT_EQ(Antwort::ausJson(dokument).has_value(), gilt) << statt << " -> " << steht.substr(0, 80);
    }
    for (const auto& muell : {""s, "null"s, "[]"s, tief})
        EXPECT_FALSE(Antwort::ausJson(muell)) << muell.substr(0, 80);
}

} // namespace
