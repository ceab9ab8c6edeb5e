#pragma once

#include "handy/Http.hpp"

#include <memory>

namespace mobilsteg {

/// HTTP by libcurl. Keeps one session per way; nothing (cookies, cache, credentials) reaches the disk.
/// One caller at a time.
class CurlHttp final : public Http {
public:
    CurlHttp();
    ~CurlHttp() override;
    [[nodiscard]] std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override;

private:
    struct Sitzung;
    Sitzung& sitzung(HttpAnfrage::Weg weg);

    std::unique_ptr<Sitzung> direkt_;
    std::unique_ptr<Sitzung> durchProxy_;
};

} // namespace mobilsteg
