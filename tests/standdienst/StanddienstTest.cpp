// The status service as its clients find it: well-behaved ones, and all the others.

#include "standdienst/Standdienst.hpp"

#include "tests/hilfe/Klient.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

const std::string cors = "Access-Control-Allow-Origin: *\r\nAccess-Control-Allow-Methods: GET, OPTIONS\r\n"
                         "Access-Control-Allow-Headers: *\r\nAccess-Control-Allow-Private-Network: true\r\n";
const std::string vorabantwort =
    "HTTP/1.1 204 No Content\r\n" + cors + "Content-Length: 0\r\nConnection: close\r\n\r\n";

std::string antwortMit(const std::string& dokument) {
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nCache-Control: no-store\r\n" +
           cors + "Content-Length: " + std::to_string(dokument.size()) + "\r\nConnection: close\r\n\r\n" +
           dokument;
}

class StanddienstTest : public testing::Test {
protected:
    explicit StanddienstTest(Standdienst::Grenzen grenzen = {}) : dienst(q, 0, grenzen) {
        std::signal(SIGPIPE, SIG_IGN);
        dienst.starte();
    }

    [[nodiscard]] std::string frage(const std::string& bytes = "GET /stand HTTP/1.1\r\n\r\n") const {
        const Klient klient(dienst.port());
        klient.sende(bytes);
        return klient.lies();
    }

    AsioSchlange q{"standdienst"};
    Standdienst dienst;
};

TEST_F(StanddienstTest, antwortetAufJedesErsteWort) {
    EXPECT_EQ(frage(), antwortMit("{}")) << "before the first document";
    const std::string dokument("{\"a\": \"ü\0\"}", 12);
    dienst.setzeDokument(dokument);
    for (const auto* vorab :
         {"OPTIONS /stand HTTP/1.1\r\nOrigin: x\r\n\r\n", "OPTIONS", "  OPTIONS x", "OPTIONS "})
        EXPECT_EQ(frage(vorab), vorabantwort) << vorab;
    for (const auto* anderes :
         {"GET /anderes HTTP/1.1\r\n\r\n", "POST /stand HTTP/1.1\r\nContent-Length: 2\r\n\r\nab",
          "options / x", "OPTIONSX / x", "OPTIONS\r\n\r\n", "\xFF\xFE", " ", "O"})
        EXPECT_EQ(frage(anderes), antwortMit(dokument)) << anderes;
    const Klient weitschweifiger(dienst.port());
    weitschweifiger.sende("POST / HTTP/1.1\r\n\r\n" + std::string(60'000, 'x'));
    EXPECT_EQ(weitschweifiger.lies(), antwortMit(dokument));
    EXPECT_FALSE(weitschweifiger.abgerissen()) << "on other systems a reset takes the unread answer with it";
    const std::string genauEinBlock = "GET / HTTP/1.1\r\nX: " + std::string(8169, 'x') + "\r\n\r\n";
    for (const auto& kopf :
         {std::string("GET / HTTP/1.1\r\ncontent-Length: 4\r\n\r\n"),
          std::string("GET / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"), genauEinBlock}) {
        const Klient nachsender(dienst.port());
        nachsender.sende(kopf);
        EXPECT_EQ(nachsender.lies(), antwortMit(dokument));
        nachsender.sende("rest");
        EXPECT_FALSE(nachsender.abgerissen()) << kopf.substr(0, 50);
    }
    const Klient stummer(dienst.port());
    stummer.sagtNichtsMehr();
    EXPECT_EQ(stummer.lies(), antwortMit(dokument));
    const Klient troepfelnder(dienst.port());
    troepfelnder.sende("O");
    EXPECT_EQ(troepfelnder.lies(), antwortMit(dokument)) << "one that stays finds the connection closed";
}

TEST_F(StanddienstTest, liefertImmerEinGanzesDokument) {
    const std::string kurz = "{}";
    const std::string lang(70'000, 'l');
    std::atomic<bool> ende = false;
    std::thread schreiber([&] {
        while (!ende) {
            dienst.setzeDokument(lang);
            dienst.setzeDokument(kurz);
        }
    });
    for (int i = 0; i < 50; ++i) {
        const std::string antwort = frage();
        EXPECT_TRUE(antwort == antwortMit(kurz) || antwort == antwortMit(lang)) << antwort.size();
    }
    ende = true;
    schreiber.join();
}

TEST_F(StanddienstTest, haeltSchweigendeUndAbreissendeAus) {
    rlimit grenze{};
    ::getrlimit(RLIMIT_NOFILE, &grenze);
    grenze.rlim_cur = std::min<rlim_t>(grenze.rlim_max, 4096); // both ends are here
    ::setrlimit(RLIMIT_NOFILE, &grenze);
    std::vector<Klient> schweigende;
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(schweigende.emplace_back(dienst.port()).verbunden) << i;
    EXPECT_EQ(frage(), antwortMit("{}"));
    EXPECT_EQ(schweigende.front().lies(), "") << "the longest waiting one makes room";
    EXPECT_FALSE(schweigende.back().beendet());
    for (std::size_t i = 0; i < 100; ++i) {
        Klient abreissender(dienst.port());
        if (i % 2 == 0)
            abreissender.sende("GET / HTTP/1.1\r\n\r\n");
        abreissender.reisseAb();
    }
    EXPECT_EQ(frage(), antwortMit("{}"));
    EXPECT_EQ(socketsMitPort(::getsockname, dienst.port()).second, 0)
        << "a tool would keep the port occupied";
}

TEST_F(StanddienstTest, bleibtBeiBelegtemPortStill) {
    {
        Standdienst zweiter(q, dienst.port(), {});
        zweiter.starte();
        EXPECT_EQ(zweiter.port(), 0);
        zweiter.setzeDokument("fremd");
    }
    EXPECT_EQ(frage(), antwortMit("{}"));
}

TEST_F(StanddienstTest, gibtDenPortMitSeinemEndeFrei) {
    std::uint16_t port = 0;
    for (int i = 0; i < 5; ++i) {
        std::optional<Standdienst> voriger(std::in_place, q, port, Standdienst::Grenzen{});
        voriger->starte();
        ASSERT_NE(voriger->port(), 0) << i;
        port = voriger->port();
        const Klient offener(port);
        const Klient bedienter(port);
        bedienter.sende("GET / HTTP/1.1\r\n\r\n");
        EXPECT_EQ(bedienter.lies(), antwortMit("{}"));
        voriger.reset();
        EXPECT_EQ(offener.lies(), "");
        EXPECT_FALSE(Klient(port).verbunden);
    }
}

TEST_F(StanddienstTest, nimmtNachEinemMangelAnDeskriptorenWiederAn) {
    std::optional<Klient> klient;
    {
        const Engpass engpass(1); // for the client's end; there is none for the service's
        klient.emplace(dienst.port());
        klient->sende("GET / HTTP/1.1\r\n\r\n");
        EXPECT_FALSE(klient->abgerissen());
    }
    EXPECT_EQ(klient->lies(), antwortMit("{}"));
}

class Ungeduldiger : public StanddienstTest {
protected:
    Ungeduldiger() : StanddienstTest({50ms, 3}) {}
};

TEST_F(Ungeduldiger, trenntSchweigendeNachDerFrist) {
    const Klient schweigender(dienst.port());
    const Klient bedienter(dienst.port());
    bedienter.sende("G");
    EXPECT_EQ(schweigender.lies(), "");
    EXPECT_EQ(bedienter.lies(), antwortMit("{}"));
    for (int i = 0; i < 800 && socketsMitPort(::getsockname, dienst.port()).first > 1; ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(socketsMitPort(::getsockname, dienst.port()).first, 1) << "its own ends are given back, too";
}

TEST_F(StanddienstTest, laesstDenWerkzeugenIhreDeskriptoren) {
    std::optional<Standdienst> enger;
    {
        const Engpass engpass(10); // 64 may be open
        enger.emplace(q, 0, Standdienst::Grenzen{});
        enger->starte();
    }
    std::vector<Klient> klienten;
    for (int i = 0; i < 17; ++i)
        klienten.emplace_back(enger->port());
    EXPECT_EQ(klienten.front().lies(), "");
    EXPECT_FALSE(klienten[1].beendet());
}

} // namespace
