#pragma once

#include "ansicht/Baum.hpp"

#include <optional>
#include <vector>

namespace mobilsteg {

/// For each element of `neu` the position in `alt` of the one whose widgets it takes over; absent: it gets
/// new ones. The positions ascend. The same thing (the same control, the row of the same label) is found
/// before another of the same kind, and a control never turns into another under the user's finger. Pure.
[[nodiscard]] std::vector<std::optional<std::size_t>> gleicheAb(const Baum& alt, const Baum& neu);

} // namespace mobilsteg
