#pragma once

#include "app/Befehlszeile.hpp"
#include "plattform/Kindprozess.hpp"
#include "plattform/Laufsperre.hpp"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// A second process of the same program, in a session of its own, that sleeps until this one has died,
/// whatever it died of, and then takes back what that left. Any queue; nothing blocks.
class Waechter {
public:
    /// `sperre` is held by this process and outlives the object.
    Waechter(const Befehlszeile& zeile, Laufsperre& sperre);

    /// Starts it, unless it lives.
    void halte();

    /// Everything is taken back: it goes, and none is started any more.
    void schickeHeim();

private:
    void starte();

    std::vector<std::string> worte_;
    Laufsperre& sperre_;
    std::mutex schloss_; // guards all below
    Deskriptor rohr_; ///< its other end is the watchman's standard input: it falls silent with this process
    std::optional<Kindprozess> kind_;
    bool heimgeschickt_ = false;
};

/// `--waechter N`, N being the number of the process that is watched: what the second process does. Returns
/// the exit status when it is over.
int waechterdienst(const Befehlszeile& zeile, const std::string& kennung);

} // namespace mobilsteg
