#include "probe/welt/VirtuelleWelt.hpp"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace mobilsteg {

namespace {

/// Unwinds a waiting job when its world ends.
struct WeltZuEnde {};

/// What a thread waits on until it is given the baton.
class Stab {
public:
    void gib() {
        const std::lock_guard wache(schloss_);
        da_ = true;
        gekommen_.notify_one();
    }
    void nimm() {
        std::unique_lock wache(schloss_);
        gekommen_.wait(wache, [&] { return da_; });
        da_ = false;
    }

private:
    std::mutex schloss_;
    std::condition_variable gekommen_;
    bool da_ = false;
};

struct Auftrag {
    Aufgabe aufgabe;
    std::shared_ptr<bool> fertig; ///< somebody waits for it
};

/// A job in the middle of a sleep or a sync; its thread holds its stack.
struct Wartender {
    Stab stab;
    std::optional<Dauer> bisZeit;
    std::shared_ptr<bool> bisFertig;
};

class VirtuelleSchlange;

struct Takt {
    VirtuelleSchlange* schlange;
    Dauer periode;
    Aufgabe aufgabe;
    Dauer faellig;
    bool eingereiht = false;
};

} // namespace

// Only the holder of the baton touches any of this, so none of it needs a lock; the baton's hand-over orders
// it.
class VirtuelleWelt::Innen {
public:
    explicit Innen(std::uint64_t samen) : zufall(samen) {}

    /// Lets the world run, from the test's own thread.
    void laufe(Dauer bis, const std::function<bool()>* bedingung);
    /// Called in the middle of a job: lets the world go on until the job's own turn comes again.
    void warte(Wartender& wartender);
    void begrabe();
    void beende();

    std::mt19937_64 zufall;
    Dauer jetzt{};
    Dauer wandVersatz{};
    bool zuEnde = false;
    std::function<void()> beobachter;
    std::list<VirtuelleSchlange> schlangen;
    std::list<std::weak_ptr<Takt>> takte;
    std::list<Wartender*> wartende;

private:
    void faden(Stab& eigener);
    void weckeFaden();
    [[nodiscard]] Wartender* treibe();
    [[nodiscard]] Wartender* waehle(bool& nichts);
    void reiheTakteEin();
    [[nodiscard]] std::optional<Dauer> naechsteZeit() const;
    [[nodiscard]] bool bereit(const Wartender& w) const {
        return w.bisZeit ? *w.bisZeit <= jetzt : *w.bisFertig;
    }

    Dauer grenze_{};
    const std::function<bool()>* bedingung_ = nullptr;
    Stab rufer_; ///< the test's own thread
    std::list<Stab> stabe_;
    std::vector<Stab*> musse_; ///< threads without a job
    std::vector<std::thread> faeden_;
};

namespace {

thread_local VirtuelleSchlange* laufendeSchlange = nullptr;

class VirtuelleSchlange final : public Schlange {
public:
    VirtuelleSchlange(std::string bezeichnung, VirtuelleWelt::Innen& welt)
        : Schlange(std::move(bezeichnung)), welt_(welt) {}

    void async(Aufgabe aufgabe) override { auftraege_.push_back({std::move(aufgabe), nullptr}); }

    void sync(Aufgabe aufgabe) override {
        if (istHier())
            schlangenFehler(*this, "sync auf die eigene Schlange");
        const auto fertig = std::make_shared<bool>(false);
        auftraege_.push_back({std::move(aufgabe), fertig});
        if (laufendeSchlange == nullptr) { // the test itself
            const std::function<bool()> bis = [&] { return *fertig; };
            return welt_.laufe(Dauer::max(), &bis);
        }
        Wartender wartender;
        wartender.bisFertig = fertig;
        welt_.warte(wartender);
    }

    [[nodiscard]] Wecker wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) override {
        auto takt = std::make_shared<Takt>(Takt{this, periode, std::move(aufgabe), welt_.jetzt + erste});
        welt_.takte.push_back(takt);
        return takt;
    }

    [[nodiscard]] bool istHier() const override { return laufendeSchlange == this; }

    void fuehreAus() {
        Auftrag auftrag = std::move(auftraege_.front());
        auftraege_.pop_front();
        besetzt_ = true;
        laufendeSchlange = this;
        try {
            auftrag.aufgabe();
        } catch (const WeltZuEnde&) { // the job is gone, as with its process
        }
        laufendeSchlange = nullptr;
        besetzt_ = false;
        if (auftrag.fertig)
            *auftrag.fertig = true;
        if (welt_.beobachter && !welt_.zuEnde)
            welt_.beobachter();
    }

    [[nodiscard]] bool hatArbeit() const { return !besetzt_ && !auftraege_.empty(); }
    void leere() { auftraege_.clear(); }

private:
    std::deque<Auftrag> auftraege_;
    bool besetzt_ = false;
    VirtuelleWelt::Innen& welt_;
};

} // namespace

/// The life of one thread: with the baton it drives the world, without it it waits.
void VirtuelleWelt::Innen::faden(Stab& eigener) {
    eigener.nimm();
    while (!zuEnde) {
        Wartender* naechster = treibe();
        musse_.push_back(&eigener);
        (naechster != nullptr ? naechster->stab : rufer_).gib();
        eigener.nimm();
    }
}

void VirtuelleWelt::Innen::weckeFaden() {
    if (musse_.empty()) {
        Stab& stab = stabe_.emplace_back();
        faeden_.emplace_back([this, &stab] { faden(stab); });
        musse_.push_back(&stab);
    }
    Stab* stab = musse_.back();
    musse_.pop_back();
    stab->gib();
}

/// Runs jobs and leaps through time until a waiting job is to go on; nothing: the test is.
Wartender* VirtuelleWelt::Innen::treibe() {
    while (!zuEnde && !(bedingung_ != nullptr && (*bedingung_)())) {
        reiheTakteEin();
        bool nichts = false;
        if (Wartender* wartender = waehle(nichts))
            return wartender;
        if (!nichts)
            continue;
        const auto naechste = naechsteZeit();
        if (!naechste || *naechste > grenze_) {
            jetzt = grenze_ == Dauer::max() ? jetzt : grenze_;
            return nullptr;
        }
        jetzt = std::max(jetzt, *naechste);
    }
    return nullptr;
}

/// Draws one of all that could go on now. A queue's next job is run here and now; a waiting job is returned.
Wartender* VirtuelleWelt::Innen::waehle(bool& nichts) {
    std::vector<VirtuelleSchlange*> freie;
    for (auto& s : schlangen)
        if (s.hatArbeit())
            freie.push_back(&s);
    std::vector<Wartender*> wache;
    for (Wartender* w : wartende)
        if (bereit(*w))
            wache.push_back(w);
    if (freie.empty() && wache.empty()) {
        nichts = true;
        return nullptr;
    }
    const std::size_t los = zufall() % (freie.size() + wache.size());
    if (los < freie.size()) {
        freie[los]->fuehreAus();
        return nullptr;
    }
    Wartender* erwaehlter = wache[los - freie.size()];
    wartende.remove(erwaehlter);
    return erwaehlter;
}

void VirtuelleWelt::Innen::reiheTakteEin() {
    takte.remove_if([](const auto& t) { return t.expired(); });
    for (const auto& schwach : takte) {
        const auto takt = schwach.lock();
        if (takt->faellig > jetzt || takt->eingereiht)
            continue;
        takt->eingereiht = true;
        takt->schlange->async([this, schwach] {
            const auto lebender = schwach.lock();
            if (!lebender)
                return;
            lebender->eingereiht = false;
            lebender->faellig = naechsterTakt(lebender->faellig, lebender->periode, jetzt);
            lebender->aufgabe();
        });
    }
}

std::optional<Dauer> VirtuelleWelt::Innen::naechsteZeit() const {
    std::optional<Dauer> naechste;
    const auto merke = [&](Dauer zeit) { naechste = naechste ? std::min(*naechste, zeit) : zeit; };
    for (const auto& schwach : takte)
        if (const auto takt = schwach.lock(); takt && !takt->eingereiht)
            merke(takt->faellig);
    for (const Wartender* w : wartende)
        if (w->bisZeit)
            merke(*w->bisZeit);
    return naechste;
}

void VirtuelleWelt::Innen::warte(Wartender& wartender) {
    if (zuEnde)
        throw WeltZuEnde{};
    VirtuelleSchlange* const eigene = laufendeSchlange;
    wartende.push_back(&wartender);
    weckeFaden();
    wartender.stab.nimm();
    laufendeSchlange = eigene;
    if (zuEnde)
        throw WeltZuEnde{};
}

void VirtuelleWelt::Innen::laufe(Dauer bis, const std::function<bool()>* bedingung) {
    if (zuEnde)
        return;
    grenze_ = bis;
    bedingung_ = bedingung;
    weckeFaden();
    rufer_.nimm();
    bedingung_ = nullptr;
}

void VirtuelleWelt::Innen::begrabe() {
    zuEnde = true;
    // Each waiting job unwinds on its own thread, which then is idle like the others.
    while (!wartende.empty()) {
        Wartender* w = wartende.front();
        wartende.pop_front();
        w->stab.gib();
        rufer_.nimm();
    }
    for (auto& s : schlangen)
        s.leere();
    for (const auto& schwach : takte)
        if (const auto takt = schwach.lock())
            takt->eingereiht = false;
    zuEnde = false;
}

void VirtuelleWelt::Innen::beende() {
    begrabe();
    zuEnde = true;
    for (Stab* stab : musse_)
        stab->gib();
    for (auto& einer : faeden_)
        einer.join();
    faeden_.clear();
    musse_.clear();
}

namespace {

class VirtuelleUhr final : public Uhr {
public:
    explicit VirtuelleUhr(VirtuelleWelt::Innen& welt) : welt_(welt) {}

    [[nodiscard]] Zeitpunkt wand() const override {
        constexpr auto anfang = std::chrono::seconds(1741941667); // 14.03.2025 09:41:07 in Berlin
        return Zeitpunkt(anfang) +
               std::chrono::duration_cast<Zeitpunkt::duration>(welt_.jetzt + welt_.wandVersatz);
    }
    [[nodiscard]] Dauer monoton() const override { return welt_.jetzt; }
    void schlafe(Dauer dauer) override {
        Wartender wartender;
        wartender.bisZeit = welt_.jetzt + dauer;
        welt_.warte(wartender);
    }

private:
    VirtuelleWelt::Innen& welt_;
};

} // namespace

struct VirtuelleWelt::Teile {
    explicit Teile(std::uint64_t samen) : innen(samen), uhr(innen) {}
    Innen innen;
    VirtuelleUhr uhr;
};

VirtuelleWelt::VirtuelleWelt(std::uint64_t samen) : teile_(std::make_unique<Teile>(samen)) {}

VirtuelleWelt::~VirtuelleWelt() {
    beende();
}

Schlange& VirtuelleWelt::schlange(const std::string& bezeichnung) {
    return teile_->innen.schlangen.emplace_back(bezeichnung, teile_->innen);
}

Uhr& VirtuelleWelt::uhr() {
    return teile_->uhr;
}

Dauer VirtuelleWelt::jetzt() const {
    return teile_->innen.jetzt;
}

void VirtuelleWelt::stelleWanduhr(Dauer um) {
    teile_->innen.wandVersatz += um;
}

void VirtuelleWelt::laufe(Dauer dauer) {
    teile_->innen.laufe(jetzt() + dauer, nullptr);
}

bool VirtuelleWelt::laufeBis(const std::function<bool()>& bedingung, Dauer hoechstens) {
    teile_->innen.laufe(jetzt() + hoechstens, &bedingung);
    return bedingung();
}

void VirtuelleWelt::stirb() {
    teile_->innen.zuEnde = true;
    throw WeltZuEnde{};
}

void VirtuelleWelt::begrabe() {
    teile_->innen.begrabe();
}

void VirtuelleWelt::beobachte(std::function<void()> nachJedemAuftrag) {
    teile_->innen.beobachter = std::move(nachJedemAuftrag);
}

bool VirtuelleWelt::ruht() const {
    const auto& innen = teile_->innen;
    return innen.wartende.empty() && std::none_of(innen.schlangen.begin(), innen.schlangen.end(),
                                                  [](const auto& s) { return s.hatArbeit(); });
}

void VirtuelleWelt::beende() {
    teile_->innen.beende();
}

std::size_t VirtuelleWelt::verklemmte() const {
    std::size_t anzahl = 0;
    for (const Wartender* w : teile_->innen.wartende) {
        if (w->bisZeit)
            return 0; // somebody only sleeps, and may wake the others
        ++anzahl;
    }
    return anzahl;
}

} // namespace mobilsteg
