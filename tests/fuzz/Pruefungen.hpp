#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace mobilsteg::fuzz {

/// What must hold of one reader of foreign bytes, whatever these are.
struct Pruefung {
    std::string name;                       ///< also of its folders below saat/ and funde/
    void (*pruefe)(std::string_view bytes); ///< throws when something does not hold
    std::string anfang, zeile, ende;        ///< a long input; "#" in the line is its number
};

[[nodiscard]] std::span<const Pruefung> pruefungen();

inline void verlange(bool gilt, const char* was) {
    if (!gilt)
        throw std::logic_error(was);
}

inline void verlangeUtf8(std::string_view text) {
    (void)nlohmann::json(text).dump(); // throws when it is not
}

inline void verlangeEinzeilig(std::string_view text) {
    verlangeUtf8(text);
    verlange(!text.empty() && text.find('\n') == std::string_view::npos, "one line, and not an empty one");
}

/// An input for two readers: what stands before and behind the first line of "====".
inline std::pair<std::string, std::string> geteilt(const std::string& bytes) {
    const auto grenze = std::min(bytes.find("\n====\n"), bytes.size());
    return {bytes.substr(0, grenze), bytes.substr(std::min(grenze + 6, bytes.size()))};
}

using Pruefer = void(std::string_view bytes);
// Werkzeuge.cpp: what the tools print.
Pruefer adb, netzdienste, proxyziel, vpnliste, verbindungen, tunnelbericht, skriptfehler, skriptquelle;

// Sonstige.cpp: what comes over the wire, from the disk and from the keyboard.
Pruefer antwort, austritt, standdienst, einstellungen, berichte, befehle, eingabe, text;

} // namespace mobilsteg::fuzz
