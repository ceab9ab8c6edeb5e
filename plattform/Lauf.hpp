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
    bool abgelaufen = false;  ///< asked to end at the limit: what it has done is not known

    bool operator==(const Ergebnis&) const = default;
    [[nodiscard]] bool gelungen() const { return status == 0 && !abgelaufen; }
    /// What it said about its failure, without line ends around.
    [[nodiscard]] std::string grund() const;
};

/// Runs a tool: absolute path, arguments, time limit in seconds.
using Laeufer = std::function<Ergebnis(const std::string& programm, const std::vector<std::string>& argumente,
                                       double sekunden)>;

/// The real one. No shell, no search in PATH; standard input and environment are inherited. Blocks until the
/// tool has ended and both its outputs are closed; never call it on the main queue. At the limit the tool
/// gets SIGTERM and 2.0 s more, but no SIGKILL: one that ignores it and keeps its outputs open keeps the
/// caller waiting, because a tool shot in the middle of changing the system does more harm than a late one.
/// One that SIGTERM, SIGINT, SIGHUP or SIGQUIT ended before it wrote anything is run once more: the signal
/// was most likely meant for our process group, and SIGHUP's number is a tool's most usual exit code.
[[nodiscard]] Ergebnis lauf(const std::string& programm, const std::vector<std::string>& argumente,
                            double sekunden);

using Befehl = std::vector<std::string>; ///< absolute path of a tool and its arguments

/// The same for callers that nothing may hold up: a tool that is still there 2.0 s after SIGTERM is left
/// behind, and so is whoever keeps its outputs open after its end. At the limit `fehler` says so in German.
[[nodiscard]] Ergebnis laufBefristet(const Befehl& befehl, double sekunden);

} // namespace mobilsteg
