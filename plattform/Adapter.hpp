#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Orte.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

// Which adapter a run gets: the system's own where there is one and the run works on the user's real home and
// real system, else the portable one. A run on a simulated Mac must not touch the real one.

/// An edition's settings, and where they lie, for people.
struct Einstellungsort {
    std::shared_ptr<Einstellungen> speicher;
    std::string ort;
};

[[nodiscard]] Einstellungsort einstellungenFuer(const Orte& orte, const std::string& kennung);

[[nodiscard]] std::unique_ptr<Adminskript> adminskriptFuer(const Orte& orte);

/// The package this program runs from. `kennung` is the edition's, for a program that lies in none.
[[nodiscard]] Buendel eigenesBuendel(const std::string& kennung);

// The portable ones.

/// Settings as one JSON object in the file `pfad`, shared by all programs that open it: each change reads,
/// merges one key and replaces the file under a lock. A file that cannot be understood counts as empty;
/// before it would be overwritten it is moved aside to "<name>.defekt", "<name>.defekt-2", …
[[nodiscard]] std::unique_ptr<Einstellungen> dateiEinstellungen(const std::string& pfad);

/// Runs AppleScript source by the system's `osascript`, which gets it on its standard input.
[[nodiscard]] std::unique_ptr<Adminskript> osascriptSkript(const Orte& orte);

/// Reads "…execution error: MESSAGE (NUMBER)" from the last line of what `osascript` wrote on its standard
/// error.
[[nodiscard]] Skriptfehler liesSkriptfehler(std::string_view fehlerausgabe);

/// The package of a program that lies as `<folder>/bin/<name>` (in a mac's bundle `<folder>/MacOS/<name>`)
/// with its resources in `<folder>/Resources`. `programm` is the path of the running executable; without that
/// resource folder none is reported.
[[nodiscard]] Buendel ordnerBuendel(const std::string& kennung, const std::string& programm);

// The system's own, through its libraries. Only a mac has them; elsewhere everything here is absent.

/// The user's defaults of `bereich`, a reverse-domain identifier.
[[nodiscard]] std::unique_ptr<Einstellungen> nativeEinstellungen(const std::string& bereich);

/// Runs scripts inside this process.
[[nodiscard]] std::unique_ptr<Adminskript> nativesSkript();

/// The package in which this program runs; also absent for a bare executable.
[[nodiscard]] std::optional<Buendel> nativesBuendel();

/// The machine's name as its user typed it, with blanks and umlauts.
[[nodiscard]] std::optional<std::string> nativerRechnername();

} // namespace mobilsteg
