#pragma once

#include <cstdint>
#include <string>

namespace mobilsteg {

/// What one edition's application icon looks like.
struct Ikone {
    std::string symbol; ///< white, one of the menu bar's
    std::uint32_t oben; ///< the plate's colour, as 0xRRGGBB, fades from the one to the other
    std::uint32_t unten;
};

/// Draws it in every size that macOS asks for, into the one file that a bundle carries (.icns). Needs a
/// QApplication, but no display. Main thread; false: the file could not be written.
[[nodiscard]] bool schreibeIkone(const Ikone& ikone, const std::string& pfad);

} // namespace mobilsteg
