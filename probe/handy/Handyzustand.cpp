#include "probe/handy/Handyzustand.hpp"

#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t gemerkteZiele = 500;

nlohmann::json wegAlsJson(const Weg& weg) {
    return {{"da", weg.da}, {"rtt_ms", weg.rttMs}, {"rtt_ruhe_ms", weg.rttRuheMs}};
}

} // namespace

void Handyzustand::merkeZiel(Proxyziel ziel) {
    proxyziele.push_back(std::move(ziel));
    if (proxyziele.size() > gemerkteZiele) {
        proxyziele.pop_front();
    }
}

nlohmann::json Handyzustand::alsJson() const {
    auto ziele = nlohmann::json::array();
    for (const Proxyziel& ziel : proxyziele) {
        ziele.push_back({{"ziel", ziel.ziel}, {"port", ziel.port}, {"art", ziel.art}});
    }
    return {
        {"modell", modell},
        {"austritt", austritt},
        {"debugging", debugging},
        {"weitergabe", weitergabe},
        {"entscheidung", name(entscheidung)},
        {"wlan", wegAlsJson(wlan)},
        {"mobilfunk", wegAlsJson(mobilfunk)},
        {"alles", alles},
        {"notlage", notlage},
        {"funkloecher", funkloecher},
        {"gerettet", gerettet},
        {"proxy", name(proxy)},
        {"api", name(api)},
        {"nimmt_berichte", nimmtBerichte},
        {"anmeldungen", anmeldungen},
        {"letzte_anmeldung", letzteAnmeldung},
        {"berichte", berichte},
        {"letzter_bericht", letzterBericht},
        {"socks_ziele", std::move(ziele)},
        {"bytes_hoch", bytesHoch},
        {"bytes_runter", bytesRunter},
    };
}

std::string alsZeile(const nlohmann::json& wert) {
    return wert.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

const char* name(Entscheidung entscheidung) {
    switch (entscheidung) {
    case Entscheidung::fragt:
        return "fragt";
    case Entscheidung::erlaubt:
        return "erlaubt";
    case Entscheidung::abgelehnt:
        return "abgelehnt";
    }
    return "";
}

const char* name(Proxyart art) {
    switch (art) {
    case Proxyart::heil:
        return "heil";
    case Proxyart::kaputt:
        return "kaputt";
    case Proxyart::stumm:
        return "stumm";
    case Proxyart::unsinn:
        return "unsinn";
    }
    return "";
}

const char* name(Apiart art) {
    switch (art) {
    case Apiart::heil:
        return "heil";
    case Apiart::stumm:
        return "stumm";
    case Apiart::fehler:
        return "fehler";
    case Apiart::roh:
        return "roh";
    }
    return "";
}

} // namespace mobilsteg::probehandy
