#pragma once

#include "plattform/Adminskript.hpp"
#include "plattform/Buendel.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Orte.hpp"

#include <memory>
#include <string>

namespace mobilsteg {

// Which adapter a run gets: the system's own where there is one and the run works on the user's real home and
// real system, else the portable one. A run on a simulated Mac must not touch the real one.

/// An edition's settings, and where they lie, for people.
struct Einstellungsort {
    std::unique_ptr<Einstellungen> speicher;
    std::string ort;
};

[[nodiscard]] Einstellungsort einstellungenFuer(const Orte& orte, const std::string& kennung);

[[nodiscard]] std::unique_ptr<Adminskript> adminskriptFuer(const Orte& orte);

/// The package this program runs from. `kennung` is the edition's, for a program that lies in none.
[[nodiscard]] Buendel eigenesBuendel(const std::string& kennung);

} // namespace mobilsteg
