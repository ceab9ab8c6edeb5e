// The status service as its clients find it: well-behaved ones, and all the others.

#include "standdienst/Standdienst.hpp"

#include "tests/hilfe/Klient.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>

#include <thread>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

const std::string cors = "Access-Control-Allow-Origin: *\r\nAccess-Control-Allow-Methods: GET, OPTIONS\r\n"
                         "Access-Control-Allow-Headers: *\r\nAccess-Control-Allow-Private-Network: true\r\n";
const std::string vorabantwort =
    "HTTP/1.1 204 No Content\r\n" + cors + "Content-Length: 0\r\nConnection: close\r\n\r\n";
const std::string anfrage = "GET /stand HTTP/1.1\r\n\r\n";

std::string antwortMit(const std::string& dokument) {
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nCache-Control: no-store\r\n" +
           cors + "Content-Length: " + std::to_string(dokument.size()) + "\r\nConnection: close\r\n\r\n" +
           dokument;
}

struct Bank {
    explicit Bank(Standdienst::Grenzen grenzen = {}, std::uint16_t port = 0) : dienst(q, port, grenzen) {
        dienst.starte();
    }

    /// A client that has said `bytes` and waits for the answer.
    [[nodiscard]] Klient fragender(const std::string& bytes = anfrage) const {
        Klient klient(dienst.port());
        klient.sende(bytes);
        return klient;
    }
    [[nodiscard]] std::string frage() const { return fragender().lies(); }

    AsioSchlange q{"standdienst"};
    Standdienst dienst;
};

TEST(Standdienst, antwortetAufJedesErsteWort) {
    Bank bank;
    EXPECT_EQ(bank.frage(), antwortMit("{}")) << "before the first document";
    const std::string dokument("{\"a\": \"ü\0\"}", 12);
    bank.dienst.setzeDokument(dokument);
    for (const auto* vorab :
         {"OPTIONS /stand HTTP/1.1\r\nOrigin: x\r\n\r\n", "OPTIONS", "  OPTIONS x", "OPTIONS "})
        EXPECT_EQ(bank.fragender(vorab).lies(), vorabantwort) << vorab;
    for (const auto* anderes :
         {"GET /anderes HTTP/1.1\r\n\r\n", "POST /stand HTTP/1.1\r\nContent-Length: 2\r\n\r\nab",
          "options / x", "OPTIONSX / x", "OPTIONS\r\n\r\n", "\xFF\xFE", " ", "O"})
        EXPECT_EQ(bank.fragender(anderes).lies(), antwortMit(dokument)) << anderes;
    const Klient stummer(bank.dienst.port());
    stummer.sagtNichtsMehr();
    EXPECT_EQ(stummer.lies(), antwortMit(dokument));
}

// A reset may overtake the answer.
TEST(Standdienst, reisstNieAbWerNachDerAnfrageWeiterspricht) {
    const Bank bank;
    for (const auto& mehr : {std::string(), std::string(60'000, 'x')}) {
        const Klient klient = bank.fragender(anfrage + mehr);
        EXPECT_EQ(klient.lies(), antwortMit("{}"));
        klient.sende("rest");
        EXPECT_FALSE(klient.abgerissen());
    }
}

TEST(Standdienst, liefertImmerEinGanzesDokument) {
    Bank bank;
    const std::string lang(70'000, 'l');
    std::atomic<bool> ende = false;
    std::thread schreiber([&] {
        for (int i = 0; !ende; ++i)
            bank.dienst.setzeDokument(i % 2 == 0 ? lang : "{}");
    });
    for (int i = 0; i < 50; ++i) {
        const std::string antwort = bank.frage();
        EXPECT_TRUE(antwort == antwortMit("{}") || antwort == antwortMit(lang)) << antwort.size();
    }
    ende = true;
    schreiber.join();
}

TEST(Standdienst, bedientGuteZwischenTausendSchweigenden) {
    rlimit grenze{};
    ::getrlimit(RLIMIT_NOFILE, &grenze);
    grenze.rlim_cur = std::min<rlim_t>(grenze.rlim_max, 4096); // both ends are here
    ::setrlimit(RLIMIT_NOFILE, &grenze);
    const Bank bank({10s, 20ms, 256});
    std::vector<Klient> schweigende;
    std::vector<Klient> gute;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(schweigende.emplace_back(bank.dienst.port()).verbunden) << i;
        if (i % 50 == 0)
            gute.push_back(bank.fragender());
    }
    for (const auto& guter : gute)
        EXPECT_EQ(guter.lies(), antwortMit("{}"));
    for (int i = 0; i < 100; ++i)
        bank.fragender().reisseAb();
    EXPECT_EQ(bank.frage(), antwortMit("{}"));
    EXPECT_EQ(schweigende.front().lies(), "") << "the oldest makes room";
    EXPECT_FALSE(schweigende.back().beendet());
    EXPECT_EQ(socketsMitPort(::getsockname, bank.dienst.port()).second, 0)
        << "a tool would keep the port occupied";
}

TEST(Standdienst, opfertKeinenJungenClient) {
    const Bank bank({10h, 1h, 3});
    const Klient aeltester(bank.dienst.port());
    std::optional<Klient> gehender(std::in_place, bank.dienst.port());
    const Klient juengster(bank.dienst.port());
    const Klient wartender = bank.fragender();
    gehender.reset();
    EXPECT_EQ(wartender.lies(), antwortMit("{}"));
    EXPECT_FALSE(aeltester.beendet() || juengster.beendet());
}

TEST(Standdienst, trenntSchweigendeNachDerFristUndVorherNurFuerAndere) {
    for (const auto& grenzen : {Standdienst::Grenzen{50ms, 1h, 3}, Standdienst::Grenzen{10h, 50ms, 2}}) {
        const Bank bank(grenzen);
        const Klient aelterer(bank.dienst.port());
        const Klient juengerer(bank.dienst.port());
        EXPECT_EQ(bank.frage(), antwortMit("{}"));
        EXPECT_EQ(aelterer.lies(), "");
    }
}

TEST(Standdienst, gibtDenPortMitSeinemEndeFrei) {
    std::uint16_t port = 0;
    for (int i = 0; i < 5; ++i) {
        std::optional<Bank> bank(std::in_place, Standdienst::Grenzen{}, port);
        ASSERT_NE(bank->dienst.port(), 0) << i;
        port = bank->dienst.port();
        EXPECT_EQ(Bank({}, port).dienst.port(), 0) << "taken: the second one stays silent";
        const Klient offener(port);
        EXPECT_EQ(bank->frage(), antwortMit("{}"));
        bank.reset();
        EXPECT_EQ(offener.lies(), "");
        EXPECT_FALSE(Klient(port).verbunden);
    }
}

TEST(Standdienst, kommtMitWenigenDeskriptorenAus) {
    std::optional<Bank> bank;
    std::optional<Klient> klient;
    {
        const Engpass engpass(10); // 64 may be open
        bank.emplace(Standdienst::Grenzen{10s, 0s});
    }
    {
        const Engpass engpass(1); // for the client's end; there is none for the service's
        klient.emplace(bank->fragender());
        EXPECT_FALSE(klient->abgerissen());
    }
    EXPECT_EQ(klient->lies(), antwortMit("{}"));
    klient.reset();
    std::vector<Klient> schweigende;
    for (int i = 0; i < 18; ++i)
        schweigende.emplace_back(bank->dienst.port());
    EXPECT_EQ(schweigende.front().lies(), "") << "the tools need their share";
    EXPECT_FALSE(schweigende.back().beendet());
}

} // namespace
