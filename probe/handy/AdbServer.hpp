#pragma once

#include <asio/io_context.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace mobilsteg::probehandy {

struct AdbServerAntwort {
    enum class Art {
        gelungen,
        abgelehnt,    ///< the server said FAIL
        unerreichbar, ///< nobody listens there
        abgebrochen,  ///< no answer in time, or none that makes sense
    };
    Art art = Art::abgebrochen;
    std::string text; ///< the server's own words, or a German reason
};

/// Asks the adb server on the loopback port one question, such as "host:connect:127.0.0.1:5600". The answer
/// comes from the event loop, exactly once and at the latest after the given time.
void frageAdbServer(asio::io_context& schleife, std::uint16_t port, std::string frage,
                    std::chrono::milliseconds frist, std::function<void(AdbServerAntwort)> fertig);

} // namespace mobilsteg::probehandy
