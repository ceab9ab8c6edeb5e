// A system without libraries of this kind.

#include "plattform/Adapter.hpp"
#include "plattform/Oberflaeche.hpp"

#include <cstdlib>

namespace mobilsteg {

std::unique_ptr<Einstellungen> nativeEinstellungen(const std::string&) {
    return nullptr;
}

std::unique_ptr<Adminskript> nativesSkript() {
    return nullptr;
}

std::optional<Buendel> nativesBuendel() {
    return std::nullopt;
}

std::optional<std::string> nativerRechnername() {
    return std::nullopt;
}

bool anzeigeVorhanden() {
    const auto gesetzt = [](const char* name) {
        const char* wert = std::getenv(name);
        return wert != nullptr && *wert != '\0';
    };
    return gesetzt("DISPLAY") || gesetzt("WAYLAND_DISPLAY");
}

void alsMenueleistenprogramm() {}

void nachVorn() {}

std::optional<std::string> programmbild(const std::string&, int) {
    return std::nullopt;
}

std::optional<std::string> systemsymbol(const std::string&, int) {
    return std::nullopt;
}

// NOLINTBEGIN(performance-unnecessary-value-param): where there is such a thing, it keeps what it is given.
Abmeldung beiAbmeldung(std::function<void()>) {
    return nullptr;
}

std::unique_ptr<Leistenstueck> nativesLeistenstueck(std::function<void()>, std::function<void()>) {
    return nullptr;
}
// NOLINTEND(performance-unnecessary-value-param)

} // namespace mobilsteg
