#include "kabel/Anzeige.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

Antwort antwort(std::vector<Gast> gaeste) {
    Antwort a;
    a.status.emplace();
    a.status->guests = std::move(gaeste);
    return a;
}

TEST(Anzeige, einheiten) {
    const std::pair<std::int64_t, const char*> mengen[] = {
        {INT64_MIN, "0 kB"},        {1000, "1 kB"},
        {999'999, "999 kB"},        {1'000'000, "1,0 MB"},
        {999'999'999, "1000,0 MB"}, {1'000'000'000, "1,00 GB"}};
    for (const auto& [bytes, text] : mengen)
        EXPECT_EQ(Anzeige::mengeText(bytes), text);
    const std::pair<double, const char*> raten[] = {
        {1023.9, ""}, {1024, " · 1 kB/s"}, {1'048'575, " · 1023 kB/s"}, {1'048'576, " · 1,0 MB/s"}};
    for (const auto& [rate, text] : raten)
        EXPECT_EQ(Anzeige::rateText(rate), text);
}

TEST(Anzeige, rateWirdGemitteltUndUeberstehtRuecklaeufeUndEile) {
    Anzeige anzeige;
    const std::tuple<Dauer, std::int64_t, const char*> proben[] = {
        {0s, 5'000'000, "5,0 MB"}, // a first sample tells no rate
        {1s, 5'102'400, "5,1 MB · 100 kB/s"},
        {2s, 5'409'600, "5,4 MB · 200 kB/s"},     // (300 + 100) / 2
        {2300ms, 5'500'000, "5,5 MB · 200 kB/s"}, // too soon, but the base moves
        {3300ms, 5'500'000, "5,5 MB · 100 kB/s"}, // nothing since that base
        {4300ms, 1'000, "1 kB · 100 kB/s"},       // the phone restarted
    };
    for (const auto& [zeit, bytes, menge] : proben)
        EXPECT_EQ(anzeige.zeige(antwort({{"kabel:Mac", bytes, 0}}), "Mac", zeit)->menge, menge);
}

TEST(Anzeige, status) {
    // Two guests of this Mac's name add up, another one's do not count.
    Antwort a = antwort({{"kabel:Mac", 0, 5000}, {"kabel:Mac", 700, 300}, {"kabel:mac", 5000, 0}});
    a.status->alles = a.status->notlage = true;
    a.status->paths = {{"wifi", true, 42.7}, {"cellular", false, 1e300}, {"ethernet", true, -0.9}};
    a.status->funkloecher = 3;
    a.status->gerettet = 1;
    const std::vector<std::string> gleise = {"WLAN · 42 ms", "Mobilfunk · weg", "ethernet · 0 ms"};
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 1s),
              (Anzeigewerte{"1. Klasse", gleise, true, "6 kB",
                            "3 Funklöcher überstanden · 1 Verbindung gerettet"}));
    a.status->funkloecher = 1;
    a.status->gerettet = 0;
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 1s)->rettung, "1 Funkloch überstanden · 0 Verbindungen gerettet");

    a.status->paths[1].healthy = true; // after so many milliseconds
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 2s), std::nullopt);
    a = antwort({{"kabel:Mac", INT64_MAX, 0}});
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 0s)->menge, "9223372036,85 GB");
    a.status->guests.push_back({"kabel:Mac", 1, 0});
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 0s), std::nullopt);
}

TEST(Menueleiste, folgtProfilPhaseUndTunnelUndDrehtSichDurchDieStuecke) {
    Zustand z;
    const auto leiste = [&z](std::uint64_t rotation) {
        const auto bild = menueleiste(z, rotation);
        return bild.symbol + " " + bild.kurz;
    };
    z.klasse = "1. Klasse";
    z.volltunnelLaeuft = true;
    EXPECT_EQ(leiste(3), "cable.connector.slash ") << "only while it goes";
    z.phase = Phase::Art::faehrt;
    z.menge = "12,4 MB · 350 kB/s";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · 61 ms", "WLAN · weg"};
    std::vector<std::string> runde;
    for (std::uint64_t i = 4; i < 9; ++i)
        runde.push_back(leiste(i));
    EXPECT_THAT(runde,
                ElementsAre("tram.tunnel.fill 1.", "tram.tunnel.fill 350 kB/s", "tram.tunnel.fill W42 M61 W✕",
                            "tram.tunnel.fill Volltunnel", "tram.tunnel.fill 1."));
    z.profil = "vpn";
    EXPECT_EQ(leiste(3), "shield kein VPN");
    z.vpnsGesichert = {"Firma"};
    EXPECT_EQ(leiste(3), "lock.shield.fill VPN gesichert");
    z.volltunnelLaeuft = false;
    EXPECT_EQ(leiste(3), "shield.slash 1.");
    z.profil = "reise";
    EXPECT_EQ(leiste(3), "cable.connector 1.");
}

} // namespace
