#include "tests/fuzz/Pruefungen.hpp"

#include <nlohmann/json.hpp>

#include <array>
#include <stdexcept>

namespace mobilsteg::fuzz {

using nlohmann::json;

void verlange(bool gilt, const char* was) {
    if (!gilt)
        throw std::logic_error(was);
}

std::vector<std::string> abschnitte(std::string_view bytes, std::size_t anzahl) {
    constexpr std::string_view grenze = "\n====\n";
    std::vector<std::string> stuecke;
    std::size_t anfang = 0;
    for (std::size_t ende = 0; (ende = bytes.find(grenze, anfang)) != std::string_view::npos;
         anfang = ende + grenze.size())
        stuecke.emplace_back(bytes.substr(anfang, ende - anfang));
    stuecke.emplace_back(bytes.substr(anfang));
    stuecke.resize(std::max(stuecke.size(), anzahl));
    return stuecke;
}

std::string utf8NachFremderLesart(std::string_view bytes) {
    return json::parse(json(bytes).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
}

void verlangeUtf8(std::string_view text) {
    (void)json(text).dump(); // throws when it is not
}

void verlangeEinzeilig(std::string_view text) {
    verlangeUtf8(text);
    verlange(!text.empty() && text.find('\n') == std::string_view::npos, "one line, and not an empty one");
}

std::string Pruefung::lange(int zeilen) const {
    std::string text = anfang;
    for (int i = 1; i <= zeilen; ++i)
        for (const char c : zeile)
            text += c == '#' ? std::to_string(i) : std::string(1, c);
    return text + ende;
}

std::span<const Pruefung> pruefungen() {
    static const std::array alle = std::to_array<Pruefung>({
        {"adb", adb, "List of devices attached\n", "R5CT#  device usb:1-1 model:SM_S911B\n", ""},
        {"antwort", antwort, R"({"app":"mobilsteg","proxy_port":1080,"kabel":{},"status":{"guests":[)",
         R"({"IP":"kabel:Mac","BytesUp":#,"BytesDown":1},)",
         R"({"IP":"","BytesUp":0,"BytesDown":0}],"paths":[]}})"},
        {"austritt", austritt, "", " #", ""},
        {"befehle", befehle, "browser ", "Chrome# ", ""},
        {"berichte", berichte, R"({"bericht.stand":{)", R"("log#":#,)",
         "\"x\":0}}\n====\neine Zeile\n====\ndefault  10.0.0.1\n"},
        {"eingabe", eingabe, "", "befehl #\n", ""},
        {"einstellungen", einstellungen, "{", "\"k#\":{\"a\":#},", R"("experte":true})"},
        {"netzdienste", netzdienste, "  interface: en9\n====\n",
         "(#) LAN #\n(Hardware Port: LAN #, Device: en#)\n\n", ""},
        {"skriptfehler", skriptfehler, "", "x: execution error: Fehler #. (-#)\n", ""},
        {"skriptquelle", skriptquelle, "", "'Dienst #\\\"", ""},
        {"standdienst", standdienst, "GET / HTTP/1.1\r\n", "X-Kopf-#: wert\r\n", "\r\n"},
        {"text", text, "", " \xC3\xA4\xE2\x82# ", ""},
        {"tunnelbericht", tunnelbericht, R"({"vpns":[)", R"J({"dienst":"VPN # (x)","server":"10.1.2.#"},)J",
         "{}]}"},
        {"verbindungen", verbindungen, "COMMAND PID USER\n",
         "P#\\x20\\x20 1 anna 8u IPv4 0x1 0t0 TCP 10.0.0.1:5->10.0.0.2:# (ESTABLISHED)\n", ""},
        {"vpnliste", vpnliste, "", "* (Connected)  2B1E VPN (x) \"Firma #\"  [VPN:x]\n", ""},
    });
    return alle;
}

} // namespace mobilsteg::fuzz
