#pragma once

#include "plattform/Schlange.hpp"

#include <chrono>
#include <string>

namespace mobilsteg {

/// The only way to read a clock or to sleep.
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
    [[nodiscard]] Zeitpunkt wand() const override;
    [[nodiscard]] Dauer monoton() const override;
    void schlafe(Dauer dauer) override;
};

/// "dd.MM.yyyy HH:mm:ss" in the local time zone, which is asked for anew each time: trains cross borders.
[[nodiscard]] std::string ortszeit(Uhr::Zeitpunkt zeit);

/// ISO 8601 in UTC to the second, for example "2025-03-14T08:41:07Z".
[[nodiscard]] std::string isoZeit(Uhr::Zeitpunkt zeit);

} // namespace mobilsteg
