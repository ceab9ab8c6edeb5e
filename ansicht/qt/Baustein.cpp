#include "ansicht/qt/Baustein.hpp"

#include "ansicht/qt/Gestalt.hpp"

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

Baustein baue(const Element& element, const Melder& melde, QWidget* eltern) {
    auto* flaeche = new QWidget(eltern);
    flaeche->setObjectName(qtText(element.schluessel));
    Baustein neuer = baueAnzeige(element, melde, flaeche);
    return neuer.flaeche != nullptr ? neuer : baueBedienung(element, melde, flaeche);
}

/// Not at once: what goes may be the very button whose click has led here. Hiding moves the focus on.
void entferne(QWidget* flaeche) {
    flaeche->hide();
    flaeche->setParent(nullptr);
    flaeche->deleteLater();
}

} // namespace

QHBoxLayout* waagerecht(QWidget* flaeche, int abstand) {
    auto* ordnung = new QHBoxLayout(flaeche);
    ordnung->setContentsMargins(0, 0, 0, 0);
    ordnung->setSpacing(abstand);
    return ordnung;
}

void erneuere(std::vector<Baustein>& bausteine, const Baum& neu, const Melder& melde, QWidget* eltern) {
    std::vector<Baustein> alte = std::exchange(bausteine, {});
    for (const auto& element : neu) {
        const auto bisher = std::find_if(alte.begin(), alte.end(), [&](const Baustein& b) {
            return b.gezeigt.schluessel == element.schluessel;
        });
        if (bisher == alte.end()) {
            bausteine.push_back(baue(element, melde, eltern));
        } else {
            bausteine.push_back(std::move(*bisher));
            alte.erase(bisher);
        }
        Baustein& dieser = bausteine.back();
        if (dieser.gezeigt == element)
            continue;
        dieser.gezeigt = element;
        dieser.stelleUm(element);
        dieser.flaeche->layout()->activate(); // else it would go on answering with its old height for a while
    }
    for (const auto& uebrig : alte)
        entferne(uebrig.flaeche);
}

} // namespace mobilsteg
