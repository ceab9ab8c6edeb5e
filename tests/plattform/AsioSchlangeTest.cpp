// The real queues. Where time matters, the order of events is compared and never a duration.

#include "plattform/AsioSchlange.hpp"

#include "plattform/Signale.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <thread>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

TEST(Schlange, naechsterTaktBleibtAufDemRaster) {
    for (const auto& [jetzt, soll] : std::vector<std::pair<Dauer, Dauer>>{
             {200ms, 3200ms}, {3199ms, 3200ms}, {3200ms, 6200ms}, {10s, 12200ms}, {100ms, 3200ms}})
        EXPECT_EQ(naechsterTakt(200ms, 3s, jetzt).count(), soll.count()) << jetzt.count();
}

TEST(AsioSchlange, laesstAuftraegeEinzelnUndInIhrerReihenfolgeLaufen) {
    AsioSchlange q("q");
    AsioSchlange andere("andere");
    std::vector<std::vector<int>> gelaufen(3); // without a lock: only the queue touches it
    std::vector<std::thread> faeden;
    for (std::size_t f = 0; f < gelaufen.size(); ++f)
        faeden.emplace_back([&, f] {
            for (int i = 0; i < 200; ++i)
                q.async([&, f, i] { gelaufen[f].push_back(i); });
        });
    for (auto& faden : faeden)
        faden.join();
    q.sync([&] {
        EXPECT_TRUE(q.istHier());
        andere.sync([&] { EXPECT_FALSE(q.istHier()); }); // a queue may wait for another one
        for (const auto& folge : gelaufen)
            EXPECT_TRUE(folge.size() == 200 && std::is_sorted(folge.begin(), folge.end()));
    });
    EXPECT_FALSE(q.istHier());

    std::string folge;
    q.sync([&] {
        q.async([&] { folge += "eigener "; });
        std::thread([&] { q.async([&] { folge += "fremder "; }); }).join();
    });
    q.sync([&] { EXPECT_EQ(folge, "eigener fremder "); });
}

TEST(AsioSchlangeDeathTest, syncAufSichSelbstBeendetDasProgramm) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            AsioSchlange q("kabel.takt");
            q.sync([&] { q.sync([] {}); });
        },
        "Programmierfehler: .*kabel\\.takt");
}

TEST(AsioSchlange, holtVersaeumteTakteEinmalNachUndKehrtInsRasterZurueck) {
    std::string folge;
    {
        AsioSchlange q("q");
        std::promise<void> fertig;
        // Due at 0, 80, 160 and 240 ms; busy until 200, so that 80 and 160 are missed.
        const auto a = q.wiederhole(0ms, 80ms, [&] {
            folge += 'a';
            if (folge == "a")
                std::this_thread::sleep_for(200ms);
        });
        const auto b = q.wiederhole(220ms, 1h, [&] { folge += 'b'; });
        const auto c = q.wiederhole(260ms, 1h, [&] { fertig.set_value(); });
        fertig.get_future().wait();
    }
    EXPECT_EQ(folge, "aaba");
}

TEST(AsioSchlange, weckerEndetMitDerLetztenKopie) {
    Wecker ueberlebender;
    std::atomic<int> laeufe = 0;
    {
        AsioSchlange q("q");
        std::promise<void> zweimal;
        Wecker selbst;
        q.sync([&] {
            selbst = q.wiederhole(0ms, 1ms, [&, n = 0]() mutable {
                if (++n == 2) {
                    selbst.reset(); // from inside the job
                    zweimal.set_value();
                }
                EXPECT_LE(n, 2);
            });
        });
        Wecker fremder = q.wiederhole(0ms, 1ms, [&] { ++laeufe; });
        Wecker kopie = fremder;
        fremder.reset();
        zweimal.get_future().wait();
        while (laeufe < 3) // the copy keeps it going
            std::this_thread::yield();
        kopie.reset(); // from another thread
        int danach = 0;
        q.sync([&] { danach = laeufe; }); // a run that had begun is over now
        std::this_thread::sleep_for(10ms);
        EXPECT_EQ(laeufe, danach);
        ueberlebender = q.wiederhole(1h, 1h, [] {});
    }
    ueberlebender.reset(); // may be let go of when its queue is gone
}

TEST(AsioSchlange, endeLaesstDenLaufendenAuftragFertigwerdenUndVerwirftDieWartenden) {
    const auto zeuge = std::make_shared<int>();
    std::string folge;
    {
        AsioSchlange q("q");
        std::promise<void> begonnen;
        q.async([&] {
            begonnen.set_value();
            std::this_thread::sleep_for(30ms);
            folge += "laufender ";
        });
        q.async([&, zeuge] { folge += "wartender "; });
        const auto wecker = q.wiederhole(0ms, 1ms, [zeuge] {});
        begonnen.get_future().wait();
    }
    EXPECT_EQ(folge, "laufender ");
    EXPECT_EQ(zeuge.use_count(), 1) << "what the dropped jobs held must be let go of";
}

TEST(Signale, laufenAlsAuftragIhrerSchlange) {
    AsioSchlange q("signale");
    for (const int signal : {SIGHUP, SIGTERM, SIGHUP}) { // the third needs the first one's end to be clean
        std::promise<void> zweimal;
        const auto quelle = beiSignal(signal, q, [&, n = 0](int s) mutable {
            EXPECT_TRUE(s == signal && q.istHier());
            if (++n == 1)
                ::raise(signal); // one that comes while the job runs is not lost
            else
                zweimal.set_value();
        });
        ::raise(signal);
        zweimal.get_future().wait();
    }
}

} // namespace
