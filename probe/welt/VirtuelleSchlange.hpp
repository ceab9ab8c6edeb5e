#pragma once

#include "plattform/Schlange.hpp"

#include <deque>
#include <memory>
#include <string>

namespace mobilsteg {

class Weltlauf;

/// A queue of a world under virtual time: whoever drives that world runs its jobs, one by one.
class VirtuelleSchlange final : public Schlange {
public:
    VirtuelleSchlange(std::string bezeichnung, Weltlauf& welt)
        : Schlange(std::move(bezeichnung)), welt_(welt) {}

    void async(Aufgabe aufgabe) override { auftraege_.push_back({std::move(aufgabe), nullptr}); }
    void sync(Aufgabe aufgabe) override;
    [[nodiscard]] Zeitgeber wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) override;
    [[nodiscard]] bool istHier() const override;

    [[nodiscard]] bool hatArbeit() const { return !besetzt_ && !auftraege_.empty(); }
    void fuehreAus();
    void leere() { auftraege_.clear(); }

private:
    struct Auftrag {
        Aufgabe aufgabe;
        std::shared_ptr<bool> fertig; ///< somebody waits for it
    };

    std::deque<Auftrag> auftraege_;
    bool besetzt_ = false;
    Weltlauf& welt_;
};

} // namespace mobilsteg
