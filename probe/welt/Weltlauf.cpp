#include "probe/welt/Weltlauf.hpp"

#include <algorithm>
#include <utility>

namespace mobilsteg {

/// The life of one thread: from the end of each of its jobs it drives the world on.
void Weltlauf::lebe(Faden& ich) {
    ich.stab.nimm();
    while (ich.auftrag != nullptr) { // none: the world has ended
        ich.auftrag->fuehreAus();
        const auto n = naechstes();
        ich.auftrag = n.schlange;
        if (n.schlange != nullptr)
            continue;
        musse_.push_back(&ich);
        uebergib(fadenFuer(n));
    }
}

/// Leaps through time until something can go on, unless the run is over before.
Weltlauf::Naechstes Weltlauf::naechstes() {
    while (!zuEnde && !(bedingung_ != nullptr && (*bedingung_)())) {
        reiheTakteEin();
        if (const auto n = ziehe(); n.schlange != nullptr || n.wartender != nullptr)
            return n;
        const auto zeit = naechsteZeit();
        if (!zeit || *zeit > grenze_) {
            jetzt = grenze_ == Dauer::max() ? jetzt : grenze_;
            break;
        }
        jetzt = std::max(jetzt, *zeit);
    }
    return {};
}

/// Draws one of all that could go on now.
Weltlauf::Naechstes Weltlauf::ziehe() {
    lose_.clear();
    for (auto& s : schlangen)
        if (s.hatArbeit())
            lose_.push_back({&s, nullptr});
    for (Wartender* w : wartende)
        if (bereit(*w))
            lose_.push_back({nullptr, w});
    if (lose_.empty())
        return {};
    const auto los = lose_[zufall_() % lose_.size()];
    if (los.wartender != nullptr)
        wartende.remove(los.wartender);
    return los;
}

/// Where it can run: a waiting job on its own stack, a new one on a free one.
Weltlauf::Faden& Weltlauf::fadenFuer(const Naechstes& n) {
    if (n.wartender != nullptr)
        return *n.wartender->faden;
    if (n.schlange == nullptr)
        return rufer_;
    if (musse_.empty()) {
        Faden& neuer = faeden_.emplace_back();
        neuer.thread = std::thread([this, &neuer] { lebe(neuer); });
        musse_.push_back(&neuer);
    }
    Faden& freier = *musse_.back();
    musse_.pop_back();
    freier.auftrag = n.schlange;
    return freier;
}

/// Returns when the baton has come back.
void Weltlauf::uebergib(Faden& faden) {
    Faden& ich = *amZug_;
    if (&faden == &ich)
        return;
    amZug_ = &faden;
    faden.stab.gib();
    ich.stab.nimm();
}

void Weltlauf::reiheTakteEin() {
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

std::optional<Dauer> Weltlauf::naechsteZeit() const {
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

void Weltlauf::warte(Wartender& wartender) {
    if (zuEnde)
        throw WeltZuEnde{};
    VirtuelleSchlange* const eigene = std::exchange(laufende, nullptr);
    wartender.faden = amZug_;
    wartende.push_back(&wartender);
    uebergib(fadenFuer(naechstes()));
    laufende = eigene;
    if (zuEnde)
        throw WeltZuEnde{};
}

void Weltlauf::laufe(Dauer bis, const std::function<bool()>* bedingung) {
    grenze_ = bis;
    bedingung_ = bedingung;
    uebergib(fadenFuer(naechstes()));
    bedingung_ = nullptr;
}

void Weltlauf::begrabe() {
    zuEnde = true;
    // Each waiting job unwinds on its own thread, which then is idle like the others.
    while (!wartende.empty()) {
        Wartender* w = wartende.front();
        wartende.pop_front();
        uebergib(*w->faden);
    }
    for (auto& s : schlangen)
        s.leere();
    for (const auto& schwach : takte)
        if (const auto takt = schwach.lock())
            takt->eingereiht = false;
    zuEnde = false;
}

void Weltlauf::beende() {
    begrabe();
    zuEnde = true;
    for (auto& einer : faeden_) {
        einer.stab.gib();
        einer.thread.join();
    }
    faeden_.clear();
    musse_.clear();
}

} // namespace mobilsteg
