#pragma once

#include "plattform/Orte.hpp"

#include <string>

namespace mobilsteg {

/// What makes the system start a program when its user logs in: a file in the home folder.
struct Autostart {
    std::string pfad;
    std::string inhalt;
};

/// The one of this system. `kennung` is the program's identifier, `name` is for people, `programm` its
/// absolute path.
[[nodiscard]] Autostart autostart(const Orte& orte, const std::string& kennung, const std::string& name,
                                  const std::string& programm);

// For each kind of system. Pure.

/// A Mac's, for launchd.
[[nodiscard]] Autostart launchAgent(const Orte& orte, const std::string& kennung,
                                    const std::string& programm);

/// A desktop's after the XDG rules.
[[nodiscard]] Autostart desktopEintrag(const Orte& orte, const std::string& kennung, const std::string& name,
                                       const std::string& programm);

} // namespace mobilsteg
