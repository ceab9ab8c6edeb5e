#include "kabel/Stand.hpp"

#include "kabel/Anzeige.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

namespace mobilsteg {

using nlohmann::json;

namespace {

void trageStatusEin(json& dokument, const Status& status, const std::string& name) {
    dokument["klasse"] = status.alles ? 1 : 2;
    dokument["notlage"] = status.notlage;
    dokument["notlage_grund"] = status.notlage_grund;
    dokument["gleise"] = json::array();
    for (const Pfad& pfad : status.paths)
        dokument["gleise"].push_back({{"name", pfad.iface},
                                      {"gesund", pfad.healthy},
                                      {"rtt_ms", pfad.rtt_ms},
                                      {"ruhe_ms", pfad.rtt_ruhe_ms}});
    // `Anzeige::zeige` has refused an answer whose sum cannot be told.
    dokument["kabel_bytes"] = kabelBytes(status, name).value_or(0);
}

} // namespace

std::string standDokument(const Standangaben& a, const std::optional<Antwort>& antwort) {
    json dokument = {{"app", a.app},
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
    if (antwort) {
        dokument["zustand"] = antwort->zustand.value_or("");
        dokument["kabel_gast"] = antwort->kabel.gast.value_or(KabelGast{}).name;
        dokument["kabel_anfrage"] = antwort->kabel.anfrage.value_or(KabelGast{}).name;
        if (antwort->status)
            trageStatusEin(dokument, *antwort->status, a.name);
    }
    for (auto& wert : dokument)
        if (wert.is_string())
            wert = einzeilig(wert.get_ref<const std::string&>()); // a tool's text may hold anything
    return dokument.dump(2, ' ', false, json::error_handler_t::replace);
}

} // namespace mobilsteg
