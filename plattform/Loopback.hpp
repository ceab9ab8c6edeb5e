#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>

namespace mobilsteg {

/// Connects to that port of this machine, sends `frage` and hands what comes back to `nimm`, piece by piece,
/// until that wants no more (false), the other end closes or the time is up. Nobody need listen there. Any
/// queue but the main one; blocks for up to `frist`. `nimm` has to bound what it keeps.
void frageLoopback(std::uint16_t port, std::string_view frage, std::chrono::milliseconds frist,
                   const std::function<bool(std::string_view)>& nimm);

} // namespace mobilsteg
