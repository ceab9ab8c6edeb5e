#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/Schlange.hpp"

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// Cuts what was typed into lines, however the reads fell. No locks, never blocks: for one thread at a time.
class Zeilen {
public:
    /// In bytes. What exceeds this in a line is dropped: a line that never ends must not fill the memory.
    static constexpr std::size_t laengste = 64U * 1024U;

    /// Takes the next bytes read and calls `zeile`, at once and here, for each line that they end, without
    /// its end.
    void nimm(std::string_view block, const std::function<void(std::string)>& zeile);

    /// What stands behind the last end of line, and forgets it. Absent: nothing does.
    [[nodiscard]] std::optional<std::string> rest();

private:
    void haengeAn(std::string_view text);

    std::string angefangen_;
};

/// Standard input as lines, read by a thread of its own. A line goes to the caller of `naechste` if there is
/// one, else to `befehl` on the main queue. The end of input ends nothing.
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

/// Asks by printing the texts and numbered buttons; the next line of input is the answer: a button's number
/// or its text. Any other line, like the end of input, counts as closing the question.
class Terminaldialog final : public Dialog {
public:
    Terminaldialog(std::FILE* ausgabe, Eingabe& eingabe) : ausgabe_(ausgabe), eingabe_(eingabe) {}

    [[nodiscard]] int frage(const Frage& frage) override;

private:
    std::FILE* ausgabe_;
    Eingabe& eingabe_;
};

} // namespace mobilsteg
