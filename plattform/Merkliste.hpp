#pragma once

#include "plattform/Einstellungen.hpp"

#include <set>
#include <string>

namespace mobilsteg {

/// What this run may leave behind and a later one has to take back: a setting with a line each, gone when it
/// is empty. Not changed by anybody else meanwhile.
class Merkliste {
public:
    Merkliste(Einstellungen& einstellungen, std::string schluessel)
        : einstellungen_(einstellungen), schluessel_(std::move(schluessel)) {}

    [[nodiscard]] std::set<std::string> lies() const;
    void schreibe(const std::set<std::string>& neue);
    void merke(const std::string& eines);
    void vergiss(const std::string& eines);

private:
    Einstellungen& einstellungen_;
    std::string schluessel_;
};

} // namespace mobilsteg
