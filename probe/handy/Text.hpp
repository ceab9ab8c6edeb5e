#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace mobilsteg::probehandy {

/// The whole text as a number (an integer without sign, or a double with a point). Absent if anything else is
/// in it, or if the number does not fit.
template <typename Zahl>
std::optional<Zahl> alsZahl(std::string_view text) {
    Zahl zahl{};
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), zahl);
    if (fehler != std::errc() || ende != text.data() + text.size() || text.empty()) {
        return std::nullopt;
    }
    return zahl;
}

/// Takes the first word off the text, and the blanks around it. Empty once the text is used up.
std::string_view erstesWort(std::string_view& text);

std::string_view ohneRand(std::string_view text);

/// ASCII only, which is all that HTTP headers and host names need.
std::string klein(std::string_view text);

/// Decodes %XX; a plus sign stays one. Absent if a percent sign is not followed by two hex digits.
std::optional<std::string> entziffereProzent(std::string_view text);

/// The text made fit for one line of an answer: control characters and broken UTF-8 become question marks,
/// and a long text is cut with an ellipsis.
std::string zeigbar(std::string_view text);

} // namespace mobilsteg::probehandy
