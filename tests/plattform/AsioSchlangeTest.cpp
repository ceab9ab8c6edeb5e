// The queue on real time keeps the contract of all queues; and what is its own.

#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

#include <future>
#include <map>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

struct Asiobank final : Schlangenbank {
    explicit Asiobank(bool rufer)
        : q_("q", rufer ? AsioSchlange::Faden::rufer : AsioSchlange::Faden::eigener) {
        if (rufer) // as in the terminal, where it is the program's own thread
            faden = std::async(std::launch::async, [this] { q_.laufe(); });
    }
    ~Asiobank() override { q_.halt(); }
    Schlange& q() override { return q_; }
    void halt() override { q_.halt(); }

    AsioSchlange q_;
    std::future<void> faden; // goes first, which waits for its end
};

INSTANTIATE_TEST_SUITE_P(Asio, SchlangenVertrag, testing::Values("eigener", "rufer"));

TEST(Schlange, naechsterTaktBleibtAufDemRaster) {
    for (const auto& [jetzt, soll] : std::map<Dauer, Dauer>{
             {100ms, 3200ms}, {200ms, 3200ms}, {3199ms, 3200ms}, {3200ms, 6200ms}, {10s, 12200ms}})
        EXPECT_EQ(naechsterTakt(200ms, 3s, jetzt).count(), soll.count()) << jetzt.count();
}

TEST(AsioSchlange, haltLaesstDenLaufendenAuftragFertigwerdenUndVerwirftDieWartenden) {
    std::string folge;
    AsioSchlange andere("andere");
    std::promise<void> begonnen;
    std::promise<void> gehalten;
    {
        AsioSchlange q("q");
        q.async([&] {
            begonnen.set_value();
            gehalten.get_future().wait();
            folge += "laufender";
        });
        q.async([&] { folge += "wartender"; });
        begonnen.get_future().wait();
        andere.async([&] { q.sync([&] { folge += "wartender"; }); });
        q.halt();
        andere.sync([] {}); // its wait for q has ended, while q's job still runs
        gehalten.set_value();
    }
    EXPECT_EQ(folge, "laufender");
}

} // namespace

std::unique_ptr<Schlangenbank> mobilsteg::neueBank(const std::string& art) {
    return std::make_unique<Asiobank>(art == "rufer");
}
