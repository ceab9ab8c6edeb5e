#include "ansicht/qt/Baustein.hpp"

#include "ansicht/qt/Abgleich.hpp"

#include <QLayout>

#include <algorithm>

namespace mobilsteg {

namespace {

Baustein* baue(const Element& element, const Melder& melde, QWidget* eltern) {
    auto* baustein = baueAnzeige(element, eltern);
    if (baustein == nullptr)
        baustein = baueBedienung(element, melde, eltern);
    baustein->zeige(element);
    return baustein;
}

/// Not at once: what goes may be the very button whose click has led here. Hiding moves the focus on.
void entferne(Baustein* baustein) {
    baustein->hide();
    baustein->setParent(nullptr);
    baustein->deleteLater();
}

} // namespace

void erneuere(const Baum& alt, const Baum& neu, std::vector<Baustein*>& bausteine, const Melder& melde,
              QWidget* eltern) {
    const auto herkunft = gleicheAb(alt, neu);
    std::vector<Baustein*> neue;
    for (std::size_t i = 0; i < neu.size(); ++i) {
        if (!herkunft[i]) {
            neue.push_back(baue(neu[i], melde, eltern));
            continue;
        }
        auto* baustein = bausteine[*herkunft[i]];
        neue.push_back(baustein);
        if (neu[i] == alt[*herkunft[i]])
            continue;
        baustein->zeige(neu[i]);
        baustein->layout()->activate(); // else it would go on answering with its old height for a while
    }
    for (auto* bisheriger : bausteine)
        if (std::find(neue.begin(), neue.end(), bisheriger) == neue.end())
            entferne(bisheriger);
    bausteine = std::move(neue);
}

} // namespace mobilsteg
