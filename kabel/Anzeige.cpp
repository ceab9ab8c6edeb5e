#include "kabel/Anzeige.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace mobilsteg {

namespace {

/// `wert` without its fraction; absent when it does not fit.
std::optional<std::int64_t> ganzzahl(double wert) {
    constexpr double grenze = 9223372036854775808.0;
    if (!(wert >= -grenze && wert < grenze)) // also refuses what is no number
        return std::nullopt;
    return static_cast<std::int64_t>(wert);
}

std::string mitKomma(const char* muster, double wert) {
    std::array<char, 400> text{}; // the largest double has 309 digits
    std::snprintf(text.data(), text.size(), muster, wert);
    std::string geformt = text.data();
    std::replace(geformt.begin(), geformt.end(), '.', ',');
    return geformt;
}

std::string bezeichnung(const std::string& iface) {
    if (iface == "wifi")
        return "WLAN";
    return iface == "cellular" ? "Mobilfunk" : iface;
}

std::optional<std::string> gleis(const Pfad& pfad) {
    if (!pfad.healthy)
        return bezeichnung(pfad.iface) + " · weg";
    const auto laufzeit = ganzzahl(pfad.rtt_ms);
    if (!laufzeit)
        return std::nullopt;
    return bezeichnung(pfad.iface) + " · " + std::to_string(*laufzeit) + " ms";
}

std::string rettungstext(const std::optional<Status>& status) {
    const std::int64_t loecher = status ? status->funkloecher.value_or(0) : 0;
    if (loecher == 0)
        return "";
    const std::int64_t gerettet = status->gerettet.value_or(0);
    return std::to_string(loecher) + (loecher == 1 ? " Funkloch" : " Funklöcher") + " überstanden · " +
           std::to_string(gerettet) + (gerettet == 1 ? " Verbindung" : " Verbindungen") + " gerettet";
}

} // namespace

std::optional<std::int64_t> kabelBytes(const std::optional<Status>& status, std::string_view name) {
    std::int64_t summe = 0;
    if (!status || !status->guests)
        return summe;
    const std::string eigener = "kabel:" + std::string(name);
    for (const Gast& gast : *status->guests) {
        if (gast.IP != eigener)
            continue;
        std::int64_t dieser = 0;
        if (__builtin_add_overflow(gast.BytesUp, gast.BytesDown, &dieser) ||
            __builtin_add_overflow(summe, dieser, &summe))
            return std::nullopt;
    }
    return summe;
}

void Anzeigewerte::trageEin(Lage& lage) const {
    lage.klasse = klasse;
    lage.gleise = gleise;
    lage.notlage = notlage;
    lage.menge = menge;
    lage.rettung = rettung;
}

std::optional<Anzeigewerte> Anzeige::zeige(const Antwort& antwort, std::string_view name, Dauer jetzt) {
    const auto& status = antwort.status;
    Anzeigewerte werte;
    werte.klasse = status && status->alles.value_or(false) ? "1. Klasse" : "2. Klasse";
    if (status && status->paths) {
        for (const Pfad& pfad : *status->paths) {
            const auto zeile = gleis(pfad);
            if (!zeile)
                return std::nullopt;
            werte.gleise.push_back(*zeile);
        }
    }
    werte.notlage = status && status->notlage.value_or(false);
    werte.rettung = rettungstext(status);

    const auto summe = kabelBytes(status, name);
    if (!summe)
        return std::nullopt;
    messe(*summe, jetzt);
    const auto rate = rateText(letzteRate_);
    if (!rate)
        return std::nullopt;
    werte.menge = mengeText(*summe) + *rate;
    return werte;
}

void Anzeige::messe(std::int64_t summe, Dauer jetzt) {
    using Sekunden = std::chrono::duration<double>;
    const double vergangen = mengeZeit_ ? Sekunden(jetzt - *mengeZeit_).count() : 0;
    if (summe >= mengeVorher_ && vergangen > 0.5) {
        // As doubles: the difference of two sums may leave 64 bits, their quotient hardly matters then.
        const double neue = (static_cast<double>(summe) - static_cast<double>(mengeVorher_)) / vergangen;
        letzteRate_ = letzteRate_ != 0 ? (neue + letzteRate_) * 0.5 : neue;
    }
    mengeVorher_ = summe;
    mengeZeit_ = jetzt;
}

std::string Anzeige::mengeText(std::int64_t bytes) {
    if (bytes < 1)
        return "0 kB";
    if (bytes < 1'000'000)
        return std::to_string(bytes / 1000) + " kB";
    if (bytes < 1'000'000'000)
        return mitKomma("%.1f MB", static_cast<double>(bytes) / 1e6);
    return mitKomma("%.2f GB", static_cast<double>(bytes) / 1e9);
}

std::optional<std::string> Anzeige::rateText(double rate) {
    constexpr double kilo = 1024;
    if (!std::isfinite(rate))
        return std::nullopt;
    if (rate < kilo)
        return "";
    if (rate < kilo * kilo)
        return " · " + std::to_string(static_cast<std::int64_t>(rate / kilo)) + " kB/s";
    return " · " + mitKomma("%.1f MB/s", rate / (kilo * kilo));
}

} // namespace mobilsteg
