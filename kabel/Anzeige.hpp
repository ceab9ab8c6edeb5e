#pragma once

#include "handy/Antwort.hpp"
#include "kabel/Zustand.hpp"
#include "plattform/Schlange.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// The phone's status in the words that the user reads.
struct Anzeigewerte {
    std::string klasse;
    std::vector<std::string> gleise;
    bool notlage = false;
    std::string menge;
    std::string rettung;

    void trageEin(Lage& lage) const;
    bool operator==(const Anzeigewerte&) const = default;
};

/// Bytes that this Mac, known to the phone as `name`, has moved through it. Absent: the sum leaves 64 bits.
[[nodiscard]] std::optional<std::int64_t> kabelBytes(const Status& status, std::string_view name);

/// Turns answers into texts, and keeps the samples from which the rate is told. Work queue only; never
/// blocks.
class Anzeige {
public:
    /// `jetzt` is a monotonic time. Absent: the phone sent numbers that no phone can have, and the program
    /// is to end.
    [[nodiscard]] std::optional<Anzeigewerte> zeige(const Antwort& antwort, std::string_view name,
                                                    Dauer jetzt);

    /// A path's name, made of the phone's word for it.
    [[nodiscard]] static std::string wegname(const std::string& iface);

    /// A number of bytes in units of 1000.
    [[nodiscard]] static std::string mengeText(std::int64_t bytes);

    /// Bytes per second in units of 1024, with its dot in front; empty below one kB/s.
    [[nodiscard]] static std::string rateText(double rate);

private:
    void messe(std::int64_t summe, Dauer jetzt);

    std::int64_t mengeVorher_ = 0;
    std::optional<Dauer> mengeZeit_;
    double letzteRate_ = 0;
};

} // namespace mobilsteg
