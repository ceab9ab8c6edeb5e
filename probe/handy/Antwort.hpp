#pragma once

#include "probe/handy/Handyzustand.hpp"

#include <nlohmann/json.hpp>

namespace mobilsteg::probehandy {

/// What the phone's app tells a Mac that registers: the decision, the way to the proxy, and the state of the
/// uplinks.
nlohmann::json antwort(const Handyzustand& zustand);

} // namespace mobilsteg::probehandy
