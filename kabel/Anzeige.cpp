#include "kabel/Anzeige.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace mobilsteg {

namespace {

bool istUnmoeglich(const Pfad& pfad) {
    constexpr double grenze = 9223372036854775808.0;
    return pfad.healthy && !(pfad.rtt_ms >= -grenze && pfad.rtt_ms < grenze);
}

std::string mitKomma(const char* muster, double wert) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), muster, wert);
    std::replace(text.begin(), text.end(), '.', ',');
    return text.data();
}

std::string gleis(const Pfad& pfad) {
    return Anzeige::wegname(pfad.iface) + " · " +
           (pfad.healthy ? std::to_string(static_cast<std::int64_t>(pfad.rtt_ms)) + " ms" : "weg");
}

std::string rettungstext(const Status& status) {
    if (status.funkloecher == 0)
        return "";
    return std::to_string(status.funkloecher) + (status.funkloecher == 1 ? " Funkloch" : " Funklöcher") +
           " überstanden · " + std::to_string(status.gerettet) +
           (status.gerettet == 1 ? " Verbindung" : " Verbindungen") + " gerettet";
}

} // namespace

std::optional<std::int64_t> kabelBytes(const Status& status, std::string_view name) {
    std::int64_t summe = 0;
    const std::string eigener = "kabel:" + std::string(name);
    for (const Gast& gast : status.guests) {
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
    static const Status ohne;
    const Status& status = antwort.status ? *antwort.status : ohne;
    const auto& pfade = status.paths;
    const auto summe = kabelBytes(status, name);
    if (!summe || std::any_of(pfade.begin(), pfade.end(), istUnmoeglich))
        return std::nullopt;
    messe(*summe, jetzt);
    std::vector<std::string> gleise;
    std::transform(pfade.begin(), pfade.end(), std::back_inserter(gleise), gleis);
    return Anzeigewerte{status.alles ? "1. Klasse" : "2. Klasse", std::move(gleise), status.notlage,
                        mengeText(*summe) + rateText(letzteRate_), rettungstext(status)};
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

std::string Anzeige::wegname(const std::string& iface) {
    return iface == "wifi" ? "WLAN" : iface == "cellular" ? "Mobilfunk" : iface;
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

std::string Anzeige::rateText(double rate) {
    constexpr double kilo = 1024;
    if (rate < kilo)
        return "";
    if (rate < kilo * kilo)
        return " · " + std::to_string(static_cast<std::int64_t>(rate / kilo)) + " kB/s";
    return " · " + mitKomma("%.1f MB/s", rate / (kilo * kilo));
}

} // namespace mobilsteg
