#include "probe/handy/Austritt.hpp"

#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t hoechsteAnfrage = 32 * 1024;
constexpr std::string_view anmeldeseite =
    "<!DOCTYPE html><html><head><title>Anmeldung im Gästenetz</title></head><body><p>Bitte bestätigen Sie "
    "die "
    "Nutzungsbedingungen, um das Internet zu nutzen.</p></body></html>\n";

std::string adressantwort(const Handyzustand& zustand) {
    const bool unsinn = zustand.proxy == Proxyart::unsinn;
    const std::string koerper = unsinn ? std::string(anmeldeseite) : zustand.austritt + "\n";
    return std::string("HTTP/1.1 200 OK\r\nContent-Type: ") + (unsinn ? "text/html" : "text/plain") +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(koerper.size()) +
           "\r\nConnection: close\r\n\r\n" + koerper;
}

void sammle(std::shared_ptr<Strom> strom, Handyzustand& zustand, std::string bisher) {
    if (bisher.find("\r\n\r\n") == std::string::npos) {
        if (bisher.size() > hoechsteAnfrage) {
            strom->schliesse();
            return;
        }
        strom->lies([strom, &zustand, bisher = std::move(bisher)](const std::string& daten) {
            if (daten.empty()) {
                return;
            }
            zustand.bytesHoch += daten.size();
            sammle(strom, zustand, bisher + daten);
        });
        return;
    }
    std::string text = adressantwort(zustand);
    const std::size_t menge = text.size();
    strom->schreibe(std::move(text), [strom, &zustand, menge](bool heil) {
        if (heil) {
            zustand.bytesRunter += menge;
            strom->schliesse();
        }
    });
}

} // namespace

void beantworteAustritt(std::shared_ptr<Strom> strom, Handyzustand& zustand, std::string vorrat) {
    zustand.bytesHoch += vorrat.size();
    sammle(std::move(strom), zustand, std::move(vorrat));
}

} // namespace mobilsteg::probehandy
