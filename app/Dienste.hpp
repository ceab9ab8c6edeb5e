#pragma once

#include "app/Befehlszeile.hpp"
#include "handy/Adb.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Autostart.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Uhr.hpp"

#include <string>
#include <utility>

namespace mobilsteg {

/// How long the services wait for adb.
inline constexpr double adbSekunden = 5;

/// What the program's services look at without a controller.
struct Umfeld {
    Umfeld(const Befehlszeile& zeile, const std::string& kennung);
    Umfeld(Orte o, Buendel b, Einstellungsort a, Laeufer l)
        : orte(std::move(o)), buendel(std::move(b)), ablage(std::move(a)), laeufer(std::move(l)) {}

    Orte orte;
    Buendel buendel;
    Einstellungsort ablage;
    Laeufer laeufer;
    SystemProxy proxy{laeufer, orte, *ablage.speicher};
    Adb adb{laeufer, orte, buendel.ressourcen};
};

/// Takes back what a run left that has died just now, and says nothing. Needs neither phone nor adb nor
/// display, and trusts no settings file. Blocks for 2 s, or for 12 when the run was switching a proxy on, and
/// for as long as its tools take. False: something stayed, or may have stayed.
[[nodiscard]] bool raeumeNachTodAuf(Umfeld& umfeld, Uhr& uhr);

/// `--aufraeumen`: takes back what any earlier run left, prints in German what it tries and what came of it,
/// with a verdict and what to do by hand about what stayed, and all of it in the log; nothing beside a
/// running copy unless `--trotzdem`. `--anmeldung`: says nothing of a running copy either. Returns the exit
/// status: 1 when something stayed.
int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung);

/// `--selbsttest`: prints what each adapter to the system sees, and what to do about what is in the way.
/// Changes nothing. Returns the exit status: 1 when something is in the way.
int selbsttest(const Befehlszeile& zeile, const std::string& kennung);

/// `--stand`: prints one line about the running copy, or its state document. Returns the exit status: 1 when
/// none runs.
int standauskunft(const Befehlszeile& zeile);

/// `--anmelden an|aus`: the system starts this program when its user logs in, or no longer. Returns the exit
/// status.
int anmeldestart(const Befehlszeile& zeile, const std::string& kennung);

/// What `--anmelden an` writes, and where.
[[nodiscard]] Autostart autostartFuer(const Umfeld& umfeld);

} // namespace mobilsteg
