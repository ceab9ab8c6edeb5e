#pragma once

#include <string>

namespace mobilsteg {

/// How far the way through the phone has come. `faehrt` is the only phase in which traffic passes.
struct Phase {
    enum class Art {
        proxyFehler,
        start,
        keinAdb,
        keinHandy,
        nichtAutorisiert,
        weitergabeAus,
        wartetAufHandy,
        abgelehnt,
        pruefung,
        faehrt,
    };

    Art art = Art::start;
    std::string grund; ///< only with `proxyFehler`: why, as the user reads it

    // NOLINTNEXTLINE(google-explicit-constructor): a phase without a reason is its kind
    Phase(Art a = Art::start) : art(a) {}
    [[nodiscard]] static Phase proxyFehler(std::string grund);

    /// The line that the user reads.
    [[nodiscard]] std::string text() const;

    bool operator==(const Phase&) const = default;
};

} // namespace mobilsteg
