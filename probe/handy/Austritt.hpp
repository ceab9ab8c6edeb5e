#pragma once

#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Strom.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

/// The host that tells callers from which address they come. It exists inside the phone only, on every port.
inline constexpr std::string_view austrittsname = "austritt.probe";

/// Answers one HTTP request on the stream with the phone's exit address, or with rubbish if the proxy is to
/// be Proxyart::unsinn, and closes. The vorrat are bytes that the Mac has already sent.
void beantworteAustritt(std::shared_ptr<Strom> strom, Handyzustand& zustand, std::string vorrat);

} // namespace mobilsteg::probehandy
