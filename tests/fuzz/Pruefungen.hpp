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

/// An input for several readers: its pieces between lines of "====", at least `anzahl`.
[[nodiscard]] std::vector<std::string> abschnitte(std::string_view bytes, std::size_t anzahl);

/// Told by the JSON library, so that our own reading of UTF-8 has somebody to differ from.
[[nodiscard]] std::string utf8NachFremderLesart(std::string_view bytes);
void verlangeUtf8(std::string_view text);

// The tools' outputs.
void adb(std::string_view);
void netzdienste(std::string_view);
void vpnliste(std::string_view);
void verbindungen(std::string_view);
void tunnelbericht(std::string_view);
void skriptfehler(std::string_view);
void skriptquelle(std::string_view);

// What comes over the wire, from the disk and from the keyboard.
void antwort(std::string_view);
void austritt(std::string_view);
void standdienst(std::string_view);
void einstellungen(std::string_view);
void berichte(std::string_view);
void befehle(std::string_view);
void eingabe(std::string_view);
void text(std::string_view);

} // namespace mobilsteg::fuzz
