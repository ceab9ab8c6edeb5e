#include "probe/welt/VirtuelleWelt.hpp"

#include "probe/welt/Weltlauf.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

class VirtuelleUhr final : public Uhr {
public:
    explicit VirtuelleUhr(Weltlauf& welt) : welt_(welt) {}

    [[nodiscard]] Zeitpunkt wand() const override {
        constexpr auto anfang = std::chrono::seconds(1741941667); // 14.03.2025 09:41:07 in Berlin
        return Zeitpunkt(anfang) +
               std::chrono::duration_cast<Zeitpunkt::duration>(welt_.jetzt + welt_.wandVersatz);
    }
    [[nodiscard]] Dauer monoton() const override { return welt_.jetzt; }
    void schlafe(Dauer dauer) override {
        Weltlauf::Wartender wartender;
        wartender.bisZeit = welt_.jetzt + dauer;
        welt_.warte(wartender);
    }

private:
    Weltlauf& welt_;
};

} // namespace

struct VirtuelleWelt::Teile {
    explicit Teile(std::uint64_t samen) : lauf(samen), uhr(lauf) {}
    Weltlauf lauf;
    VirtuelleUhr uhr;
};

VirtuelleWelt::VirtuelleWelt(std::uint64_t samen) : teile_(std::make_unique<Teile>(samen)) {}

VirtuelleWelt::~VirtuelleWelt() {
    beende();
}

Schlange& VirtuelleWelt::schlange(const std::string& bezeichnung) {
    return teile_->lauf.schlangen.emplace_back(bezeichnung, teile_->lauf);
}

Uhr& VirtuelleWelt::uhr() {
    return teile_->uhr;
}

Dauer VirtuelleWelt::jetzt() const {
    return teile_->lauf.jetzt;
}

void VirtuelleWelt::stelleWanduhr(Dauer um) {
    teile_->lauf.wandVersatz += um;
}

void VirtuelleWelt::laufe(Dauer dauer) {
    teile_->lauf.laufe(jetzt() + dauer, nullptr);
}

bool VirtuelleWelt::laufeBis(const std::function<bool()>& bedingung, Dauer hoechstens) {
    teile_->lauf.laufe(jetzt() + hoechstens, &bedingung);
    return bedingung();
}

void VirtuelleWelt::stirb() {
    teile_->lauf.zuEnde = true;
    throw WeltZuEnde{};
}

void VirtuelleWelt::begrabe() {
    teile_->lauf.begrabe();
}

void VirtuelleWelt::beobachte(std::function<void()> nachJedemAuftrag) {
    teile_->lauf.beobachter = std::move(nachJedemAuftrag);
}

bool VirtuelleWelt::ruht() const {
    const auto& lauf = teile_->lauf;
    return lauf.wartende.empty() && std::none_of(lauf.schlangen.begin(), lauf.schlangen.end(),
                                                 [](const auto& s) { return s.hatArbeit(); });
}

void VirtuelleWelt::beende() {
    teile_->lauf.beende();
}

std::size_t VirtuelleWelt::verklemmte() const {
    std::size_t anzahl = 0;
    for (const auto* w : teile_->lauf.wartende) {
        if (w->bisZeit)
            return 0; // somebody only sleeps, and may wake the others
        ++anzahl;
    }
    return anzahl;
}

} // namespace mobilsteg
