#include "kabel/Stand.hpp"

#include "kabel/Anzeige.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <cstdio>

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

void beendeStand(const std::string& pfad, bool proxyGesetzt) {
    // Not one that would exhaust the stack.
    const auto flach = [](int tiefe, json::parse_event_t, json&) { return tiefe < 8; };
    json stand = json::parse(liesDatei(pfad, megabyte).value_or(""), flach, false);
    if (!stand.is_object() || !stand.contains("phase"))
        return;
    for (const char* vomHandy : {"zustand", "kabel_gast", "kabel_anfrage", "klasse", "notlage",
                                 "notlage_grund", "gleise", "kabel_bytes"})
        stand.erase(vomHandy);
    stand.update({{"phase", Phase(Phase::Art::beendet).text()},
                  {"faehrt", false},
                  {"austritt", ""},
                  {"volltunnel", false},
                  {"proxy_gesetzt", proxyGesetzt}});
    schreibeAuchWennVoll(pfad, stand.dump(2, ' ', false, json::error_handler_t::replace),
                         Haltbarkeit::fluechtig);
}

std::string standzeile(std::string_view dokument) {
    const json stand = json::parse(dokument, nullptr, false);
    if (!stand.is_object() || !stand.contains("phase") || !stand["phase"].is_string())
        return "";
    std::vector<std::string> worte = {stand["phase"].get<std::string>()};
    if (stand.contains("klasse"))
        worte.push_back(stand["klasse"].dump() + ". Klasse");
    for (const auto& gleis : stand.value("gleise", json::array()))
        if (gleis.is_object() && gleis.contains("name") && gleis["name"].is_string()) {
            const auto ms = gleis.contains("rtt_ms") ? gleis["rtt_ms"] : json();
            const bool gesund = gleis.contains("gesund") && gleis["gesund"] == true && ms.is_number();
            std::array<char, 32> zahl{};
            std::snprintf(zahl.data(), zahl.size(), "%.0f ms", gesund ? std::trunc(ms.get<double>()) : 0.0);
            worte.push_back(Anzeige::wegname(gleis["name"].get<std::string>()) + " " +
                            (gesund ? zahl.data() : "weg"));
        }
    if (stand.contains("kabel_bytes") && stand["kabel_bytes"].is_number_integer())
        worte.push_back(Anzeige::mengeText(stand["kabel_bytes"].get<std::int64_t>()));
    return einzeilig(verbunden(worte, " · "));
}

} // namespace mobilsteg
