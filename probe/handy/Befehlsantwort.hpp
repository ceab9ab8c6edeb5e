#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg::probehandy {

/// What a command has brought about.
struct Befehlsantwort {
    std::vector<std::string> zeilen;
    std::optional<std::string> fehler; ///< the reason, in German; absent: it worked
    bool ende = false;                 ///< the program is to end as soon as this answer is out

    /// As it goes over the wire: all lines, then "ok" or "fehler: …".
    std::string alsText() const {
        std::string text;
        for (const std::string& zeile : zeilen) {
            text += zeile + '\n';
        }
        return text + (fehler ? "fehler: " + *fehler : "ok") + '\n';
    }
};

using Antworter = std::function<void(Befehlsantwort)>;

} // namespace mobilsteg::probehandy
