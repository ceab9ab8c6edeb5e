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

TEST(Anzeige, mengeInTausendern) {
    for (const std::int64_t bytes : {INT64_MIN, std::int64_t{-1}, std::int64_t{0}, std::int64_t{999}})
        EXPECT_EQ(Anzeige::mengeText(bytes), "0 kB") << bytes;
    const std::pair<std::int64_t, const char*> faelle[] = {{1000, "1 kB"},
                                                           {999'999, "999 kB"},
                                                           {1'000'000, "1,0 MB"},
                                                           {12'449'999, "12,4 MB"},
                                                           {999'999'999, "1000,0 MB"},
                                                           {1'000'000'000, "1,00 GB"},
                                                           {1'500'000'000, "1,50 GB"},
                                                           {INT64_MAX, "9223372036,85 GB"}};
    for (const auto& [bytes, text] : faelle)
        EXPECT_EQ(Anzeige::mengeText(bytes), text) << bytes;
}

TEST(Anzeige, rateInKibibyte) {
    const std::pair<double, const char*> faelle[] = {{0, ""},
                                                     {1023.9, ""},
                                                     {1024, " · 1 kB/s"},
                                                     {358'400 + 1023, " · 350 kB/s"},
                                                     {1'048'575, " · 1023 kB/s"},
                                                     {1'048'576, " · 1,0 MB/s"},
                                                     {2.55 * 1'048'576, " · 2,5 MB/s"}};
    for (const auto& [rate, text] : faelle)
        EXPECT_EQ(Anzeige::rateText(rate), text) << rate;
    EXPECT_EQ(Anzeige::rateText(std::numeric_limits<double>::infinity()), std::nullopt);
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
    Anzeige anzeige;
    auto werte = anzeige.zeige(Antwort{}, "Mac", 0s);
    EXPECT_EQ(werte->klasse, "2. Klasse");
    EXPECT_EQ(werte->menge, "0 kB");
    EXPECT_TRUE(werte->gleise.empty() && !werte->notlage && werte->rettung.empty());

    Antwort a = antwort(0);
    a.status->alles = a.status->notlage = true;
    a.status->paths = {{"wifi", true, 42.7, {}},
                       {"cellular", false, 80, {}},
                       {"ethernet", true, 12.9, {}},
                       {"", true, -0.9, {}}};
    a.status->guests->push_back({"kabel:Mac", 700, 300});
    a.status->guests->push_back({"kabel:mac", 5000, 0});
    werte = anzeige.zeige(a, "Mac", 1s);
    EXPECT_EQ(werte->klasse, "1. Klasse");
    EXPECT_TRUE(werte->notlage);
    EXPECT_THAT(werte->gleise, ElementsAre("WLAN · 42 ms", "Mobilfunk · weg", "ethernet · 12 ms", " · 0 ms"));
    EXPECT_EQ(werte->menge, "1 kB") << "two guests of this Mac's name add up, another one's do not count";
    a.status->paths = {{"wifi", true, 1e300, {}}};
    EXPECT_EQ(anzeige.zeige(a, "Mac", 2s), std::nullopt);
}

TEST(Anzeige, rettung) {
    using Zahl = std::optional<std::int64_t>;
    const std::tuple<Zahl, Zahl, const char*> faelle[] = {
        {{}, 4, ""},
        {0, 4, ""},
        {1, {}, "1 Funkloch überstanden · 0 Verbindungen gerettet"},
        {3, 1, "3 Funklöcher überstanden · 1 Verbindung gerettet"}};
    for (const auto& [loecher, gerettet, text] : faelle) {
        Antwort a = antwort(0);
        std::tie(a.status->funkloecher, a.status->gerettet) = std::tie(loecher, gerettet);
        EXPECT_EQ(Anzeige().zeige(a, "Mac", 0s)->rettung, text);
    }
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
    z.gleise = {"WLAN 17 ms", "WLAN · weg", "LTE 42 ms", "Mobilfunk"};
    z.volltunnelLaeuft = true;
    std::vector<std::string> runde;
    for (std::uint64_t i = 4; i < 9; ++i)
        runde.push_back(menueleiste(z, i).kurz);
    EXPECT_THAT(runde, ElementsAre("1.", "350 kB/s", "W17 W✕ M42 M", "Volltunnel", "1."));
    z.profil = "vpn";
    EXPECT_EQ(menueleiste(z, 3).kurz, "kein VPN");
    z.vpnsGesichert = {"Firma"};
    EXPECT_EQ(menueleiste(z, 3).kurz, "VPN gesichert");
}

} // namespace
