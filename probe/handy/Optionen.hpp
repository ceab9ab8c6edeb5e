#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace mobilsteg::probehandy {

/// What the command line asks for when it asks for a phone.
struct Optionen {
    std::optional<std::uint16_t> port; ///< absent: the first free one of the usual range
    std::uint16_t steuerport = 0;
    std::string ordner;   ///< empty: nothing is kept on disk
    std::string modell;   ///< empty: the usual one
    std::string austritt; ///< empty: the usual one
    std::optional<std::uint16_t> adbServer;
    bool debugging = true;
    bool weitergabe = true;
    bool erlaubt = false;
    bool stecken = false;
    bool netz = false;
};

/// One command for a phone that is already running.
struct Sageauftrag {
    std::uint16_t steuerport = 0;
    std::string befehl;
};

struct Hilfewunsch {};
struct Versionswunsch {};
struct Optionsfehler {
    std::string grund; ///< in German
};

using Aufruf = std::variant<Optionen, Sageauftrag, Hilfewunsch, Versionswunsch, Optionsfehler>;

Aufruf liesOptionen(int anzahl, const char* const* worte);

/// The overview that --hilfe prints.
extern const char* const hilfe;

} // namespace mobilsteg::probehandy
