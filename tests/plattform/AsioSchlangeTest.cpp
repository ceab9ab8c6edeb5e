// What the real queues promise beyond the contract of all queues.

#include "plattform/AsioSchlange.hpp"

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

TEST(AsioSchlange, nimmtAuftraegeVonVielenFaeden) {
    AsioSchlange q("q");
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
        for (const auto& folge : gelaufen)
            EXPECT_TRUE(folge.size() == 200 && std::is_sorted(folge.begin(), folge.end()));
    });
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
        const auto zeitgeber = q.wiederhole(0ms, 1ms, [zeuge] {});
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
