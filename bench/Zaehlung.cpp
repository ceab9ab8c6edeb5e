// One thing many times over, for a counter of instructions. Usage: mobilsteg-zaehlung takt|stand|lsof

#include "handy/Antwort.hpp"
#include "kabel/Stand.hpp"
#include "netz/Erhebung.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <cstdio>

using namespace mobilsteg;

namespace {

/// The controller's ticks in "Fährt mit", with the model world around it.
bool takte(int anzahl) {
    Modellhandy handy;
    handy.status = R"({"alles":true,"notlage":false,"paths":[{"iface":"wifi","healthy":true,"rtt_ms":41}]})";
    KabelWelt welt;
    welt.handys = {handy};
    welt.starte();
    welt.welt.laufe(std::chrono::seconds(30));
    for (int i = 0; i < anzahl; ++i) {
        welt.welt.laufe(std::chrono::seconds(3));
        welt.aufrufe.clear();
        welt.anmeldungen.clear();
    }
    return welt.zustand().phase == Phase::Art::faehrt;
}

bool schreibeStand(int anzahl) {
    const auto antwort = Antwort::ausJson(
        R"({"app":"mobilsteg","proxy_port":1080,"kabel":{"gast":{"id":"1","name":"Mac"}},"zustand":"erlaubt",)"
        R"("status":{"alles":true,"notlage":false,"paths":[{"iface":"wifi","healthy":true,"rtt_ms":41}],)"
        R"("guests":[{"IP":"kabel:Mac","BytesUp":123456,"BytesDown":123456789}]}})");
    Standangaben angaben;
    angaben.phase = Phase::Art::faehrt;
    angaben.name = "Mac";
    std::size_t laenge = 0;
    for (int i = 0; i < anzahl && antwort; ++i)
        laenge += standDokument(angaben, antwort).size();
    return laenge > 0;
}

bool liesLsof(int zeilen) {
    std::string text;
    for (int i = 0; i < zeilen; ++i)
        text += "prog" + std::to_string(i % 40) + "\\x20x " + std::to_string(i) +
                " ich 20u IPv4 0x1 0t0 TCP 127.0.0.1:" + std::to_string(20000 + i % 40000) +
                (i % 2 == 0 ? "->127.0.0.1:1080" : "->198.51.100.7:443") + " (ESTABLISHED)\n";
    return !Erhebung::liesVerbindungen(text).durch.empty();
}

} // namespace

int main(int argc, char** argv) {
    const std::string was = argc == 2 ? argv[1] : "";
    if (was != "takt" && was != "stand" && was != "lsof") {
        std::fputs("Aufruf: mobilsteg-zaehlung takt|stand|lsof\n", was == "--hilfe" ? stdout : stderr);
        return was == "--hilfe" ? 0 : 2;
    }
    const bool getan = was == "takt" ? takte(1000) : was == "stand" ? schreibeStand(1000) : liesLsof(50000);
    return getan ? 0 : 1;
}
