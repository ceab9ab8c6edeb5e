#pragma once

#include "handy/Antwort.hpp"
#include "kabel/Zustand.hpp"
#include "plattform/Uhr.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// Where it lies in the home folder.
inline constexpr const char* standOrt = "/Library/Application Support/Mobilsteg Bordlotse/stand.json";

/// The facts that the state document tells, gathered at one moment of the work queue.
struct Standangaben {
    std::string app;
    Uhr::Zeitpunkt zeit;
    Phase phase;
    std::string austritt;
    std::string handy;
    std::string id;
    std::string name;
    bool proxyGesetzt = false;
    bool volltunnel = false;
    bool vpnDurch = false;
    bool nurVPN = false;
    bool proxyAutomatisch = false;
    std::string dienst;
    std::string adb;
};

/// The document as bytes: JSON, UTF-8, keys sorted, indented. `antwort` adds what the phone told in this
/// tick. Pure.
[[nodiscard]] std::string standDokument(const Standangaben& angaben, const std::optional<Antwort>& antwort);

/// Makes the document that a dead program left at `pfad` say that it has ended; what is no such document
/// stays. Blocks on the disk.
void beendeStand(const std::string& pfad, bool proxyGesetzt);

/// The document in one line: "Fährt mit · 2. Klasse · WLAN 42 ms · 12,4 MB". Empty: it is no such document.
/// Pure.
[[nodiscard]] std::string standzeile(std::string_view dokument);

} // namespace mobilsteg
