#include "probe/welt/VirtuelleWelt.hpp"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace mobilsteg {

/// A thread of the world. Exactly one is awake at any time, so nothing else here needs a lock: waking the
/// next one orders all accesses. Not a semaphore: those of the library spin before they sleep.
struct VirtuelleWelt::Faden {
    void wecke() {
        std::unique_lock wache(schloss);
        wach = true;
        wache.unlock();
        geweckt.notify_one();
    }
    void schlafe() {
        std::unique_lock wache(schloss);
        geweckt.wait(wache, [&] { return wach; });
        wach = false;
    }

    std::thread thread;
    std::mutex schloss;
    std::condition_variable geweckt;
    bool wach = false;
};

struct VirtuelleWelt::Reihe final : Schlange {
    struct Auftrag {
        Aufgabe aufgabe;
        std::shared_ptr<bool> fertig; ///< set for the job that waits for this one; may be null
    };

    Reihe(std::string bezeichnung, VirtuelleWelt& w) : Schlange(std::move(bezeichnung)), welt(w) {}
    void async(Aufgabe aufgabe) override { auftraege.push_back({std::move(aufgabe), nullptr}); }
    void sync(Aufgabe aufgabe) override;
    [[nodiscard]] Zeitgeber wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) override;
    [[nodiscard]] bool istHier() const override { return welt.laufende_ == this; }
    [[nodiscard]] bool hatArbeit() const { return !besetzt && !auftraege.empty(); }

    std::deque<Auftrag> auftraege;
    bool besetzt = false;
    VirtuelleWelt& welt;
};

VirtuelleWelt::VirtuelleWelt(std::uint64_t samen) : zufall_(samen) {
    wacher_ = &faeden_.emplace_back();
}

VirtuelleWelt::~VirtuelleWelt() {
    beende();
}

Schlange& VirtuelleWelt::schlange(const std::string& bezeichnung) {
    return reihen_.emplace_back(bezeichnung, *this);
}

Uhr::Zeitpunkt VirtuelleWelt::wand() const {
    constexpr auto anfang = std::chrono::seconds(1741941667); // 14.03.2025 09:41:07 in Berlin
    return Zeitpunkt(anfang) + std::chrono::duration_cast<Zeitpunkt::duration>(jetzt_ + wandVersatz_);
}

bool VirtuelleWelt::laufeBis(const std::function<bool()>& bedingung, Dauer hoechstens) {
    laufe(jetzt_ + hoechstens, &bedingung);
    return bedingung();
}

void VirtuelleWelt::stirb() {
    zuEnde_ = true;
    throw ProzessZuEnde{};
}

bool VirtuelleWelt::ruht() const {
    return wartende_.empty() &&
           std::none_of(reihen_.begin(), reihen_.end(), [](const auto& r) { return r.hatArbeit(); });
}

std::size_t VirtuelleWelt::verklemmte() const {
    // One that sleeps may still wake the others.
    const auto schlaeft = [](const auto* w) { return w->bisZeit.has_value(); };
    return std::any_of(wartende_.begin(), wartende_.end(), schlaeft) ? 0 : wartende_.size();
}

// --- the queues ------------------------------------------------------------------------------------------

void VirtuelleWelt::Reihe::sync(Aufgabe aufgabe) {
    if (istHier())
        schlangenFehler(*this, "sync auf die eigene Schlange");
    const auto fertig = std::make_shared<bool>(false);
    auftraege.push_back({std::move(aufgabe), fertig});
    if (welt.laufende_ != nullptr)
        return welt.warte({std::nullopt, fertig});
    const std::function<bool()> bis = [&] { return *fertig; }; // the test itself waits
    welt.laufe(Dauer::max(), &bis);
}

Zeitgeber VirtuelleWelt::Reihe::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    auto takt = std::make_shared<Takt>(Takt{*this, periode, std::move(aufgabe), welt.jetzt_ + erste});
    welt.takte_.push_back(takt);
    return takt;
}

void VirtuelleWelt::fuehreAus(Reihe& reihe) {
    const Reihe::Auftrag dieser = std::move(reihe.auftraege.front());
    reihe.auftraege.pop_front();
    reihe.besetzt = true;
    laufende_ = &reihe;
    try {
        dieser.aufgabe();
    } catch (const ProzessZuEnde&) {
    }
    laufende_ = nullptr;
    reihe.besetzt = false;
    if (dieser.fertig)
        *dieser.fertig = true;
    if (beobachter_ && !zuEnde_)
        beobachter_();
}

void VirtuelleWelt::reiheTakteEin() {
    takte_.remove_if([](const auto& t) { return t.expired(); });
    for (const auto& schwach : takte_) {
        const auto takt = schwach.lock();
        if (takt->faellig > jetzt_ || takt->eingereiht)
            continue;
        takt->eingereiht = true;
        takt->reihe.async([this, schwach] {
            const auto lebender = schwach.lock();
            if (!lebender)
                return;
            lebender->eingereiht = false;
            lebender->faellig = naechsterTakt(lebender->faellig, lebender->periode, jetzt_);
            lebender->aufgabe();
        });
    }
}

// --- what runs next --------------------------------------------------------------------------------------

/// Leaps through time until something can go on, unless the run is over before.
VirtuelleWelt::Naechstes VirtuelleWelt::naechstes() {
    while (!zuEnde_ && !(bedingung_ != nullptr && (*bedingung_)())) {
        reiheTakteEin();
        if (const auto n = ziehe(); n.reihe != nullptr || n.wartender != nullptr)
            return n;
        const auto zeit = naechsteZeit();
        if (!zeit || *zeit > grenze_) {
            jetzt_ = grenze_ == Dauer::max() ? jetzt_ : grenze_;
            break;
        }
        jetzt_ = std::max(jetzt_, *zeit);
    }
    return {};
}

VirtuelleWelt::Naechstes VirtuelleWelt::ziehe() {
    lose_.clear();
    for (auto& reihe : reihen_)
        if (reihe.hatArbeit())
            lose_.push_back({&reihe, nullptr});
    for (Wartender* w : wartende_)
        if (w->bisZeit ? *w->bisZeit <= jetzt_ : *w->bisFertig)
            lose_.push_back({nullptr, w});
    if (lose_.empty())
        return {};
    const auto los = lose_[zufall_() % lose_.size()];
    if (los.wartender != nullptr)
        wartende_.remove(los.wartender);
    return los;
}

std::optional<Dauer> VirtuelleWelt::naechsteZeit() const {
    std::optional<Dauer> naechste;
    const auto merke = [&](Dauer zeit) { naechste = naechste ? std::min(*naechste, zeit) : zeit; };
    for (const auto& schwach : takte_)
        if (const auto takt = schwach.lock(); takt && !takt->eingereiht)
            merke(takt->faellig);
    for (const Wartender* w : wartende_)
        if (w->bisZeit)
            merke(*w->bisZeit);
    return naechste;
}

// --- the threads -----------------------------------------------------------------------------------------

void VirtuelleWelt::lebe(Faden& ich) {
    ich.schlafe();
    while (auto* reihe = std::exchange(auftrag_, nullptr)) { // none: the world has ended
        fuehreAus(*reihe);
        const auto n = naechstes();
        auftrag_ = n.reihe;
        if (n.reihe != nullptr)
            continue;
        freie_.push_back(&ich);
        weiterMit(n);
    }
}

/// A waiting job goes on on its own stack, a queued one on a free one. Returns when this thread is woken.
void VirtuelleWelt::weiterMit(const Naechstes& n) {
    if (n.wartender != nullptr)
        return wechsleZu(*n.wartender->faden);
    if (n.reihe == nullptr)
        return wechsleZu(faeden_.front());
    if (freie_.empty()) {
        Faden& neuer = faeden_.emplace_back();
        neuer.thread = std::thread([this, &neuer] { lebe(neuer); });
        freie_.push_back(&neuer);
    }
    Faden& freier = *freie_.back();
    freie_.pop_back();
    auftrag_ = n.reihe;
    wechsleZu(freier);
}

void VirtuelleWelt::wechsleZu(Faden& faden) {
    Faden& ich = *wacher_;
    if (&faden == &ich)
        return;
    wacher_ = &faden;
    faden.wecke();
    ich.schlafe();
}

void VirtuelleWelt::warte(Wartender wartender) {
    if (zuEnde_)
        throw ProzessZuEnde{};
    Reihe* const eigene = std::exchange(laufende_, nullptr);
    wartender.faden = wacher_;
    wartende_.push_back(&wartender);
    weiterMit(naechstes());
    laufende_ = eigene;
    if (zuEnde_)
        throw ProzessZuEnde{};
}

void VirtuelleWelt::laufe(Dauer bis, const std::function<bool()>* bedingung) {
    grenze_ = bis;
    bedingung_ = bedingung;
    weiterMit(naechstes());
    bedingung_ = nullptr;
}

void VirtuelleWelt::begrabe() {
    zuEnde_ = true;
    while (!wartende_.empty()) { // each unwinds on its own thread, which is free then
        Wartender* w = wartende_.front();
        wartende_.pop_front();
        wechsleZu(*w->faden);
    }
    for (auto& reihe : reihen_)
        reihe.auftraege.clear();
    for (const auto& schwach : takte_)
        if (const auto takt = schwach.lock())
            takt->eingereiht = false;
    zuEnde_ = false;
}

void VirtuelleWelt::beende() {
    begrabe();
    zuEnde_ = true;
    // None goes before all have ended: one may still be waking another.
    for (auto einer = std::next(faeden_.begin()); einer != faeden_.end(); ++einer) {
        einer->wecke();
        einer->thread.join();
    }
    faeden_.erase(std::next(faeden_.begin()), faeden_.end());
    freie_.clear();
}

} // namespace mobilsteg
