#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace mobilsteg::volltunnel {

/// What came of running a tool of the system.
struct Werkzeuglauf {
    bool gelungen = false;
    bool abgelaufen = false; ///< ended at the limit: what it has done is not known
    std::string ausgabe;     ///< standard output
    std::string fehler;      ///< standard error, or why it did not start or was ended; German

    [[nodiscard]] std::string grund() const; ///< what it said, without line ends around
};

/// Runs `befehl`, an absolute path and its arguments, without a shell. Blocks for `frist` and two seconds
/// more at most: a tool that does not heed SIGTERM is left behind.
[[nodiscard]] Werkzeuglauf fuehreAus(const std::vector<std::string>& befehl, std::chrono::milliseconds frist);

/// Writes a line with the time to standard output, in one piece.
void protokolliere(const std::string& text);

} // namespace mobilsteg::volltunnel
