#pragma once

#include "plattform/Dateien.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

// Blocking sockets on the loopback address. ::shutdown() from another thread ends every wait.

/// Port 0: any free one. Absent: errno says why.
[[nodiscard]] Deskriptor horche(int port);
[[nodiscard]] int portVon(const Deskriptor& horcher);

/// Waits for the next connection.
[[nodiscard]] Deskriptor nimmVerbindungAn(const Deskriptor& horcher);

/// Absent: nobody listens there.
[[nodiscard]] Deskriptor verbinde(int port);

/// False: the other side is gone.
bool sende(const Deskriptor& buchse, std::string_view bytes);
[[nodiscard]] bool liesGenau(const Deskriptor& buchse, void* ziel, std::size_t anzahl);

/// Everything up to the connection's end.
[[nodiscard]] std::string liesAlles(const Deskriptor& buchse);

/// What is there next; empty: the connection's end.
[[nodiscard]] std::string lies(const Deskriptor& buchse);

} // namespace mobilsteg::probehandy
