#pragma once

#include "app/Befehlszeile.hpp"
#include "handy/Adb.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Adapter.hpp"

#include <string>

namespace mobilsteg {

/// What the program's services look at without a controller.
struct Umfeld {
    Umfeld(const Befehlszeile& zeile, const std::string& kennung);

    Orte orte;
    Buendel buendel;
    Einstellungsort ablage;
    SystemProxy proxy;
    Adb adb;
};

/// Takes back what any earlier run left on the Mac and says in German what it found and did. Needs neither
/// phone nor adb nor display, trusts no settings file, and works beside a running copy. Blocks for up to a
/// minute. False: something stayed, or may have stayed.
[[nodiscard]] bool raeumeAuf(Umfeld& umfeld);

/// `--aufraeumen`: the same, and what to do by hand about what stayed. `--anmeldung`: nothing while a copy
/// runs. Returns the exit status: 1 when something stayed.
int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung);

/// `--selbsttest`: prints what each adapter to the system sees. Changes nothing. Returns the exit status.
int selbsttest(const Befehlszeile& zeile, const std::string& kennung);

} // namespace mobilsteg
