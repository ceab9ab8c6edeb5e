// The status service as its clients find it: well-behaved ones, and all the others.

#include "standdienst/Standdienst.hpp"

#include "tests/hilfe/Klient.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>

#include <future>
#include <set>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

const std::string anfrage = "GET / HTTP/1.1\r\n\r\n";
const std::string leerer = Standdienst::antwort("", "{}"); // before the first document

struct Bank {
    explicit Bank(Standdienst::Grenzen grenzen = {}, std::uint16_t port = 0) : dienst(q, port, grenzen) {
        dienst.starte();
    }
    /// A client that has said `bytes` and now waits.
    [[nodiscard]] Klient klient(const std::string& bytes = "") const {
        Klient neuer(dienst.port());
        neuer.sende(bytes);
        return neuer;
    }

    AsioSchlange q{"standdienst"};
    Standdienst dienst;
};

TEST(Standdienst, antwortetAufJedesErsteWort) {
    const std::string cors =
        "Access-Control-Allow-Origin: *\r\nAccess-Control-Allow-Methods: GET, OPTIONS\r\n"
        "Access-Control-Allow-Headers: *\r\nAccess-Control-Allow-Private-Network: true\r\n";
    for (const auto* wort : {"OPTIONS /stand HTTP/1.1\r\nOrigin: x\r\n\r\n", "OPTIONS", "  OPTIONS x"})
        EXPECT_EQ(Standdienst::antwort(wort, "{}"),
                  "HTTP/1.1 204 No Content\r\n" + cors + "Content-Length: 0\r\nConnection: close\r\n\r\n");
    const std::string dokument("{\"a\": \"ü\0\"}", 12);
    const std::string stand = "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\n"
                              "Cache-Control: no-store\r\n" +
                              cors + "Content-Length: 12\r\nConnection: close\r\n\r\n" + dokument;
    for (const auto* wort : {"GET /anderes", "options / x", "OPTIONSX / x", "OPTIONS\r\n\r\n", " "})
        EXPECT_EQ(Standdienst::antwort(wort, dokument), stand) << wort;
}

// A reset may overtake the answer.
TEST(Standdienst, reisstNieAbWerNachDerAnfrageWeiterspricht) {
    const Bank bank;
    const Klient klient = bank.klient(std::string(60'000, 'x'));
    EXPECT_EQ(klient.lies(), leerer);
    klient.sende("rest");
    EXPECT_FALSE(klient.abgerissen());
}

TEST(Standdienst, liefertImmerEinGanzesDokument) {
    Bank bank;
    const std::string lang(70'000, 'l');
    const auto schreiber = std::async(std::launch::async, [&] {
        for (int i = 0; i < 10'000; ++i)
            bank.dienst.setzeDokument(i % 2 == 0 ? lang : "{}");
    });
    std::set<std::string> antworten = {leerer, Standdienst::antwort("", lang)};
    for (int i = 0; i < 50; ++i)
        antworten.insert(bank.klient(anfrage).lies());
    EXPECT_EQ(antworten.size(), 2U);
}

TEST(Standdienst, opfertKeinenJungenClient) {
    const Bank bank({10h, 1h, 2});
    const Klient bleibender = bank.klient();
    std::optional<Klient> gehender(bank.klient());
    const Klient wartender = bank.klient(anfrage);
    gehender.reset();
    EXPECT_EQ(wartender.lies(), leerer);
    EXPECT_FALSE(bleibender.beendet());
}

TEST(Standdienst, trenntSchweigendeNachDerFrist) {
    const Bank bank({50ms, 1h, 1});
    const Klient schweigender = bank.klient();
    EXPECT_EQ(bank.klient(anfrage).lies(), leerer);
    EXPECT_EQ(schweigender.lies(), "");
}

TEST(Standdienst, gibtDenPortMitSeinemEndeFrei) {
    std::optional<Bank> bank(std::in_place);
    const auto port = bank->dienst.port();
    EXPECT_EQ(Bank({}, port).dienst.port(), 0) << "taken: the second one stays silent";
    const Klient offener = bank->klient();
    EXPECT_EQ(bank->klient(anfrage).lies(), leerer);
    bank.reset();
    EXPECT_EQ(offener.lies(), "");
    EXPECT_EQ(Bank({}, port).dienst.port(), port);
}

TEST(Standdienst, kommtMitWenigenDeskriptorenAus) {
#ifdef MIT_SANITIZER
    GTEST_SKIP() << "UBSan needs a pipe to check virtual tables, and without one calls every object invalid";
#endif
    std::optional<Bank> bank;
    imEngpass(10, [&] { bank.emplace(Standdienst::Grenzen{10s, 0s}); }); // 64 may be open
    std::vector<Klient> klienten;
    imEngpass(1, [&] { // for the client's end; there is none for the service's
        EXPECT_FALSE(klienten.emplace_back(bank->klient(anfrage)).abgerissen());
    });
    EXPECT_EQ(klienten[0].lies(), leerer);
    for (int i = 0; i < 18; ++i)
        klienten.push_back(bank->klient());
    EXPECT_EQ(klienten[1].lies(), "") << "the tools need their share";
}

} // namespace
