#include "probe/welt/VirtuelleSchlange.hpp"

#include "probe/welt/Weltlauf.hpp"

namespace mobilsteg {

void VirtuelleSchlange::sync(Aufgabe aufgabe) {
    if (istHier())
        schlangenFehler(*this, "sync auf die eigene Schlange");
    const auto fertig = std::make_shared<bool>(false);
    auftraege_.push_back({std::move(aufgabe), fertig});
    if (welt_.laufende == nullptr) { // the test itself
        const std::function<bool()> bis = [&] { return *fertig; };
        return welt_.laufe(Dauer::max(), &bis);
    }
    Weltlauf::Wartender wartender;
    wartender.bisFertig = fertig;
    welt_.warte(wartender);
}

Zeitgeber VirtuelleSchlange::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    auto takt = std::make_shared<Weltlauf::Takt>(
        Weltlauf::Takt{this, periode, std::move(aufgabe), welt_.jetzt + erste});
    welt_.takte.push_back(takt);
    return takt;
}

bool VirtuelleSchlange::istHier() const {
    return welt_.laufende == this;
}

void VirtuelleSchlange::fuehreAus() {
    Auftrag auftrag = std::move(auftraege_.front());
    auftraege_.pop_front();
    besetzt_ = true;
    welt_.laufende = this;
    try {
        auftrag.aufgabe();
    } catch (const WeltZuEnde&) { // the job is gone, as with its process
    }
    welt_.laufende = nullptr;
    besetzt_ = false;
    if (auftrag.fertig)
        *auftrag.fertig = true;
    if (welt_.beobachter && !welt_.zuEnde)
        welt_.beobachter();
}

} // namespace mobilsteg
