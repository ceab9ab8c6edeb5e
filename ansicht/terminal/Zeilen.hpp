#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// Cuts what was typed into lines, however the reads fell. No locks, never blocks: for one thread at a time.
class Zeilen {
public:
    /// In bytes. A line that never ends must not fill the memory; what exceeds this is no command and is
    /// dropped.
    static constexpr std::size_t laengste = 64U * 1024U;

    /// Takes the next bytes read and calls `zeile`, at once and here, for each line that they end, without
    /// its end.
    void nimm(std::string_view block, const std::function<void(std::string)>& zeile);

    /// What stands behind the last end of line, and forgets it. Absent: nothing does.
    [[nodiscard]] std::optional<std::string> rest();

private:
    void haengeAn(std::string_view text);

    std::string angefangen_;
};

} // namespace mobilsteg
