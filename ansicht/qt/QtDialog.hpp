#pragma once

#include "plattform/Anschluesse.hpp"

namespace mobilsteg {

/// Asks in a window of its own. While it is open, the main queue's jobs wait.
class QtDialog final : public Dialog {
public:
    [[nodiscard]] int frage(const Frage& frage) override;
};

} // namespace mobilsteg
