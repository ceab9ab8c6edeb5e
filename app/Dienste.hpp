#pragma once

#include "app/Befehlszeile.hpp"
#include "handy/Adb.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Autostart.hpp"

#include <string>

namespace mobilsteg {

/// How long the services wait for adb.
inline constexpr double adbSekunden = 5;

/// What the program's services look at without a controller.
struct Umfeld {
    Umfeld(const Befehlszeile& zeile, const std::string& kennung);

    Orte orte;
    Buendel buendel;
    Einstellungsort ablage;
    SystemProxy proxy;
    Adb adb;
};

/// Takes back what any earlier run left on the Mac and prints in German what it tries and what came of it.
/// Needs neither phone nor adb nor display, trusts no settings file, and works beside a running copy. Blocks
/// for up to a minute. False: something stayed, or may have stayed.
[[nodiscard]] bool raeumeAuf(Umfeld& umfeld);

/// `--aufraeumen`: the same, with a verdict, what to do by hand about what stayed, and all of it in the log;
/// nothing beside a running copy unless `--trotzdem`. `--anmeldung`: says nothing of a running copy either.
/// Returns the exit status: 1 when something stayed.
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
