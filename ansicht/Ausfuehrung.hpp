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

/// Carries actions out on the controller. Main queue only, returns at once.
class Ausfuehrung {
public:
    /// `beenden` asks the program to quit.
    Ausfuehrung(Kabel& kabel, std::function<void()> beenden);

    void bediene(const Aktion& aktion);

private:
    void oeffneBrowser(const std::string& name);

    Kabel& kabel_;
    std::function<void()> beenden_;
};

} // namespace mobilsteg
