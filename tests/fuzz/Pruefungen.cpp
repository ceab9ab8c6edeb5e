#include "tests/fuzz/Pruefungen.hpp"

#include <array>

namespace mobilsteg::fuzz {

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
        {"proxyziel", proxyziel, "Enabled: Yes\n", "Server: 10.0.0.#\n", "Port: 1080\n"},
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
