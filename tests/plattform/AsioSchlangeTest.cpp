// The queue on real time keeps the contract of all queues; and what is its own.

#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

#include <future>
#include <thread>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

struct Asiobank : Schlangenbank {
    explicit Asiobank(AsioSchlange::Faden faden = AsioSchlange::Faden::eigener) : q_("q", faden) {}
    Schlange& q() override { return q_; }
    void halt() override { q_.halt(); }
    AsioSchlange q_;
};

/// As in the terminal, where the program's own thread is the queue's.
struct Ruferbank final : Asiobank {
    Ruferbank() : Asiobank(AsioSchlange::Faden::rufer) {}
    ~Ruferbank() override {
        q_.halt();
        faden.join();
    }
    std::thread faden{[this] { q_.laufe(); }};
};

INSTANTIATE_TEST_SUITE_P(Asio, SchlangenVertrag, testing::Values("eigener", "rufer"));

TEST(Schlange, naechsterTaktBleibtAufDemRaster) {
    for (const auto& [jetzt, soll] : std::vector<std::pair<Dauer, Dauer>>{
             {200ms, 3200ms}, {3199ms, 3200ms}, {3200ms, 6200ms}, {10s, 12200ms}, {100ms, 3200ms}})
        EXPECT_EQ(naechsterTakt(200ms, 3s, jetzt).count(), soll.count()) << jetzt.count();
}

TEST(AsioSchlange, haltLaesstDenLaufendenAuftragFertigwerdenUndVerwirftDieWartenden) {
    const auto zeuge = std::make_shared<int>();
    std::string folge;
    AsioSchlange andere("andere");
    std::promise<void> gehalten;
    {
        AsioSchlange q("q");
        std::promise<void> begonnen;
        q.async([&] {
            begonnen.set_value();
            gehalten.get_future().wait();
            folge += "laufender ";
        });
        q.async([&, zeuge] { folge += "wartender "; });
        const auto zeitgeber = q.wiederhole(0ms, 1ms, [zeuge] {});
        begonnen.get_future().wait();
        andere.async([&] { q.sync([&] { folge += "wartender "; }); });
        q.halt();
        andere.sync([] {}); // its wait for q has ended, while q's job still runs
        gehalten.set_value();
    }
    EXPECT_EQ(folge, "laufender ");
    EXPECT_EQ(zeuge.use_count(), 1) << "what the dropped jobs held must be let go of";
}

} // namespace

std::unique_ptr<Schlangenbank> mobilsteg::neueBank(const std::string& art) {
    if (art == "rufer")
        return std::make_unique<Ruferbank>();
    return std::make_unique<Asiobank>();
}
