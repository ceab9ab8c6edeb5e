#pragma once

#include "ansicht/terminal/Eingabe.hpp"
#include "plattform/Anschluesse.hpp"

#include <cstdio>

namespace mobilsteg {

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
