#pragma once

#include "kabel/Zustand.hpp"

#include <cstdint>
#include <string>

namespace mobilsteg {

/// What stands in the menu bar: a symbol and a short text beside it.
struct Menueleiste {
    std::string symbol;
    std::string kurz;

    bool operator==(const Menueleiste&) const = default;
};

/// `rotation` counts the display timer's firings and picks the piece of the short text. Pure.
[[nodiscard]] Menueleiste menueleiste(const Zustand& zustand, std::uint64_t rotation);

} // namespace mobilsteg
