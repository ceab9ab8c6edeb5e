#pragma once

#include "volltunnel/Befehlszeile.hpp"

namespace mobilsteg::volltunnel {

/// The process with the rights: makes the device, starts the tunnel as the user, sets the roads once it is
/// proven, and takes everything back at whatever end. Blocks until then; the program's status.
[[nodiscard]] int fuehreHelfer(const Auftrag& auftrag);

} // namespace mobilsteg::volltunnel
