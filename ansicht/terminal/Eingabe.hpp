#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/Schlange.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

class Schirm;
class Terminaltafel;

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
/// one, else to `befehl` on the main queue, where at the end of input, behind all lines, `amEnde` is called.
class Eingabe {
public:
    Eingabe(Schlange& haupt, std::function<void(const std::string&)> befehl, std::function<void()> amEnde);
    ~Eingabe();
    Eingabe(const Eingabe&) = delete;
    Eingabe& operator=(const Eingabe&) = delete;

    /// Begins to read, from the screen if there is one; lines that came before are not lost.
    void beginne(std::shared_ptr<Schirm> schirm);

    /// Blocks the main queue until the next line has come. Absent: the input has ended.
    [[nodiscard]] std::optional<std::string> naechste();

private:
    struct Innen;
    std::shared_ptr<Innen> innen_;
};

/// Asks by showing the texts and numbered buttons, and asks again until a line of input is an answer. The end
/// of input closes the question.
class Terminaldialog final : public Dialog {
public:
    Terminaldialog(Terminaltafel& tafel, Eingabe& eingabe) : tafel_(tafel), eingabe_(eingabe) {}

    [[nodiscard]] int frage(const Frage& frage) override;

private:
    Terminaltafel& tafel_;
    Eingabe& eingabe_;
};

} // namespace mobilsteg
