#pragma once

#include "plattform/Dateien.hpp"

#include <cstddef>
#include <string_view>

namespace mobilsteg {

// Sockets without a library's loop, for what can be done at once. On any queue; nothing blocks.

/// No tool started from here on inherits it; one that starts in this very moment may.
void nichtVererben(int nummer);

/// The next connection that waits at `horcher`, which must not block either; no tool inherits it, and a
/// client that has gone ends nobody by a signal. Absent (no descriptor): errno says why, EAGAIN that none
/// waits.
[[nodiscard]] Deskriptor naechsteVerbindung(int horcher);

/// The last bytes of a connection: as many of them as the system takes at once, and how many that were; 0
/// also when the client has gone. With the last of them goes the end of this direction: a close right behind
/// may still reset a client that has more to say, but no longer the answer.
[[nodiscard]] std::size_t schreibeZuletzt(int nummer, std::string_view bytes);

} // namespace mobilsteg
