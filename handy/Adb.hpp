#pragma once

#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// Where the adb tool is, which devices it sees and what it forwards.
class Adb {
public:
    /// One line of `adb devices -l`.
    struct Geraet {
        std::string serial;
        std::string zustand; ///< as adb prints it; only "device" is ready
        std::string
            modell; ///< the name under which it is sold ("Samsung Galaxy S23"); empty when adb named none
        bool amKabel = false; ///< on USB; any other may have been added by whoever works on this machine

        bool operator==(const Geraet&) const = default;
    };

    /// Answers like the adb tool's `forward --list`, or not at all.
    using Forwardliste = std::function<std::optional<std::string>()>;

    /// `forwardliste`, if any, is asked before the tool, which costs a process.
    Adb(Laeufer laeufer, Orte orte, std::optional<std::string> ressourcen, Forwardliste forwardliste = {});

    /// The paths that are tried, in this order. PATH is not consulted.
    [[nodiscard]] std::vector<std::string> kandidaten() const;

    /// The first candidate that can be executed; absent when there is none. Looks at the disk only.
    [[nodiscard]] std::optional<std::string> finden() const;

    /// The devices that the adb at `pfad` lists, in its order; empty also when adb failed. Blocks for up to
    /// 10 s, because adb may have to start its server first.
    [[nodiscard]] std::vector<Geraet> geraete(const std::string& pfad) const;

    /// What adb forwards, a line each: serial, local port, port of the device. Empty also when adb failed.
    /// Blocks for up to 5 s beside what `Forwardliste` takes.
    [[nodiscard]] std::string forwards(const std::string& pfad) const;

    /// Reads the listing's text. Pure.
    [[nodiscard]] static std::vector<Geraet> lies(std::string_view ausgabe);

private:
    Laeufer laeufer_;
    Orte orte_;
    std::optional<std::string> ressourcen_;
    Forwardliste forwardliste_;
};

} // namespace mobilsteg
