#pragma once

#include <optional>
#include <string>

namespace mobilsteg {

/// Why a script with administrator privileges did not run to its end.
struct Skriptfehler {
    bool nichtGebaut = false;           ///< the script object could not be made from the source
    int nummer = 0;                     ///< 0 if the system gave none; -128: the user cancelled
    std::optional<std::string> meldung; ///< the system's text, in the user's language
};

class Adminskript {
public:
    virtual ~Adminskript() = default;

    /// Runs AppleScript source and blocks until it has ended, the password dialog included. Main queue only.
    /// Absent: it succeeded.
    [[nodiscard]] virtual std::optional<Skriptfehler> fuehreAus(const std::string& quelle) = 0;
};

} // namespace mobilsteg
