#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mobilsteg {

struct HttpAnfrage {
    /// Which way the request takes out of the Mac.
    enum class Weg {
        direkt,     ///< never through any proxy, whatever the system or the environment says
        durchProxy, ///< through the phone's SOCKS proxy, which also resolves the name
    };

    Weg weg = Weg::direkt;
    std::string methode = "GET"; ///< "GET" or "POST"
    std::string url;
    std::vector<std::pair<std::string, std::string>> kopf;
    std::string koerper;
};

struct HttpErgebnis {
    int status = 0;
    std::string koerper;
};

class Http {
public:
    virtual ~Http() = default;

    /// Sends the request and blocks until the answer is complete: for up to 4 s (3 s without a sign of life)
    /// directly, 12 s (10 s) through the proxy, where alone redirects are followed. Not on the main queue.
    /// Absent: no HTTP answer came, whatever the reason.
    [[nodiscard]] virtual std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) = 0;

    /// Whether what listens at the Mac's SOCKS port greets as a SOCKS5 proxy without a password. Nothing is
    /// connected through it. Blocks for up to 1 s; not on the main queue.
    [[nodiscard]] virtual bool proxyGruesst() = 0;
};

/// HTTP by libcurl, on one queue. Each request stands alone: nothing (connections, cookies, cache,
/// credentials) is kept but the handle, because making one costs more than a request on this machine.
class CurlHttp final : public Http {
public:
    CurlHttp();
    [[nodiscard]] std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override;
    [[nodiscard]] bool proxyGruesst() override;

private:
    std::unique_ptr<void, void (*)(void*)> griff_; ///< null: there is none to be had
};

} // namespace mobilsteg
