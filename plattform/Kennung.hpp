#pragma once

#include <string>

namespace mobilsteg {

/// A fresh random UUID in its canonical text form, lower case.
[[nodiscard]] std::string neueKennung();

} // namespace mobilsteg
