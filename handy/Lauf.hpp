#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mobilsteg {

/// What came of running an outside tool.
struct Ergebnis {
    std::int32_t status = -1; ///< exit code, or the number of the signal that ended it; -1: never started
    std::string ausgabe;      ///< standard output's first 16 MB, invalid UTF-8 repaired
    std::string fehler;       ///< standard error likewise; when never started, the reason in German

    bool operator==(const Ergebnis&) const = default;
};

/// Runs a tool: absolute path, arguments, time limit in seconds.
using Laeufer = std::function<Ergebnis(const std::string& programm, const std::vector<std::string>& argumente,
                                       double sekunden)>;

/// The real one. No shell, no search in PATH; standard input and environment are inherited. Blocks until the
/// tool has ended and both its outputs are closed; never call it on the main queue. At the limit the tool
/// gets SIGTERM and 2.0 s more, but no SIGKILL: one that ignores it and keeps its outputs open keeps the
/// caller waiting, because a tool shot in the middle of changing the system does more harm than a late one.
[[nodiscard]] Ergebnis lauf(const std::string& programm, const std::vector<std::string>& argumente,
                            double sekunden);

} // namespace mobilsteg
