#pragma once

#include "ansicht/Inhalt.hpp"
#include "handy/Adb.hpp"
#include "handy/Antwort.hpp"
#include "kabel/Stand.hpp"
#include "netz/Erhebung.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace mobilsteg {

inline std::string adbListe(int geraete) {
    std::string text = "List of devices attached\n";
    for (int i = 0; i < geraete; ++i)
        text += "R5CT" + std::to_string(i) +
                "  device usb:1-1 product:dm1q model:SM_S911B device:dm1q transport_id:1\n";
    return text + "\n";
}

inline std::string lsofListe(int zeilen) {
    std::string text = "COMMAND     PID USER   FD   TYPE DEVICE SIZE/OFF NODE NAME\n";
    for (int i = 0; i < zeilen; ++i)
        text += "prog" + std::to_string(i % 40) + "\\x20x " + std::to_string(i) +
                " ich 20u IPv4 0x1 0t0 TCP 127.0.0.1:" + std::to_string(20000 + i % 40000) +
                (i % 2 == 0 ? "->127.0.0.1:1080" : "->198.51.100.7:443") +
                (i % 5 == 0 ? " (CLOSE_WAIT)\n" : " (ESTABLISHED)\n");
    return text;
}

inline std::string antwortJson(int wege) {
    std::string pfade, gaeste;
    for (int i = 0; i < wege; ++i) {
        const std::string komma = i == 0 ? "" : ",";
        pfade += komma + R"({"iface":"wifi)" + std::to_string(i) +
                 R"(","healthy":true,"rtt_ms":41,"rtt_ruhe_ms":30})";
        gaeste += komma + R"({"IP":"kabel:Testmac)" + std::to_string(i) +
                  R"(","BytesUp":123456,"BytesDown":123456789})";
    }
    return R"({"app":"mobilsteg","proxy_port":1080,"kabel":{"gast":{"id":"1","name":"Testmac0"}},)"
           R"("zustand":"erlaubt","status":{"alles":true,"notlage":false,"paths":[)" +
           pfade + R"(],"guests":[)" + gaeste + "]}}";
}

/// What the controller tells in "Fährt mit".
inline Standangaben fahrtangaben() {
    Standangaben angaben;
    angaben.phase = Phase::Art::faehrt;
    angaben.name = "Testmac0";
    return angaben;
}

inline Zustand fahrender(int wege) {
    Zustand z;
    z.phase = Phase::Art::faehrt;
    z.handy = "Samsung Galaxy S23";
    z.klasse = "1. Klasse";
    z.menge = "123 MB · 1,2 MB/s";
    z.austritt = "203.0.113.7";
    z.proxyGesetzt = z.experte = true;
    for (int i = 0; i < wege; ++i) {
        z.gleise.push_back("WLAN · " + std::to_string(40 + i) + " ms");
        z.durch.push_back("Safari (" + std::to_string(i) + ")");
    }
    z.vorbei = z.durch;
    return z;
}

/// The controller's whole tick in "Fährt mit" under virtual time, what the model around it does included.
class Taktwelt {
public:
    Taktwelt() {
        Modellhandy handy;
        handy.status =
            R"({"alles":true,"notlage":false,"paths":[{"iface":"wifi","healthy":true,"rtt_ms":41}]})";
        welt_.handys = {handy};
        welt_.starte();
        welt_.welt.laufe(std::chrono::seconds(30));
    }
    void takte(int anzahl) {
        for (int i = 0; i < anzahl; ++i) {
            welt_.welt.laufe(std::chrono::seconds(3));
            welt_.aufrufe.clear();
            welt_.anmeldungen.clear();
        }
    }
    [[nodiscard]] bool faehrt() const { return welt_.zustand().phase == Phase::Art::faehrt; }

private:
    KabelWelt welt_;
};

} // namespace mobilsteg
