#pragma once

#include <string>
#include <string_view>

namespace mobilsteg {

/// Where the user's home folder is, and below which folder the system's own tools lie.
struct Orte {
    std::string heim;   ///< absolute, without a trailing slash
    std::string wurzel; ///< empty: the real system; else an absolute folder that stands for "/"

    /// The path of an outside tool or system folder given by its absolute path.
    [[nodiscard]] std::string imSystem(std::string_view absolut) const {
        return wurzel + std::string(absolut);
    }

    /// The path of something in the home folder; `rest` begins with a slash.
    [[nodiscard]] std::string imHeim(std::string_view rest) const { return heim + std::string(rest); }
};

/// Where the tunnel's helper, as root, writes down what it changes until it has taken that back: beyond a
/// crash and a restart. Others only see whether it is there. `wurzel` as in `Orte`.
[[nodiscard]] std::string rueckbaunotiz(const std::string& wurzel);

/// The home folder of the user who runs the program: the account's entry; without one, HOME.
[[nodiscard]] std::string eigenesHeim();

/// The path of the running executable; empty if the system does not tell.
[[nodiscard]] std::string eigenesProgramm();

/// `pfad` made absolute against the current folder, "." and ".." resolved as text, no trailing slash.
[[nodiscard]] std::string absoluterPfad(const std::string& pfad);

/// The machine's name as its user knows it; "Mac" if the system gives none.
[[nodiscard]] std::string rechnername();

} // namespace mobilsteg
