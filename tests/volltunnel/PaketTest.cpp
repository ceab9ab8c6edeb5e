// Packets and the table of connections.

#include "plattform/Wege.hpp"
#include "tests/volltunnel/Pakete.hpp"

#include <gtest/gtest.h>

#include <random>

#include "volltunnel/Tabelle.hpp"

using namespace mobilsteg::volltunnel;
using std::chrono::seconds;

namespace {

constexpr char SYN = 2, RST = 4, ACK = 16, FIN = 1;

struct Enden {
    Stelle a, b, c, d;
};

const Enden beide[] = {
    {stelle("10.0.0.9", 50000), stelle("203.0.113.5", 443), stelle("198.19.108.2", 1024),
     stelle("198.19.108.1", 7)},
    {stelle("fd00::9", 50000), stelle("2001:db8::5", 443), stelle("fd01::2", 65535), stelle("fd01::1", 80)}};

TEST(Paket, umgeschriebenStimmenDieSummenUndZurueckIstEsDasAlte) {
    std::mt19937 zufall(7);
    for (int runde = 0; runde < 2000; ++runde) {
        auto [a, b, c, d] = beide[runde % 2];
        a.port(static_cast<std::uint16_t>(zufall()));
        c.port(static_cast<std::uint16_t>(zufall()));
        std::string last(zufall() % 9, '\0'); // short ones: the sums come near to their edges
        for (char& zeichen : last)
            zeichen = zufall() % 2 != 0 ? '\xFF' : '\0';
        const std::string vorher = tcpPaket(a, b, ACK, last);
        std::string p = vorher;
        auto paket = liesPaket(alsBytes(p));
        ASSERT_TRUE(paket && paket->art == Art::tcp && !paket->syn && paket->von == a && paket->nach == b);
        schreibeUm(*paket, c, d);
        EXPECT_TRUE(summenStimmen(p, paket->kopf));
        auto neu = liesPaket(alsBytes(p));
        ASSERT_TRUE(neu && neu->von == c && neu->nach == d && p.ends_with(last));
        schreibeUm(*neu, a, b);
        EXPECT_EQ(p, vorher);
    }
}

TEST(Paket, absagenPassenZurFrage) {
    for (const auto& [a, b, c, d] : beide) {
        const bool sechs = a.address().is_v6();
        const std::size_t kopf = sechs ? 40 : 20;
        const auto antwort = [&](std::string p) {
            const auto paket = liesPaket(alsBytes(p));
            auto nein = paket ? absage(*paket) : std::nullopt;
            if (nein) {
                EXPECT_TRUE(summenStimmen(*nein, kopf) && (*nein)[sechs ? 7 : 8] == 64); // hops
                EXPECT_EQ(nein->substr(sechs ? 8 : 12, sechs ? 32 : 8), // from whom it was sent to
                          p.substr(sechs ? 24 : 16, sechs ? 16 : 4) +
                              p.substr(sechs ? 8 : 12, sechs ? 16 : 4));
            }
            return nein ? nein->substr(kopf) : "nichts";
        };
        const std::string ports{1, '\xBB', '\xC3', '\x50'};         // 443, 50000
        EXPECT_EQ(antwort(tcpPaket(a, b, ACK, "abc")).erase(16, 2), // the sum
                  ports + std::string("\0\0\7\xD0\0\0\0\0\x50\4\0\0\0\0", 14));
        EXPECT_EQ(antwort(tcpPaket(a, b, FIN, "abc")).erase(16, 2),
                  ports + std::string("\0\0\0\0\1\0\3\xEC\x50\x14\0\0\0\0", 14)); // 3 bytes, and the end
        EXPECT_EQ(antwort(tcpPaket(a, b, RST)), "nichts");
        const std::string nullen = udpPaket(a, b, std::string(2, '\0')).value();
        EXPECT_EQ(udpPaket(a, b, nullen.substr(kopf + 6, 2))->substr(kopf + 6, 2), "\xFF\xFF")
            << "0 would say that there is no sum";
        EXPECT_TRUE(udpPaket(a, b, std::string(65'507, 'x')) && !udpPaket(a, b, std::string(65'508, 'x')));
        std::string fremd = udpPaket(a, b, "")->substr(0, kopf); // a header alone, of no protocol we know
        fremd[sechs ? 5 : 3] = sechs ? 0 : 20;
        fremd[sechs ? 6 : 9] = 59;
        EXPECT_EQ(antwort(fremd).substr(0, 2), (sechs ? std::string{1, 3} : std::string{3, 1}));
        const std::string frage = *udpPaket(a, b, std::string(2001, 'q'));
        EXPECT_TRUE(summenStimmen(frage, kopf));
        const std::string nein = antwort(frage);
        EXPECT_EQ(nein.substr(0, 2), (sechs ? std::string{1, 4} : std::string{3, 3}));
        EXPECT_EQ(nein.substr(8), frage.substr(0, sechs ? 1232 : 548));
        std::string echo = *udpPaket(a, b, "12345678");
        echo[sechs ? 6 : 9] = sechs ? 58 : 1;
        for (const auto& [typ, code] :
             {std::pair{sechs ? 128 : 8, sechs ? 3 : 1}, {sechs ? 129 : 0, -1}, {3, -1}}) {
            echo[kopf] = static_cast<char>(typ);
            EXPECT_EQ(antwort(echo).substr(0, 2),
                      code < 0 ? "ni" : std::string({sechs ? '\1' : '\3', static_cast<char>(code)}));
        }
        for (const char* viele : {"224.0.0.251", "255.255.255.255", "0.255.255.255", "ff02::fb", "::"})
            if (const auto ziel = stelle(viele, 5353); ziel.address().is_v6() == sechs) {
                EXPECT_EQ(antwort(*udpPaket(a, ziel, "?")) + antwort(*udpPaket(ziel, b, "?")),
                          "nichtsnichts");
            }
    }
}

TEST(Paket, halbeUndBruchstueckeSindKeine) {
    for (const auto& [a, b, c, d] : beide)
        for (const std::string& ganzes : {tcpPaket(a, b, SYN, "x"), *udpPaket(a, b, "")}) {
            for (std::size_t n = 0; n < ganzes.size(); ++n) {
                std::string teil = ganzes.substr(0, n);
                EXPECT_FALSE(liesPaket(alsBytes(teil)).has_value()) << n;
            }
            std::string mehr = ganzes + "Anhang";
            const auto paket = liesPaket(alsBytes(mehr));
            ASSERT_TRUE(paket && paket->syn == (paket->art == Art::tcp));
            EXPECT_EQ(paket->bytes.size(), ganzes.size());
            ++mehr[paket->kopf + 5]; // UDP's own length
            EXPECT_EQ(liesPaket(alsBytes(mehr)).has_value(), paket->syn);
        }
    std::string p = tcpPaket(beide[0].a, beide[0].b, SYN);
    for (const auto& [stelle, wert] :
         {std::pair{6, '\x20'}, {7, '\1'}, {0, '\x44'}, {0, '\x55'}, {32, '\x40'}, {32, '\x60'}}) {
        std::string kaputt = p;
        kaputt[static_cast<std::size_t>(stelle)] = wert;
        EXPECT_FALSE(liesPaket(alsBytes(kaputt)).has_value()) << stelle;
    }
    p[6] = '\x40'; // "do not fragment" is no fragment
    EXPECT_TRUE(liesPaket(alsBytes(p)).has_value());
}

TEST(Paket, oeffentlicheAdressen) {
    for (const char* ja : {"1.1.1.1", "100.63.255.255", "172.32.0.1", "223.255.255.255", "2606:4700::1111"})
        EXPECT_TRUE(mobilsteg::istOeffentlich(ja)) << ja;
    for (const char* nein :
         {"10.255.0.1", "100.127.0.1", "172.31.0.1", "192.168.255.1", "169.254.255.1", "127.255.0.53",
          "224.0.0.1", "255.0.0.1", "0.255.2.3", "", "fe80::1", "fd00::1", "::1", "ff02::1"})
        EXPECT_FALSE(mobilsteg::istOeffentlich(nein)) << nein;
}

struct Tisch : testing::Test {
    Tabelle tabelle;
    Zeit jetzt{};
    static Tabelle::Fluss fluss(int port) { return {stelle("10.0.0.9", port), stelle("203.0.113.5", 443)}; }
    std::optional<std::uint16_t> syn(int port) { return tabelle.hin(fluss(port), true, jetzt); }
    std::optional<std::uint16_t> weiter(int port) { return tabelle.hin(fluss(port), false, jetzt); }
};

TEST_F(Tisch, einPortBleibtSoLangeEsDieVerbindungGibt) {
    EXPECT_FALSE(weiter(7)); // begun before the tunnel
    const auto port = syn(7).value();
    EXPECT_EQ(syn(7), port); // asked again
    EXPECT_NE(syn(8), port);
    EXPECT_FALSE(tabelle.nimmAn(1)); // nobody the tunnel knows
    ASSERT_EQ(tabelle.nimmAn(port)->von, fluss(7).von);
    EXPECT_TRUE(tabelle.lebt(fluss(7).nach.address()));
    jetzt += Tabelle::geduld + Tabelle::ruhezeit;
    tabelle.raeume(jetzt); // takes 8, which nobody accepted
    EXPECT_TRUE(syn(7) == port && tabelle.gehalten() == 1);
    ASSERT_TRUE(tabelle.nimmAn(port)); // torn down, and accepted anew before its old end is noticed
    tabelle.gibFrei(port, jetzt);
    EXPECT_TRUE(syn(7) == port && tabelle.gehalten() == 1);
    tabelle.gibFrei(port, jetzt);
    EXPECT_EQ(weiter(7), port) << "its last packets still pass";
    EXPECT_NE(tabelle.her(port), nullptr);
    EXPECT_FALSE(tabelle.nimmAn(port));
    EXPECT_FALSE(tabelle.lebt(fluss(7).nach.address()));
    const auto neuer = syn(7).value();
    EXPECT_NE(neuer, port);
    EXPECT_EQ(tabelle.her(port), nullptr) << "the old one's packets are not for the new connection";
    EXPECT_EQ(weiter(7), neuer);
}

TEST_F(Tisch, gehendeMachenKommendenPlatzAberNichtZuFrueh) {
    const int alle = 65'536 - Tabelle::ersterPort;
    for (int i = 0; i < alle; ++i)
        ASSERT_TRUE(syn(i + 1).has_value()) << i;
    EXPECT_FALSE(tabelle.hin({fluss(1).nach, fluss(1).von}, true, jetzt));
    jetzt += Tabelle::geduld;
    tabelle.raeume(jetzt);
    jetzt += Tabelle::ruhezeit - seconds(1);
    EXPECT_FALSE(tabelle.hin({fluss(1).nach, fluss(1).von}, true, jetzt));
    jetzt += seconds(1);
    const auto port = tabelle.hin({fluss(1).nach, fluss(1).von}, true, jetzt);
    ASSERT_EQ(port, Tabelle::ersterPort);
    EXPECT_FALSE(weiter(1)) << "its port has gone to another";
    EXPECT_TRUE(weiter(2));
    EXPECT_EQ(tabelle.hin({fluss(2).nach, fluss(2).von}, true, jetzt), Tabelle::ersterPort + 1);
    EXPECT_EQ(tabelle.her(*port)->von, fluss(1).nach);
}

} // namespace
