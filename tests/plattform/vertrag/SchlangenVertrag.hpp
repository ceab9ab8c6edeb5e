#pragma once

// What every serial queue promises. No test depends on how long something took: a machine may stand still at
// any moment.

#include "plattform/AsioSchlange.hpp"
#include "plattform/Uhr.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace mobilsteg {

/// A queue, and the way to let it go on.
class Schlangenbank {
public:
    virtual ~Schlangenbank() = default;
    virtual Schlange& q() = 0;
    virtual void halt() = 0;
    virtual void laufeWeiter() { std::this_thread::yield(); }
};

/// Defined by each test program for the queues that it names.
[[nodiscard]] std::unique_ptr<Schlangenbank> neueBank(const std::string& art);

class SchlangenVertrag : public testing::TestWithParam<std::string> {
protected:
    void bis(const std::atomic<bool>& wert) {
        for (const Dauer ende = uhr.monoton() + std::chrono::seconds(30); !wert; bank->laufeWeiter())
            ASSERT_LT(uhr.monoton(), ende) << "vergeblich gewartet";
    }

    Systemuhr uhr;
    std::unique_ptr<Schlangenbank> bank = neueBank(GetParam());
    Schlange& q = bank->q();
    AsioSchlange andere{"andere"}; // goes first: its jobs may be waiting for q
    std::atomic<bool> fertig = false;
};

TEST_P(SchlangenVertrag, laesstAuftraegeInDerFolgeIhrerUebergabeLaufenBisZumHalt) {
    std::string folge; // without a lock: only q touches it
    andere.async([&] {
        EXPECT_TRUE(andere.istHier() && !q.istHier());
        for (const char buchstabe : {'a', 'b', 'c'})
            q.async([&, buchstabe] { folge += buchstabe; });
        q.sync([&] { folge += "s "; });
        q.async([&] {
            EXPECT_TRUE(q.istHier() && !andere.istHier());
            q.async([&] { folge += "eigener "; });
            // A queue may wait for another one.
            andere.sync([&] { q.async([&] { folge += "fremder"; }); });
            q.async([&] { fertig = true; });
        });
    });
    bis(fertig);
    EXPECT_EQ(folge, "abcs eigener fremder");

    bank->halt();
    fertig = false;
    andere.async([&] {
        q.async([] { ADD_FAILURE(); });
        q.sync([] { ADD_FAILURE(); });
        fertig = true;
    });
    bis(fertig);
}

TEST_P(SchlangenVertrag, syncAufSichSelbstBeendetDasProgramm) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    q.async([&] {
        EXPECT_DEATH(q.sync([] {}), "Programmierfehler: .*" + q.bezeichnung());
        fertig = true;
    });
    bis(fertig);
}

TEST_P(SchlangenVertrag, holtVersaeumteTakteEinmalNachUndKehrtInsRasterZurueck) {
    constexpr Dauer periode = std::chrono::milliseconds(40);
    std::vector<Dauer> laeufe; // touched by q alone
    const Dauer beginn = uhr.monoton();
    const Zeitgeber zeitgeber = q.wiederhole(Dauer::zero(), periode, [&] {
        if (fertig)
            return;
        laeufe.push_back(uhr.monoton() - beginn);
        if (laeufe.size() % 3 == 1)
            uhr.schlafe(5 * periode / 2); // misses the next two, which become one
        // A stalled machine may hide that the grid is only half a period away, but not each time.
        if (laeufe.size() % 3 == 0)
            fertig = laeufe.back() - laeufe.end()[-2] < periode * 9 / 10 || laeufe.size() == 90;
    });
    bis(fertig);
    bank.reset();
    EXPECT_GE(laeufe[2].count(), (3 * periode).count()) << "the two that were missed ran both";
    EXPECT_LT(laeufe.size(), 90U) << "counted on from the late run";
}

TEST_P(SchlangenVertrag, zeitgeberEndetMitSeinemGriff) {
    using namespace std::chrono_literals;
    Zeitgeber selbst;
    std::atomic<int> eigene = 0;
    std::atomic<int> fremde = 0;
    std::atomic<bool> genug = false;
    q.async([&] {
        selbst = q.wiederhole(0ms, 1ms, [&] {
            if (++eigene == 2)
                selbst.reset(); // from inside the job
        });
    });
    Zeitgeber fremder = q.wiederhole(0ms, 1ms, [&] { genug = ++fremde >= 3 && eigene >= 2; });
    bis(genug);
    fremder.reset();
    int danach = 0;
    andere.async([&] {
        q.sync([&] { danach = fremde; }); // a run that had begun is over now
        fremder = q.wiederhole(10ms, 1h, [&] { fertig = true; });
    });
    bis(fertig);
    andere.sync([] {}); // the handle is in its place
    EXPECT_EQ(fremde, danach);
    EXPECT_EQ(eigene, 2);
    bank.reset();
    fremder.reset(); // may be let go of when its queue is gone
}

} // namespace mobilsteg
