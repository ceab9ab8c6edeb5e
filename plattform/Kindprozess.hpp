#pragma once

#include "plattform/Dateien.hpp"

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// A started tool with the read ends of its two output pipes (non-blocking). Standard input and the
/// environment are inherited as they are; no other descriptor is.
struct Kindprozess {
    pid_t nummer = -1;
    Deskriptor ausgabe;
    Deskriptor fehler;
    /// Becomes readable when the process has ended. Absent where the system has no such thing; then
    /// `istBeendet` must be asked now and then.
    Deskriptor ende;

    /// Whether it has ended. It stays unreaped, so its number cannot have gone to another process yet.
    [[nodiscard]] bool istBeendet() const;

    /// Whether one of the signals that a terminal or a user sends to a whole process group has ended it. Only
    /// while it is unreaped.
    [[nodiscard]] bool starbAnGruppensignal() const;

    /// Sends SIGTERM, and SIGCONT to one that is stopped. Only while it is unreaped.
    void bitteUmEnde() const;

    /// Waits for its end, however long, and reaps it: exit code, or the number of the signal that ended it.
    [[nodiscard]] int warteUndErnte();

    /// Reaps it: exit code, or the number of the signal that ended it. Absent while it still runs; then it
    /// is reaped on a thread of its own whenever it ends.
    [[nodiscard]] std::optional<int> ernte();
};

/// Either a process or the reason why there is none.
struct Startversuch {
    std::optional<Kindprozess> kind;
    std::string grund; ///< German, only without `kind`
};

/// Standard streams other than the usual ones.
struct Startwunsch {
    int eingabe = -1;           ///< a descriptor to read from; -1: standard input is inherited
    bool ohneAusgabe = false;   ///< standard output goes nowhere, and its read end is missing
    bool eigeneSitzung = false; ///< no terminal, and none of a terminal's signals
};

/// Starts `programm` (absolute path, no search, no shell) with `argumente` as they are. Does not block.
[[nodiscard]] Startversuch starteProzess(const std::string& programm,
                                         const std::vector<std::string>& argumente,
                                         const Startwunsch& wunsch = {});

/// Takes one block of what the pipe holds: only one, or a tool that writes faster than it is read would never
/// let a limit be looked at. Of all blocks 16 MB are kept. Does not block. False: the other end is closed and
/// everything has been read.
[[nodiscard]] bool liesBlock(const Deskriptor& rohr, std::string& bytes);

/// A second process of this program, and our end of a channel to it.
struct Abspaltung {
    pid_t nummer = -1;
    Deskriptor kanal;
};

/// Forks a process that runs `was` with its end of the channel and then ends with status 1. It does not heed
/// SIGTERM, SIGINT and SIGHUP: what ends this one must not end it first. Only from a process with one thread.
/// Absent: `errno` tells why.
[[nodiscard]] std::optional<Abspaltung> spalteAb(const std::function<void(int kanal)>& was);

/// Lets this process open so many descriptors, or as many as the system allows.
void erlaubeDeskriptoren(std::size_t viele);

} // namespace mobilsteg
