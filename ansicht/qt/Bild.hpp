#pragma once

#include "ansicht/Baum.hpp"
#include "plattform/Anschluesse.hpp"

#include <string>

namespace mobilsteg {

/// Draws the panel as it looks with the light or the dark palette into a PNG file, with `massstab` pixels per
/// point, without ever showing it. Needs a QApplication, but no display. Main thread; false: the file could
/// not be written.
[[nodiscard]] bool maleBild(const Baum& baum, bool dunkel, const std::string& pfadPng, double massstab);

/// The same with a question.
[[nodiscard]] bool maleFrage(const Frage& frage, bool dunkel, const std::string& pfadPng, double massstab);

/// The same with all symbols and their names, in the sizes that they are used in.
[[nodiscard]] bool maleSymboltafel(bool dunkel, const std::string& pfadPng, double massstab);

} // namespace mobilsteg
