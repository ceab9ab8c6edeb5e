#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

// What the program asks of the system it runs on. Adapter.hpp gives the implementations, the toolkit's the
// dialog.

/// What the program knows about its own package.
struct Buendel {
    std::string kennung;                   ///< reverse-domain identifier; empty if the package has none
    std::optional<std::string> ressourcen; ///< resource folder; absent: the package reports none
    std::optional<std::string> version;    ///< the version shown to people
    std::optional<std::string> bauversion; ///< the build's own number
};

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

/// A modal question to the user.
struct Frage {
    std::string nachricht;
    std::string erlaeuterung;
    std::vector<std::string> knoepfe; ///< the first is the default
};

class Dialog {
public:
    virtual ~Dialog() = default;

    /// Brings the program to the front, asks, and blocks until the user answers. Main queue only. Returns
    /// the index of the chosen button; any other way of closing counts as one that is not the first: -1.
    [[nodiscard]] virtual int frage(const Frage& frage) = 0;
};

} // namespace mobilsteg
