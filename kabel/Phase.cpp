#include "kabel/Phase.hpp"

#include <utility>

namespace mobilsteg {

Phase Phase::proxyFehler(std::string grund) {
    Phase phase(Art::proxyFehler);
    phase.grund = std::move(grund);
    return phase;
}

std::string Phase::text() const {
    switch (art) {
    case Art::proxyFehler:
        return grund;
    case Art::start:
        return "Starte …";
    case Art::keinAdb:
        return "adb nicht gefunden — Android-Platform-Tools installieren (brew install --cask "
               "android-platform-tools)";
    case Art::keinHandy:
        return "Kein Handy am Kabel — USB-Debugging an?";
    case Art::nichtAutorisiert:
        return "Am Handy „USB-Debugging zulassen“ bestätigen";
    case Art::weitergabeAus:
        return "In Mobilsteg: 2. oder 1. Klasse, Weitergabe an, Losfahren";
    case Art::wartetAufHandy:
        return "Warte auf das Ja am Handy …";
    case Art::abgelehnt:
        return "Am Handy abgelehnt";
    case Art::pruefung:
        return "Prüfe den Weg durch das Handy …";
    case Art::faehrt:
        return "Fährt mit";
    }
    return "";
}

} // namespace mobilsteg
