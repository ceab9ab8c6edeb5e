#pragma once

#include "plattform/Schlange.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace mobilsteg {

/// Standard input as lines. A thread of its own waits for them, so that nobody else has to; a line goes to
/// whoever waits for an answer, else to `befehl` on the main queue. The end of input ends nothing.
class Eingabe {
public:
    Eingabe(Schlange& haupt, std::function<void(const std::string&)> befehl);
    ~Eingabe();
    Eingabe(const Eingabe&) = delete;
    Eingabe& operator=(const Eingabe&) = delete;

    /// Begins to read; lines that came before are not lost.
    void beginne();

    /// Blocks the main queue until the next line has come. Absent: the input has ended.
    [[nodiscard]] std::optional<std::string> naechste();

private:
    struct Innen;
    std::shared_ptr<Innen> innen_;
};

} // namespace mobilsteg
