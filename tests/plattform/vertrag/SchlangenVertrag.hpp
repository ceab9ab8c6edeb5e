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
struct Schlangenbank {
    virtual ~Schlangenbank() = default;
    virtual Schlange& q() = 0;
    virtual void halt() = 0;
    virtual void laufeWeiter() { std::this_thread::yield(); }
};

/// Defined by each test program for its queue.
[[nodiscard]] std::unique_ptr<Schlangenbank> neueBank();

struct SchlangenVertrag : testing::Test {
    void bis(const std::atomic<bool>& wert) {
        for (const Dauer ende = uhr.monoton() + std::chrono::seconds(30); !wert; bank->laufeWeiter())
            ASSERT_LT(uhr.monoton(), ende) << "vergeblich gewartet";
    }

    Systemuhr uhr;
    std::unique_ptr<Schlangenbank> bank = neueBank();
    Schlange& q = bank->q();
    std::atomic<bool> fertig = false;
};

TEST_F(SchlangenVertrag, laesstAuftraegeInDerFolgeIhrerUebergabeLaufenBisZumHalt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    AsioSchlange andere("andere");
    std::string folge; // without a lock: only q touches it
    andere.async([&] {
        for (const char buchstabe : {'a', 'b', 'c'})
            q.async([&, buchstabe] { folge += buchstabe; });
        q.sync([&] { folge += "s "; });
        q.async([&] {
            EXPECT_TRUE(q.istHier() && !andere.istHier());
            EXPECT_DEATH(q.sync([] {}), "Programmierfehler: .*" + q.bezeichnung());
            q.async([&] { folge += "eigener "; });
            // A queue may wait for another one.
            andere.sync([&] { q.async([&] { folge += "fremder"; }); });
            q.async([&] { fertig = true; });
        });
    });
    bis(fertig);
    EXPECT_EQ(folge, "abcs eigener fremder");
    bank->halt();
    andere.sync([&] { q.sync([] { ADD_FAILURE(); }); }); // returns, though nothing runs
}

TEST_F(SchlangenVertrag, holtVersaeumteTakteEinmalNachUndKehrtInsRasterZurueck) {
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

TEST_F(SchlangenVertrag, zeitgeberEndetMitSeinemGriff) {
    using namespace std::chrono_literals;
    Zeitgeber selbst;
    std::atomic<int> eigene = 0, fremde = 0;
    q.async([&] {
        selbst = q.wiederhole(0ms, 1ms, [&] {
            if (++eigene == 2)
                selbst.reset(); // from inside the job
        });
    });
    Zeitgeber fremder = q.wiederhole(0ms, 1ms, [&] { fertig = ++fremde >= 3 && eigene >= 2; });
    bis(fertig);
    fremder.reset();
    int danach = 0;
    std::atomic<bool> spaeter = false;
    q.async([&] {
        danach = fremde; // a run that had begun is over now
        fremder = q.wiederhole(10ms, 1h, [&] { spaeter = true; });
    });
    bis(spaeter);
    EXPECT_EQ(fremde, danach);
    EXPECT_EQ(eigene, 2);
    bank.reset();
    fremder.reset(); // may be let go of when its queue is gone
}

} // namespace mobilsteg
