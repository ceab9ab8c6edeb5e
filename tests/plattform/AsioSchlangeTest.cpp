// The queue on real time keeps the contract of all queues; and what is its own.

#include "tests/plattform/vertrag/SchlangenVertrag.hpp"

using namespace mobilsteg;

namespace {

struct Asiobank final : Schlangenbank {
    Schlange& q() override { return q_; }
    void halt() override { q_.halt(); }

    AsioSchlange q_{"q"};
};

TEST(AsioSchlange, haltLaesstDenLaufendenAuftragFertigwerdenUndVerwirftDieWartenden) {
    AsioSchlange q("q", AsioSchlange::Faden::rufer);
    AsioSchlange andere("andere");
    std::string folge;
    const auto gehalten = std::make_shared<int>();
    q.async([&] {
        q.halt();
        folge += "laufender";
    });
    q.async([&, gehalten] { folge += "wartender"; });
    andere.async([&] { q.sync([&] { folge += "wartender"; }); });
    q.laufe();
    EXPECT_EQ(gehalten.use_count(), 1) << "what a dropped job holds goes with it";
    andere.sync([] {}); // its wait for q has ended
    EXPECT_EQ(folge, "laufender");
}

} // namespace

std::unique_ptr<Schlangenbank> mobilsteg::neueBank() {
    return std::make_unique<Asiobank>();
}
