#pragma once

#include <string>
#include <string_view>

namespace mobilsteg::Geraetename {

/// The name under which a phone is sold, from its model code ("SM-S911B" gives "Samsung Galaxy S23"). A code
/// that is not known is returned as it is, with the maker in front where the code tells it. Pure.
[[nodiscard]] std::string schoen(std::string_view modellcode);

} // namespace mobilsteg::Geraetename
