#pragma once

// What every serial queue promises. Nothing here measures how long something took: a machine may stand still
// at any moment.

#include "plattform/AsioSchlange.hpp"
#include "plattform/Uhr.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
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
    /// False: it did not hold for very long. The condition must be safe to ask from any thread.
    [[nodiscard]] bool laufeBis(const std::function<bool()>& bedingung) {
        for (const Dauer ende = uhr.monoton() + std::chrono::seconds(30); !bedingung(); bank->laufeWeiter())
            if (uhr.monoton() > ende)
                return false;
        return true;
    }
    void bis(const std::atomic<bool>& wert) {
        ASSERT_TRUE(laufeBis([&] { return wert.load(); })) << "vergeblich gewartet";
    }

    Systemuhr uhr;
    std::unique_ptr<Schlangenbank> bank = neueBank(GetParam());
    Schlange& q = bank->q();
    AsioSchlange andere{"andere"}; // goes first: its jobs may be waiting for q
    std::atomic<bool> fertig = false;
};

TEST_P(SchlangenVertrag, laesstAuftraegeEinzelnInDerFolgeIhrerUebergabeLaufen) {
    std::string folge; // without a lock: only q touches it
    andere.async([&] {
        EXPECT_TRUE(andere.istHier() && !q.istHier());
        for (const char buchstabe : {'a', 'b', 'c'})
            q.async([&, buchstabe] { folge += buchstabe; });
        q.sync([&] {
            EXPECT_TRUE(q.istHier() && !andere.istHier());
            folge += 's';
            q.async([&] { folge += 'e'; });
        });
        q.async([&] { folge += 'n'; });
        q.sync([&] { EXPECT_EQ(folge, "abcsen"); });
        q.async([&] {
            folge.clear();
            q.async([&] { folge += "eigener "; });
            andere.sync([&] { q.async([&] { folge += "fremder "; }); }); // a queue may wait for another one
            q.async([&] {
                EXPECT_EQ(folge, "eigener fremder ");
                fertig = true;
            });
        });
    });
    bis(fertig);
}

TEST_P(SchlangenVertrag, syncAufSichSelbstBeendetDasProgramm) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            q.async([&] { q.sync([] {}); });
            (void)laufeBis([] { return false; });
        },
        "Programmierfehler: .*" + q.bezeichnung());
}

TEST_P(SchlangenVertrag, nachDemHaltLaeuftNichtsUndSyncKehrtZurueck) {
    bank->halt();
    std::atomic<bool> gelaufen = false;
    andere.async([&] {
        q.async([&] { gelaufen = true; });
        q.sync([&] { gelaufen = true; });
        fertig = true;
    });
    bis(fertig);
    EXPECT_FALSE(gelaufen);
}

TEST_P(SchlangenVertrag, holtVersaeumteTakteEinmalNachUndKehrtInsRasterZurueck) {
    constexpr Dauer periode = std::chrono::milliseconds(40);
    bool imRaster = false;
    for (int versuch = 0; versuch < 50 && !imRaster; ++versuch) { // a stalled machine hides the grid
        fertig = false;
        int lauf = 0; // touched by q alone
        const Dauer beginn = uhr.monoton();
        Zeitgeber zeitgeber = q.wiederhole(Dauer::zero(), periode, [&] {
            if (++lauf == 1)
                uhr.schlafe(5 * periode / 2); // misses the next two, which become one
            if (lauf != 3)
                return;
            const Dauer seither = uhr.monoton() - beginn;
            EXPECT_GE(seither.count(), (3 * periode).count()) << "the two that were missed ran both";
            imRaster = seither < 17 * periode / 5; // and not only a period after that
            fertig = true;
        });
        bis(fertig);
        zeitgeber.reset();
        // Whatever of it still runs must be over before its variables go.
        std::atomic<bool> leer = false;
        andere.async([&] { q.sync([&] { leer = true; }); });
        bis(leer);
    }
    EXPECT_TRUE(imRaster);
}

TEST_P(SchlangenVertrag, zeitgeberEndetMitDerLetztenKopie) {
    using namespace std::chrono_literals;
    Zeitgeber selbst;
    std::atomic<int> eigene = 0;
    std::atomic<int> fremde = 0;
    q.async([&] {
        selbst = q.wiederhole(0ms, 1ms, [&] {
            if (++eigene == 2)
                selbst.reset(); // from inside the job
        });
    });
    Zeitgeber fremder = q.wiederhole(0ms, 1ms, [&] { ++fremde; });
    Zeitgeber kopie = fremder;
    fremder.reset();
    ASSERT_TRUE(laufeBis([&] { return fremde >= 3 && eigene >= 2; })) << "the copy keeps it going";
    kopie.reset();
    int danach = 0;
    Zeitgeber spaeter;
    andere.async([&] {
        q.sync([&] { danach = fremde; }); // a run that had begun is over now
        spaeter = q.wiederhole(10ms, 1h, [&] { fertig = true; });
    });
    bis(fertig);
    EXPECT_EQ(fremde, danach);
    EXPECT_EQ(eigene, 2);
    bank.reset();
    spaeter.reset(); // may be let go of when its queue is gone
}

} // namespace mobilsteg
