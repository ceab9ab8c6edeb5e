#include "kabel/Anzeige.hpp"

#include "kabel/Zustand.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

Antwort antwort(std::int64_t bytes) {
    Antwort a;
    a.status.emplace();
    a.status->guests = {{"kabel:Mac", bytes, 0}};
    return a;
}

TEST(Anzeige, einheiten) {
    for (const auto& [bytes, text] : std::map<std::int64_t, std::string>{{INT64_MIN, "0 kB"},
                                                                         {999, "0 kB"},
                                                                         {1000, "1 kB"},
                                                                         {999'999, "999 kB"},
                                                                         {1'000'000, "1,0 MB"},
                                                                         {999'999'999, "1000,0 MB"},
                                                                         {1'500'000'000, "1,50 GB"},
                                                                         {INT64_MAX, "9223372036,85 GB"}})
        EXPECT_EQ(Anzeige::mengeText(bytes), text);
    for (const auto& [rate, text] : std::map<double, std::string>{{1023.9, ""},
                                                                  {1024, " · 1 kB/s"},
                                                                  {1'048'575, " · 1023 kB/s"},
                                                                  {1'048'576, " · 1,0 MB/s"},
                                                                  {0x1p65, " · 35184372088832,0 MB/s"}})
        EXPECT_EQ(Anzeige::rateText(rate), text);
}

TEST(Anzeige, rateWirdGemitteltUndUeberstehtRuecklaeufeUndEile) {
    Anzeige anzeige;
    struct Probe {
        Dauer zeit;
        std::int64_t bytes;
        const char* menge;
    };
    const Probe proben[] = {
        {0s, 5'000'000, "5,0 MB"}, // a first sample tells no rate
        {1s, 5'102'400, "5,1 MB · 100 kB/s"},
        {2s, 5'409'600, "5,4 MB · 200 kB/s"},     // (300 + 100) / 2
        {2300ms, 5'500'000, "5,5 MB · 200 kB/s"}, // too soon, but the base moves
        {3300ms, 5'500'000, "5,5 MB · 100 kB/s"}, // nothing since that base
        {4300ms, 1'000, "1 kB · 100 kB/s"},       // the phone restarted: a new base
        {5300ms, 103'400, "103 kB · 100 kB/s"},
    };
    for (const auto& p : proben)
        EXPECT_EQ(anzeige.zeige(antwort(p.bytes), "Mac", p.zeit)->menge, p.menge) << p.bytes;
}

TEST(Anzeige, status) {
    auto werte = Anzeige().zeige(Antwort{}, "Mac", 0s);
    EXPECT_EQ(werte, (Anzeigewerte{"2. Klasse", {}, false, "0 kB", ""}));

    Antwort a = antwort(0);
    a.status->alles = a.status->notlage = true;
    a.status->paths = {{"wifi", true, 42.7}, {"cellular", false, 1e300}, {"ethernet", true, -0.9}};
    a.status->guests.push_back({"kabel:Mac", 700, 300});
    a.status->guests.push_back({"kabel:mac", 5000, 0});
    a.status->funkloecher = 3;
    a.status->gerettet = 1;
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 1s),
              (Anzeigewerte{"1. Klasse",
                            {"WLAN · 42 ms", "Mobilfunk · weg", "ethernet · 0 ms"},
                            true,
                            "1 kB", // two guests of this Mac's name add up, another one's do not count
                            "3 Funklöcher überstanden · 1 Verbindung gerettet"}));
    a.status->funkloecher = 1;
    a.status->gerettet = 0;
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 1s)->rettung, "1 Funkloch überstanden · 0 Verbindungen gerettet");

    a.status->paths[1].healthy = true;
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 2s), std::nullopt);
    EXPECT_EQ(Anzeige().zeige(antwort(INT64_MAX), "Mac", 0s)->menge, "9223372036,85 GB");
    a = antwort(INT64_MAX);
    a.status->guests[0].BytesDown = 1;
    EXPECT_EQ(Anzeige().zeige(a, "Mac", 0s), std::nullopt);
}

TEST(Menueleiste, symbolFolgtProfilPhaseUndTunnel) {
    const std::tuple<const char*, Phase::Art, bool, bool, const char*> faelle[] = {
        {"reise", Phase::Art::faehrt, false, false, "cable.connector"},
        {"reise", Phase::Art::faehrt, true, true, "tram.tunnel.fill"},
        {"reise", Phase::Art::pruefung, true, true, "cable.connector.slash"},
        {"alt", Phase::Art::faehrt, false, false, "cable.connector"},
        {"vpn", Phase::Art::faehrt, true, true, "lock.shield.fill"},
        {"vpn", Phase::Art::faehrt, true, false, "shield"},
        {"vpn", Phase::Art::faehrt, false, true, "shield.slash"},
        {"vpn", Phase::Art::abgelehnt, true, true, "shield.slash"}};
    for (const auto& [profil, phase, tunnel, gesichert, symbol] : faelle) {
        Zustand z;
        z.profil = profil;
        z.phase = phase;
        z.volltunnelLaeuft = tunnel;
        if (gesichert)
            z.vpnsGesichert = {"Firma"};
        EXPECT_EQ(menueleiste(z, 0).symbol, symbol);
    }
}

TEST(Menueleiste, kurzDrehtSichDurchDieStuecke) {
    Zustand z;
    z.klasse = "1. Klasse";
    EXPECT_EQ(menueleiste(z, 3).kurz, "") << "only while it goes";
    z.phase = Phase::Art::faehrt;
    EXPECT_EQ(menueleiste(z, 3).kurz, "1.");
    z.menge = "12,4 MB · 350 kB/s";
    Antwort a = antwort(0);
    a.status->paths = {{"wifi", true, 42}, {"cellular", true, 61}, {"wifi", false, 1}};
    z.gleise = Anzeige().zeige(a, "Mac", 0s)->gleise;
    z.volltunnelLaeuft = true;
    std::vector<std::string> runde;
    for (std::uint64_t i = 4; i < 9; ++i)
        runde.push_back(menueleiste(z, i).kurz);
    EXPECT_THAT(runde, ElementsAre("1.", "350 kB/s", "W42 M61 W✕", "Volltunnel", "1."));
    z.profil = "vpn";
    EXPECT_EQ(menueleiste(z, 3).kurz, "kein VPN");
    z.vpnsGesichert = {"Firma"};
    EXPECT_EQ(menueleiste(z, 3).kurz, "VPN gesichert");
}

} // namespace
