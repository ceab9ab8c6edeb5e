#include "probe/handy/Handy.hpp"

#include <functional>
#include <map>

namespace mobilsteg::probehandy {

using nlohmann::json;

const char* const befehlsliste =
    R"(erlauben | ablehnen | vergessen  die Anfrage des Mac entscheiden oder wieder offen lassen
weitergabe an|aus                die App gibt die Verbindung weiter
stecken                          das Kabel einstecken
ziehen                           das Kabel ziehen
debugging an                     der Rechner darf auf das Handy zugreifen
weg wlan|mobilfunk               ein Weg ins Netz fällt aus
da wlan|mobilfunk                … und kommt wieder
proxy heil|kaputt|stumm          wie sich der SOCKS-Proxy benimmt
antwort [TEXT]                   was die App dem Mac antwortet; ohne TEXT: was wahr ist
zustand                          der Zustand als eine Zeile JSON
hilfe                            diese Übersicht
)";

namespace {

json wegAlsJson(const char* schnittstelle, const Weg& weg) {
    return {
        {"iface", schnittstelle}, {"healthy", weg.da}, {"rtt_ms", weg.rttMs}, {"rtt_ruhe_ms", weg.rttRuheMs}};
}

const std::map<std::string_view, std::function<void(Handy&)>> ohneWert = {
    {"erlauben", [](Handy& h) { h.entscheidung = "erlaubt"; }},
    {"ablehnen", [](Handy& h) { h.entscheidung = "abgelehnt"; }},
    {"vergessen", [](Handy& h) { h.entscheidung = "fragt"; }},
    {"weitergabe an", [](Handy& h) { h.weitergabe = true; }},
    {"weitergabe aus", [](Handy& h) { h.weitergabe = false; }},
    {"debugging an", [](Handy& h) { h.debugging = true; }},
    {"weg wlan", [](Handy& h) { h.wlan.da = false; }},
    {"weg mobilfunk", [](Handy& h) { h.mobilfunk.da = false; }},
    {"da wlan", [](Handy& h) { h.wlan.da = true; }},
    {"da mobilfunk", [](Handy& h) { h.mobilfunk.da = true; }},
    {"proxy heil", [](Handy& h) { h.proxy = "heil"; }},
    {"proxy kaputt", [](Handy& h) { h.proxy = "kaputt"; }},
    {"proxy stumm", [](Handy& h) { h.proxy = "stumm"; }},
    {"antwort", [](Handy& h) { h.antwort.clear(); }},
};

} // namespace

json anmeldeantwort(const Handy& handy) {
    json kabel = json::object();
    json gaeste = json::array();
    if (!handy.letzteAnmeldung.is_null() && handy.entscheidung != "abgelehnt") {
        const json mac = {{"id", handy.letzteAnmeldung["id"]}, {"name", handy.letzteAnmeldung["name"]}};
        const bool erlaubt = handy.entscheidung == "erlaubt";
        kabel[erlaubt ? "gast" : "anfrage"] = mac;
        if (erlaubt)
            gaeste.push_back({{"IP", "kabel:" + mac["name"].get<std::string>()},
                              {"BytesUp", handy.bytesHoch},
                              {"BytesDown", handy.bytesRunter}});
    }
    return {{"app", "mobilsteg"},
            {"proxy_port", 1080},
            {"zustand", handy.entscheidung},
            {"kabel", kabel},
            {"status",
             {{"paths", {wegAlsJson("wifi", handy.wlan), wegAlsJson("cellular", handy.mobilfunk)}},
              {"alles", false},
              {"notlage", false},
              {"guests", gaeste},
              {"funkloecher", 0},
              {"gerettet", 0}}}};
}

bool fuehreAus(Handy& handy, std::string_view befehl) {
    if (const auto gefunden = ohneWert.find(befehl); gefunden != ohneWert.end())
        gefunden->second(handy);
    else if (befehl.starts_with("antwort "))
        handy.antwort = befehl.substr(befehl.find(' ') + 1);
    else
        return false;
    return true;
}

std::string zustandszeile(const Handy& handy) {
    const json alles = {{"gesteckt", handy.gesteckt},
                        {"debugging", handy.debugging},
                        {"weitergabe", handy.weitergabe},
                        {"proxy", handy.proxy},
                        {"proxyziele", handy.proxyziele},
                        {"berichte", handy.berichte},
                        {"letzte_anmeldung", handy.letzteAnmeldung}};
    return alles.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace mobilsteg::probehandy
