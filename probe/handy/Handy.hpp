#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg::probehandy {

class AdbVerbindung;

struct Weg {
    bool da = true;
    double rttMs = 0;
    double rttRuheMs = 0;
};

/// The phone: what its user has set and what the Mac has sent to it. `schloss` guards all of it, the
/// connections' streams included; nothing waits for the net while it is held.
struct Handy {
    std::mutex schloss;

    std::string modell = "SM_S911B";
    bool debugging = true;
    bool weitergabe = true;
    bool gesteckt = false;
    std::string entscheidung = "fragt"; ///< or "erlaubt", "abgelehnt": as the Mac is told

    Weg wlan{true, 42.7, 30.0};
    Weg mobilfunk{true, 61.3, 48.0};

    std::string proxy = "heil"; ///< or "kaputt": hangs up after the greeting, "stumm": never says anything
    std::string antwort;        ///< what the app answers to a registration; empty: what is true

    std::string ordner; ///< where reports are kept; empty: nowhere
    int berichte = 0;
    nlohmann::json letzteAnmeldung;      ///< null before the first one
    std::vector<std::string> proxyziele; ///< "name:port", as the proxy's clients asked for them
    std::uint64_t bytesHoch = 0;         ///< from the Mac to the net, through the proxy
    std::uint64_t bytesRunter = 0;

    std::vector<std::shared_ptr<AdbVerbindung>> verbindungen;
};

// All of these expect the caller to hold `schloss`.

/// The app's answer to a Mac that registers.
[[nodiscard]] nlohmann::json anmeldeantwort(const Handy& handy);

/// One command of the phone's user, such as "weitergabe aus". False: it is none.
[[nodiscard]] bool fuehreAus(Handy& handy, std::string_view befehl);

/// The answer to the command "zustand", as one line.
[[nodiscard]] std::string zustandszeile(const Handy& handy);

/// All commands, one in a line.
extern const char* const befehlsliste;

} // namespace mobilsteg::probehandy
