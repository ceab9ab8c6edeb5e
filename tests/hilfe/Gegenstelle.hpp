#pragma once

#include "handy/Http.hpp"

#include <vector>

namespace mobilsteg {

/// Keeps the requests and gives everybody the prepared answer.
struct Gegenstelle final : Http {
    std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override {
        gesendet.push_back(anfrage);
        return antwort;
    }
    bool proxyGruesst() override { return true; }
    std::vector<HttpAnfrage> gesendet;
    std::optional<HttpErgebnis> antwort;
};

} // namespace mobilsteg
