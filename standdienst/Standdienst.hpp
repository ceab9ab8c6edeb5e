#pragma once

#include "kabel/Standausgabe.hpp"
#include "plattform/AsioSchlange.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace mobilsteg {

/// Serves the state document on loopback: the same answer to every request but the CORS preflight, one per
/// connection. Web pages and the browser extension read it, hence the permissive headers.
///
/// All its work runs on its own queue; nothing that clients do reaches another one.
class Standdienst final : public Standausgabe {
public:
    static constexpr std::uint16_t standardPort = 1081;

    struct Grenzen {
        Dauer stille = std::chrono::seconds(10);    ///< after that a client is dropped, whatever it does
        Dauer schonfrist = std::chrono::seconds(1); ///< before that none is dropped for another one
        std::size_t verbindungen = 256;             ///< at most, and a quarter of what may be open: then the
                                                    ///< oldest makes room, or accepting waits
    };

    /// `schlange` must outlive it, with no job of it running when it goes away.
    Standdienst(AsioSchlange& schlange, std::uint16_t port, Grenzen grenzen);
    explicit Standdienst(AsioSchlange& schlange) : Standdienst(schlange, standardPort, Grenzen{}) {}
    ~Standdienst() override;

    /// Returns once the port is taken or could not be; then the program runs on without the service.
    void starte() override;

    void setzeDokument(std::string bytes) override;

    /// The port it listens on; 0 when it does not.
    [[nodiscard]] std::uint16_t port() const;

    /// The answer to a request that began with these bytes. Pure.
    [[nodiscard]] static std::string antwort(std::string_view anfrage, std::string_view dokument);

private:
    struct Innen;
    std::shared_ptr<Innen> innen_;
};

} // namespace mobilsteg
