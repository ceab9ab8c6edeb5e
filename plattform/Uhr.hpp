#pragma once

#include "plattform/Schlange.hpp"

#include <chrono>
#include <string>
#include <thread>

namespace mobilsteg {

/// The clock of everything that a test runs in virtual time. Queues on real time and the network code read
/// the system's clock themselves.
class Uhr {
public:
    using Zeitpunkt = std::chrono::system_clock::time_point;

    virtual ~Uhr() = default;

    /// The time of day; jumps when the user or the network sets the clock.
    [[nodiscard]] virtual Zeitpunkt wand() const = 0;

    /// Time since an arbitrary beginning; never runs backwards.
    [[nodiscard]] virtual Dauer monoton() const = 0;

    /// Blocks the calling queue for `dauer`.
    virtual void schlafe(Dauer dauer) = 0;
};

class Systemuhr final : public Uhr {
public:
    [[nodiscard]] Zeitpunkt wand() const override { return std::chrono::system_clock::now(); }
    [[nodiscard]] Dauer monoton() const override {
        return std::chrono::steady_clock::now().time_since_epoch();
    }
    void schlafe(Dauer dauer) override { std::this_thread::sleep_for(dauer); }
};

/// "dd.MM.yyyy HH:mm:ss" in the local time zone, which is asked for anew each time: trains cross borders.
[[nodiscard]] std::string ortszeit(Uhr::Zeitpunkt zeit);

/// ISO 8601 in UTC to the second, for example "2025-03-14T08:41:07Z".
[[nodiscard]] std::string isoZeit(Uhr::Zeitpunkt zeit);

} // namespace mobilsteg
