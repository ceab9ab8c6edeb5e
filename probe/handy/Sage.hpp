#pragma once

#include <cstdint>
#include <string>

namespace mobilsteg::probehandy {

/// Sends one command to the running phone behind the control port and prints its answer. Returns the exit
/// status: 0 if the answer ended in "ok", otherwise 1.
int sage(std::uint16_t steuerport, const std::string& befehl);

} // namespace mobilsteg::probehandy
