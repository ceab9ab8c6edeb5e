#pragma once

#include "plattform/Einstellungen.hpp"

#include <set>
#include <string>

namespace mobilsteg {

/// What this run may leave behind and a later one has to take back: a setting with a line each, gone when it
/// is empty. Reads and writes the settings at each call, on the caller's queue, which has to be always the
/// same one.
class Ruecknahmen {
public:
    /// `einstellungen` must outlive it.
    Ruecknahmen(Einstellungen& einstellungen, std::string schluessel)
        : einstellungen_(einstellungen), schluessel_(std::move(schluessel)) {}

    /// Empty: nothing is left behind.
    [[nodiscard]] std::set<std::string> lies() const;

    /// Instead of all that is there; an entry has no line break.
    void schreibe(const std::set<std::string>& neue);

    void merke(const std::string& eines);

    /// Without effect if it is not there.
    void vergiss(const std::string& eines);

private:
    Einstellungen& einstellungen_;
    std::string schluessel_;
};

} // namespace mobilsteg
