#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

// The adb server's own protocol, for what would cost too much by the adb tool. We are a client of the server
// like the tool, but start none: that is left to the tool.

/// The port of the server that the adb tool would use; absent: not on this machine, or nothing sensible.
[[nodiscard]] std::optional<std::uint16_t> adbServerport();

inline constexpr std::string_view verfolgeGeraete = "0012host:track-devices";
inline constexpr std::string_view nenneForwards = "0011host:list-forward";

/// Cuts what an adb server answers into reports: four hexadecimal digits, and as many bytes as they say.
/// Keeps at most two reports of 64 KB and one block. No locks, never blocks.
class Adbmeldungen {
public:
    /// Takes the next bytes. False: the server refuses or speaks something else, and the connection is of no
    /// use.
    [[nodiscard]] bool nimm(std::string_view bytes);

    /// The last report that the bytes so far complete, told once. Absent: none since the last one told.
    [[nodiscard]] std::optional<std::string> neueste();

private:
    std::string rest_;
    std::optional<std::string> neueste_;
    bool zugesagt_ = false; ///< the server has agreed to report
};

/// What the server forwards, as the adb tool lists it. Work queue; blocks for up to 1 s. Absent: it did not
/// answer, or is not to be asked.
[[nodiscard]] std::optional<std::string> forwardsVomServer();

} // namespace mobilsteg
