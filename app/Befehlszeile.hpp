#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// What the command line asks for.
struct Befehlszeile {
    enum class Tat { menueleiste, terminal, aufraeumen, selbsttest, hilfe, version, anmeldung, waechter };

    Tat tat = Tat::menueleiste;
    std::optional<std::string> heim;   ///< as given
    std::optional<std::string> wurzel; ///< as given
    std::optional<int> bewachter;      ///< the process that a watchman watches
    std::string fehler;                ///< German; not empty: the line was not understood

    /// `worte` without the program's name. Pure.
    [[nodiscard]] static Befehlszeile lies(const std::vector<std::string>& worte);
};

/// The text of `--hilfe`. `programm` is the name under which it was called.
[[nodiscard]] std::string hilfetext(const std::string& programm);

} // namespace mobilsteg
