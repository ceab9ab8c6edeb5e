#pragma once

#include "kabel/Zustand.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"

#include <string>
#include <vector>

namespace mobilsteg {

/// Finds the installed Chromium-family browsers and whether our extension is in them.
class Browser {
public:
    using Fund = BrowserFund;

    Browser(Laeufer laeufer, Orte orte, const Einstellungen& einstellungen);

    /// The installed browsers, in the table's order. Looks at the disk only; work queue.
    [[nodiscard]] std::vector<Fund> finden() const;

    /// Whether the extension lies in any profile below `profilwurzel`. Folders that cannot be read hold
    /// nothing.
    [[nodiscard]] static bool hatFahrtwind(const std::string& profilwurzel);

    /// Opens the extension's page in exactly that browser. Blocks for up to 10 s; work queue.
    void hinzufuegen(const Fund& fund) const;

private:
    Laeufer laeufer_;
    Orte orte_;
    const Einstellungen& einstellungen_;
};

} // namespace mobilsteg
