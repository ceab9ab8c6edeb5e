#pragma once

#include "plattform/Adminskript.hpp"
#include "plattform/Orte.hpp"

#include <string_view>

namespace mobilsteg {

/// Runs AppleScript source by the system's `osascript`, which gets it on its standard input.
class OsascriptSkript final : public Adminskript {
public:
    explicit OsascriptSkript(Orte orte) : orte_(std::move(orte)) {}

    [[nodiscard]] std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override;

    /// Reads "…execution error: MESSAGE (NUMBER)" from the last line of its standard error. Pure.
    [[nodiscard]] static Skriptfehler lies(std::string_view fehlerausgabe);

private:
    Orte orte_;
};

} // namespace mobilsteg
