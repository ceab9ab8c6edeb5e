#pragma once

#include <span>
#include <string>
#include <string_view>

namespace mobilsteg::fuzz {

/// What must hold of one reader of foreign bytes, whatever these are.
struct Pruefung {
    std::string name;                       ///< also of its folders below saat/ and funde/
    void (*pruefe)(std::string_view bytes); ///< throws when something does not hold
    std::string anfang, zeile, ende;        ///< a long input; "#" in the line is its number
};

[[nodiscard]] std::span<const Pruefung> pruefungen();

} // namespace mobilsteg::fuzz
