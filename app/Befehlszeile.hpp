#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mobilsteg {

/// What the command line asks for.
struct Befehlszeile {
    enum class Tat {
        menueleiste,
        terminal,
        stand,
        aufraeumen,
        selbsttest,
        anmelden,
        hilfe,
        version,
        anmeldung,
        waechter
    };

    Tat tat = Tat::menueleiste;
    std::optional<std::string> heim;      ///< as given
    std::optional<std::string> wurzel;    ///< as given
    std::optional<std::string> anmelden;  ///< "an" or "aus"
    std::optional<std::string> bewachter; ///< the number of the process that a watchman watches
    std::optional<std::string> json;      ///< beside --stand; there or not, like the next one
    std::optional<std::string> trotzdem;  ///< beside --aufraeumen
    std::string fehler;                   ///< German; not empty: the line was not understood

    /// `worte` without the program's name. Pure.
    [[nodiscard]] static Befehlszeile lies(const std::vector<std::string>& worte);
};

/// One option. Parsing, help, man page and completions come from the one table of them.
struct Option {
    using Tat = Befehlszeile::Tat;
    using Wert = std::optional<std::string> Befehlszeile::*;

    std::string_view name;
    std::string_view argument; ///< "DIR", a number "N", or words like "an|aus"; empty: it takes none
    std::string_view text;     ///< what it does, in German; empty: for the program itself, shown to nobody
    std::optional<Tat> tat{};  ///< what it asks for; two options that have one exclude each other
    Wert wert = nullptr;       ///< where its argument goes
    std::string_view neben{};  ///< the only option beside which it is of use; empty: any
};

inline constexpr std::array<Option, 13> optionen = {{
    {"--terminal", "", "das Panel im Terminal statt in der Menüleiste", Option::Tat::terminal},
    {"--stand", "", "eine Zeile über den laufenden Bordlotsen", Option::Tat::stand},
    {"--json", "", "mit --stand: das ganze Dokument", std::nullopt, &Befehlszeile::json, "--stand"},
    {"--aufraeumen", "", "zurücknehmen, was ein früherer Lauf am Mac hinterlassen hat",
     Option::Tat::aufraeumen},
    {"--trotzdem", "", "mit --aufraeumen: auch neben einem laufenden Bordlotsen", std::nullopt,
     &Befehlszeile::trotzdem, "--aufraeumen"},
    {"--selbsttest", "", "prüfen, was im Weg steht, und was dagegen hilft", Option::Tat::selbsttest},
    {"--anmelden", "an|aus", "beim Anmelden am Mac starten, oder nicht mehr", Option::Tat::anmelden,
     &Befehlszeile::anmelden},
    {"--heim", "DIR", "DIR statt des eigenen Heimordners", std::nullopt, &Befehlszeile::heim},
    {"--wurzel", "DIR", "alle Werkzeuge des Systems unterhalb von DIR suchen", std::nullopt,
     &Befehlszeile::wurzel},
    {"--hilfe", "", "diese Hilfe", Option::Tat::hilfe},
    {"--version", "", "die Version", Option::Tat::version},
    {"--anmeldung", "", "", Option::Tat::anmeldung},
    {"--waechter", "N", "", Option::Tat::waechter, &Befehlszeile::bewachter},
}};

/// One part of what is told about the program: each entry's mark (empty: it has none) and its text.
struct Hilfeabschnitt {
    std::string titel;
    std::vector<std::pair<std::string, std::string>> eintraege;
};

/// `programm` is the name under which it is called. Pure.
[[nodiscard]] std::vector<Hilfeabschnitt> hilfeabschnitte(const std::string& programm);

/// The same as the text of `--hilfe`, at most 80 columns wide.
[[nodiscard]] std::string hilfetext(const std::string& programm);

/// What the program is for, in half a sentence.
inline constexpr std::string_view zweck = "bringt den Mac über das USB-Kabel mit dem Android-Handy ins Netz";

} // namespace mobilsteg
