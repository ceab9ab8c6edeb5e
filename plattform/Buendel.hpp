#pragma once

#include <optional>
#include <string>

namespace mobilsteg {

/// What the program knows about its own package.
struct Buendel {
    std::string kennung;                   ///< reverse-domain identifier; empty if the package has none
    std::optional<std::string> ressourcen; ///< resource folder; absent: the package reports none
    std::optional<std::string> version;    ///< the version shown to people
    std::optional<std::string> bauversion; ///< the build's own number
};

/// The package of a program that lies as `<folder>/bin/<name>` (in a mac's bundle `<folder>/MacOS/<name>`)
/// with its resources in `<folder>/Resources`. `programm` is the path of the running executable; without that
/// resource folder none is reported.
[[nodiscard]] Buendel ordnerBuendel(std::string kennung, const std::string& programm);

/// The path of the running executable; empty if the system does not tell.
[[nodiscard]] std::string eigenesProgramm();

} // namespace mobilsteg
