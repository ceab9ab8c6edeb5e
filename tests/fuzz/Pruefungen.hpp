#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg::fuzz {

/// What must hold of one reader of foreign bytes, whatever these are.
struct Pruefung {
    std::string name;                                  ///< also of its folders below saat/ and funde/
    void (*pruefe)(std::string_view bytes);            ///< throws when something does not hold
    std::string anfang, zeile, ende;                   ///< a long input; "#" in the line is its number
    [[nodiscard]] std::string lange(int zeilen) const; ///< that input, with so many lines
};

[[nodiscard]] std::span<const Pruefung> pruefungen();

void verlange(bool gilt, const char* was);
void verlangeUtf8(std::string_view text);
void verlangeEinzeilig(std::string_view text); ///< UTF-8 in one line, and not an empty one

/// An input for several readers: its pieces between lines of "====", at least `anzahl`.
[[nodiscard]] std::vector<std::string> abschnitte(std::string_view bytes, std::size_t anzahl);

/// Told by the JSON library, so that our own reading of UTF-8 has somebody to differ from.
[[nodiscard]] std::string utf8NachFremderLesart(std::string_view bytes);

using Pruefer = void(std::string_view bytes); ///< throws when something does not hold

// Werkzeuge.cpp: the tools' outputs.
Pruefer adb, netzdienste, vpnliste, verbindungen, tunnelbericht, skriptfehler, skriptquelle;

// Sonstige.cpp: what comes over the wire, from the disk and from the keyboard.
Pruefer antwort, austritt, standdienst, einstellungen, berichte, befehle, eingabe, text;

} // namespace mobilsteg::fuzz
