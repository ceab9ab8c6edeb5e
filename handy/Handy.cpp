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
        const auto byte = static_cast<unsigned char>(zeichen);
        if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z')) {
            kodiert += zeichen;
        } else {
            kodiert += '%';
            kodiert += hex[byte >> 4U];
            kodiert += hex[byte & 15U];
        }
    }
    return kodiert;
}

} // namespace

Handy::Handy(Http& http, std::string austrittsdienst)
    : http_(http), austrittsdienst_(std::move(austrittsdienst)) {}

std::string Handy::adresse(const std::string& pfad) const {
    return "http://" + amMac(gastPort) + pfad;
}

std::optional<std::string> Handy::lade(const HttpAnfrage& anfrage) {
    auto ergebnis = http_.hole(anfrage);
    if (!ergebnis || ergebnis->status < 200 || ergebnis->status > 299)
        return std::nullopt;
    return std::move(ergebnis->koerper);
}

std::optional<Antwort> Handy::hole(const HttpAnfrage& anfrage) {
    const auto koerper = lade(anfrage);
    if (!koerper)
        return std::nullopt;
    auto antwort = Antwort::ausJson(*koerper);
    // Another program may listen on the port and answer something that looks alike.
    if (!antwort || antwort->app != "mobilsteg")
        return std::nullopt;
    return antwort;
}

std::optional<Antwort> Handy::anmelden(const std::string& id, const std::string& name,
                                       const std::vector<std::string>& vpn) {
    const nlohmann::json koerper = {{"id", id}, {"name", name}, {"vpn", vpn}};
    HttpAnfrage anfrage;
    anfrage.methode = "POST";
    anfrage.url = adresse("/api/kabel");
    anfrage.kopf = {{"Content-Type", "application/json"}};
    anfrage.koerper = koerper.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return hole(anfrage);
}

bool Handy::bericht(const std::string& name, const std::string& daten) {
    HttpAnfrage anfrage;
    anfrage.methode = "POST";
    anfrage.url = adresse("/api/bericht?name=" + prozentkodiert(name));
    anfrage.kopf = {{"Content-Type", "text/plain"}};
    anfrage.koerper = daten;
    return lade(anfrage).has_value();
}

std::optional<std::string> Handy::austrittsIP() {
    HttpAnfrage anfrage;
    anfrage.weg = HttpAnfrage::Weg::durchProxy;
    anfrage.url = austrittsdienst_;
    const auto koerper = lade(anfrage);
    if (!koerper)
        return std::nullopt;
    const std::string text = alsUtf8(*koerper);
    const std::string_view ip = beschnitten(text);
    // A captive portal's page may be as short, but its lines would be several in the log, too.
    const bool einzeilig =
        std::none_of(ip.begin(), ip.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (ip.empty() || zeichenzahl(ip) > laengsteAdresse || !einzeilig)
        return std::nullopt;
    return std::string(ip);
}

std::string eingebauterAustrittsdienst() {
    return "https://api.ipify.org";
}

} // namespace mobilsteg
