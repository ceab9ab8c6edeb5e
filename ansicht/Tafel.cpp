#include "ansicht/Tafel.hpp"

#include "ansicht/Inhalt.hpp"

namespace mobilsteg {

Tafel::Tafel(Zustandsspeicher& speicher, bool bundleB2B, Zeichner zeichner)
    : bundleB2B_(bundleB2B), zeichner_(std::move(zeichner)) {
    zeige(speicher.zustand());
    beobachtung_ = speicher.beobachte([this](const Zustand& z) { zeige(z); });
}

void Tafel::zeige(const Zustand& zustand) {
    Baum neu = inhalt(zustand, bundleB2B_);
    if (neu == baum_)
        return;
    baum_ = std::move(neu);
    zeichner_(baum_);
}

} // namespace mobilsteg
