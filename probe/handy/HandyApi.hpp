#pragma once

#include "probe/handy/Gedaechtnis.hpp"
#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Strom.hpp"

#include <memory>

namespace mobilsteg::probehandy {

/// Serves one client of the phone app's HTTP interface: POST /api/kabel registers a Mac, POST /api/bericht
/// leaves a report. Connections stay open for further requests unless the client wishes otherwise.
void bedieneApi(std::shared_ptr<Strom> strom, Handyzustand& zustand, Gedaechtnis& gedaechtnis);

} // namespace mobilsteg::probehandy
