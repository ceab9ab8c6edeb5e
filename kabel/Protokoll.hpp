#pragma once

#include "plattform/Uhr.hpp"

#include <mutex>
#include <string>

namespace mobilsteg {

/// Where it lies in the home folder.
inline constexpr const char* protokollOrt = "/Library/Logs/MobilstegBordlotse.log";

/// The log file: one line per event. Callable on any queue; blocks on the disk only.
class Protokoll {
public:
    Protokoll(std::string pfad, const Uhr& uhr);

    /// Appends a line with the local time. The same text twice in a row is written once. Where nothing can be
    /// written, the line is lost and nobody is disturbed.
    void schreibe(const std::string& text);

    [[nodiscard]] const std::string& pfad() const { return pfad_; }

private:
    std::string pfad_;
    const Uhr& uhr_;
    std::mutex schloss_; // the signal queue writes, too
    std::string letzteZeile_;
};

} // namespace mobilsteg
