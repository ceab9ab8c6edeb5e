#include "kabel/Zustandsspeicher.hpp"

#include <vector>

namespace mobilsteg {

void Zustandsspeicher::veroeffentliche(Aenderung aenderung) {
    haupt_.async([this, aenderung = std::move(aenderung)] { aendere(aenderung); });
}

void Zustandsspeicher::aendere(const Aenderung& aenderung) {
    aenderung(zustand_);
    if (meldungBestellt_)
        return;
    // The report goes behind the changes that wait already, so that a tick's burst is told once.
    meldungBestellt_ = true;
    haupt_.async([this] { melde(); });
}

Zustandsspeicher::Beobachtung Zustandsspeicher::beobachte(Beobachter beobachter) {
    auto beobachtung = std::make_shared<Beobachter>(std::move(beobachter));
    beobachter_.push_back(beobachtung);
    return beobachtung;
}

void Zustandsspeicher::melde() {
    meldungBestellt_ = false;
    beobachter_.remove_if([](const auto& b) { return b.expired(); });
    // An observer may end its own or another observation while it runs.
    std::vector<Beobachtung> jetzige;
    for (const auto& b : beobachter_)
        jetzige.push_back(b.lock());
    for (const auto& b : jetzige)
        if (b)
            (*b)(zustand_);
}

} // namespace mobilsteg
