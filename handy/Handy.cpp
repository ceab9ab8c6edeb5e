#include "handy/Handy.hpp"

#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr std::size_t laengsteAdresse = 45; // an IPv6 address with an IPv4 tail

/// Everything but ASCII letters and digits encoded, the dot included.
std::string prozentkodiert(const std::string& name) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string kodiert;
    for (const char zeichen : name) {
        const auto c = static_cast<unsigned char>(zeichen);
        if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))
            kodiert += static_cast<char>(c);
        else
            kodiert += {'%', hex[c >> 4U], hex[c & 15U]};
    }
    return kodiert;
}

} // namespace

Handy::Handy(Http& http, std::string austrittsdienst)
    : http_(http), austrittsdienst_(std::move(austrittsdienst)) {}

std::optional<std::string> Handy::lade(const HttpAnfrage& anfrage) {
    auto ergebnis = http_.hole(anfrage);
    if (!ergebnis || ergebnis->status < 200 || ergebnis->status > 299)
        return std::nullopt;
    return std::move(ergebnis->koerper);
}

std::optional<Antwort> Handy::anmelden(const std::string& id, const std::string& name,
                                       const std::vector<std::string>& vpn) {
    const nlohmann::json daten = {{"id", id}, {"name", name}, {"vpn", vpn}};
    const auto koerper = lade({HttpAnfrage::Weg::direkt,
                               "POST",
                               "http://" + amMac(gastPort) + "/api/kabel",
                               {{"Content-Type", "application/json"}},
                               daten.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)});
    auto antwort = koerper ? Antwort::ausJson(*koerper) : std::nullopt;
    // Another program may listen on the port and answer something that looks alike.
    if (antwort && antwort->app != "mobilsteg")
        return std::nullopt;
    return antwort;
}

bool Handy::bericht(const std::string& name, const std::string& daten) {
    return lade({HttpAnfrage::Weg::direkt,
                 "POST",
                 "http://" + amMac(gastPort) + "/api/bericht?name=" + prozentkodiert(name),
                 {{"Content-Type", "text/plain"}},
                 daten})
        .has_value();
}

std::optional<std::string> Handy::austrittsIP() {
    const auto koerper = lade({HttpAnfrage::Weg::durchProxy, "GET", austrittsdienst_, {}, ""});
    const std::string text = alsUtf8(koerper.value_or(""));
    const std::string_view ip = beschnitten(text);
    // A captive portal's page may be as short, but its lines would be several in the log, too.
    const auto steuert = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    if (ip.empty() || zeichenzahl(ip) > laengsteAdresse || std::any_of(ip.begin(), ip.end(), steuert))
        return std::nullopt;
    return std::string(ip);
}

} // namespace mobilsteg
