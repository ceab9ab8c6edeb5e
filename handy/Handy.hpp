#pragma once

#include "handy/Antwort.hpp"
#include "handy/Http.hpp"
#include "handy/Ports.hpp"

#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// The phone app's API, reached through the forwarded port. Every operation blocks; work queue only. None
/// reports why it failed: whatever goes wrong, the phone did not answer.
class Handy {
public:
    /// `austrittsdienst` is the address of a service that answers with the caller's public address.
    Handy(Http& http, std::string austrittsdienst);

    /// The local port that leads to the phone's API; the link step moves it when that is taken.
    int gastPort = gastPortAmHandy;

    /// Registers this Mac and asks for the phone's state. `vpn`: addresses of the VPN servers known here.
    /// Absent: no answer, or not from the phone app.
    [[nodiscard]] std::optional<Antwort> anmelden(const std::string& id, const std::string& name,
                                                  const std::vector<std::string>& vpn);

    /// Uploads one report. True: the phone accepted it.
    [[nodiscard]] bool bericht(const std::string& name, const std::string& daten);

    /// The public address as which traffic through the phone appears; absent when none could be proven.
    [[nodiscard]] std::optional<std::string> austrittsIP();

    /// Whether what listens at our end of the phone's proxy speaks SOCKS5. Takes at most 1 s.
    [[nodiscard]] bool proxyGruesst() { return http_.proxyGruesst(); }

private:
    std::optional<std::string> lade(const HttpAnfrage& anfrage);

    Http& http_;
    std::string austrittsdienst_;
};

/// Where the exit address is asked for unless a setting names another service.
[[nodiscard]] inline std::string eingebauterAustrittsdienst() {
    return "https://api.ipify.org";
}

} // namespace mobilsteg
