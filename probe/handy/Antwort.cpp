#include "probe/handy/Antwort.hpp"

#include <string>

namespace mobilsteg::probehandy {

namespace {

nlohmann::json weg(const char* schnittstelle, const Weg& weg) {
    return {
        {"iface", schnittstelle}, {"healthy", weg.da}, {"rtt_ms", weg.rttMs}, {"rtt_ruhe_ms", weg.rttRuheMs}};
}

nlohmann::json kabel(const Handyzustand& zustand) {
    auto kabel = nlohmann::json::object();
    if (zustand.letzteAnmeldung.is_null() || zustand.entscheidung == Entscheidung::abgelehnt) {
        return kabel;
    }
    const char* rolle = zustand.entscheidung == Entscheidung::erlaubt ? "gast" : "anfrage";
    kabel[rolle] = {{"id", zustand.letzteAnmeldung["id"]}, {"name", zustand.letzteAnmeldung["name"]}};
    return kabel;
}

nlohmann::json gaeste(const Handyzustand& zustand) {
    auto gaeste = nlohmann::json::array();
    if (zustand.entscheidung == Entscheidung::erlaubt && !zustand.letzteAnmeldung.is_null()) {
        gaeste.push_back({{"IP", "kabel:" + zustand.letzteAnmeldung["name"].get<std::string>()},
                          {"BytesUp", zustand.bytesHoch},
                          {"BytesDown", zustand.bytesRunter}});
    }
    return gaeste;
}

} // namespace

nlohmann::json antwort(const Handyzustand& zustand) {
    nlohmann::json status{
        {"paths", {weg("wifi", zustand.wlan), weg("cellular", zustand.mobilfunk)}},
        {"alles", zustand.alles},
        {"notlage", zustand.notlage},
        {"guests", gaeste(zustand)},
        {"funkloecher", zustand.funkloecher},
        {"gerettet", zustand.gerettet},
    };
    if (zustand.notlage && !zustand.notlageGrund.empty()) {
        status["notlage_grund"] = zustand.notlageGrund;
    }
    return {{"app", "mobilsteg"},
            {"proxy_port", proxyPort},
            {"zustand", name(zustand.entscheidung)},
            {"kabel", kabel(zustand)},
            {"status", std::move(status)}};
}

} // namespace mobilsteg::probehandy
