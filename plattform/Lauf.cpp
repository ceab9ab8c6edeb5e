#include "plattform/Lauf.hpp"

#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>

namespace mobilsteg {

namespace {

using Zeit = std::chrono::steady_clock;

constexpr auto gnadenfrist = std::chrono::seconds(2);
// A process closes its outputs a little before it can be reaped.
constexpr auto nachlauf = std::chrono::milliseconds(500);
// How often a process is asked whether it has ended, where the system cannot announce it.
constexpr int nachfrageMs = 20;

/// Reads what the outputs bring until `ende` or one of them says something, or the time is up.
void warte(Kindprozess& kind, Ergebnis& ergebnis, int ende, int millisekunden) {
    // poll passes over negative descriptors, so a closed output needs no case of its own.
    std::array<pollfd, 3> faelle = {pollfd{kind.ausgabe.nummer(), POLLIN, 0},
                                    pollfd{kind.fehler.nummer(), POLLIN, 0}, pollfd{ende, POLLIN, 0}};
    if (::poll(faelle.data(), faelle.size(), millisekunden) <= 0)
        return;
    if (faelle[0].revents != 0 && !liesBlock(kind.ausgabe, ergebnis.ausgabe))
        kind.ausgabe.schliesse();
    if (faelle[1].revents != 0 && !liesBlock(kind.fehler, ergebnis.fehler))
        kind.fehler.schliesse();
}

/// Reads the outputs until the process has ended (true) or the time is up.
bool bisEnde(Kindprozess& kind, Ergebnis& ergebnis, std::chrono::duration<double> dauer) {
    const auto frist = Zeit::now() + std::chrono::duration_cast<Zeit::duration>(dauer);
    while (!kind.istBeendet()) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(frist - Zeit::now()).count();
        if (rest <= 0)
            return false;
        const int hoechstens = kind.ende ? 60'000 : nachfrageMs;
        warte(kind, ergebnis, kind.ende.nummer(), static_cast<int>(std::min<long long>(rest, hoechstens)));
    }
    return true;
}

/// With `befristet` nobody who keeps the outputs open is waited for. A tool is in our process group for the
/// first microseconds: a signal that the whole group gets just then ends it before it has begun, and it is
/// started once more with `nochmal`.
Ergebnis fuehreAus(const std::string& programm, const std::vector<std::string>& argumente, double sekunden,
                   bool befristet, bool nochmal = true) {
    Startversuch versuch = starteProzess(programm, argumente);
    if (!versuch.kind)
        return {-1, "", versuch.grund};
    Kindprozess& kind = *versuch.kind;
    Ergebnis ergebnis;
    if (!bisEnde(kind, ergebnis, std::chrono::duration<double>(sekunden))) {
        ergebnis.abgelaufen = true;
        kind.bitteUmEnde();
        bisEnde(kind, ergebnis, gnadenfrist);
    }
    const auto frist = Zeit::now() + nachlauf;
    while ((kind.ausgabe || kind.fehler) && !(befristet && Zeit::now() > frist))
        warte(kind, ergebnis, -1, befristet ? nachfrageMs : -1);
    bisEnde(kind, ergebnis, nachlauf);
    const bool nieBegonnen = nochmal && !ergebnis.abgelaufen && ergebnis.ausgabe.empty() &&
                             ergebnis.fehler.empty() && kind.starbAnGruppensignal();
    // Still running with both outputs closed: it was asked to go and will.
    ergebnis = {kind.ernte().value_or(SIGTERM), alsUtf8(ergebnis.ausgabe), alsUtf8(ergebnis.fehler),
                ergebnis.abgelaufen};
    return nieBegonnen ? fuehreAus(programm, argumente, sekunden, befristet, false) : ergebnis;
}

} // namespace

std::string Ergebnis::grund() const {
    return std::string(beschnitten(fehler.empty() ? ausgabe : fehler));
}

Ergebnis lauf(const std::string& programm, const std::vector<std::string>& argumente, double sekunden) {
    return fuehreAus(programm, argumente, sekunden, false);
}

Ergebnis laufBefristet(const Befehl& befehl, double sekunden) {
    Ergebnis ergebnis = fuehreAus(befehl.front(), {befehl.begin() + 1, befehl.end()}, sekunden, true);
    if (ergebnis.abgelaufen)
        ergebnis.fehler = befehl.front() + ": keine Antwort in " +
                          std::to_string(static_cast<int>(std::lround(sekunden))) + " s";
    return ergebnis;
}

} // namespace mobilsteg
