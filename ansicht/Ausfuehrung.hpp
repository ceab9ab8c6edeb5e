#pragma once

#include "ansicht/Baum.hpp"

#include <functional>
#include <vector>

namespace mobilsteg {

class Kabel;

/// Every action that the panel offers right now, in its order: of a switch the one that would change it, of a
/// choice each value that is not chosen. Pure.
struct Angebot {
    Aktion aktion;
    std::string text; ///< the control's own text

    bool operator==(const Angebot&) const = default;
};
[[nodiscard]] std::vector<Angebot> angebote(const Baum& baum);

/// Carries the action out on the controller; `beende` asks the program to quit. Main queue only, returns at
/// once.
void fuehreAus(const Aktion& aktion, Kabel& kabel, const std::function<void()>& beende);

} // namespace mobilsteg
