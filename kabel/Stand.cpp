#include "kabel/Stand.hpp"

#include "kabel/Anzeige.hpp"

#include <nlohmann/json.hpp>

namespace mobilsteg {

using nlohmann::json;

namespace {

std::string gastname(const std::optional<KabelGast>& gast) {
    return gast ? gast->name : "";
}

json gleise(const Status& status) {
    json liste = json::array();
    if (!status.paths)
        return liste;
    for (const Pfad& pfad : *status.paths)
        liste.push_back({{"name", pfad.iface},
                         {"gesund", pfad.healthy},
                         {"rtt_ms", pfad.rtt_ms},
                         {"ruhe_ms", pfad.rtt_ruhe_ms.value_or(0)}});
    return liste;
}

json grundstock(const Standangaben& a) {
    return {{"app", a.app},
            {"zeit", isoZeit(a.zeit)},
            {"phase", a.phase.text()},
            {"faehrt", a.phase == Phase::Art::faehrt},
            {"austritt", a.austritt},
            {"handy", a.handy},
            {"id", a.id},
            {"name", a.name},
            {"proxy_gesetzt", a.proxyGesetzt},
            {"volltunnel", a.volltunnel},
            {"vpn_durch", a.vpnDurch},
            {"nur_vpn", a.nurVPN},
            {"proxy_automatisch", a.proxyAutomatisch},
            {"dienst", a.dienst},
            {"adb", a.adb}};
}

} // namespace

std::string standDokument(const Standangaben& angaben, const std::optional<Antwort>& antwort) {
    json dokument = grundstock(angaben);
    if (antwort) {
        dokument["zustand"] = antwort->zustand.value_or("");
        dokument["kabel_gast"] = gastname(antwort->kabel.gast);
        dokument["kabel_anfrage"] = gastname(antwort->kabel.anfrage);
    }
    if (antwort && antwort->status) {
        const Status& status = *antwort->status;
        dokument["klasse"] = status.alles.value_or(false) ? 1 : 2;
        dokument["notlage"] = status.notlage.value_or(false);
        dokument["notlage_grund"] = status.notlage_grund.value_or("");
        dokument["gleise"] = gleise(status);
        // `Anzeige::zeige` has refused an answer whose sum cannot be told.
        dokument["kabel_bytes"] = kabelBytes(status, angaben.name).value_or(0);
    }
    // A tool's text in the phase may hold anything; one bad byte must not cost the document.
    return dokument.dump(2, ' ', false, json::error_handler_t::replace);
}

} // namespace mobilsteg
