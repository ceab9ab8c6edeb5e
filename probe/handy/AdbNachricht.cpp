#include "probe/handy/AdbNachricht.hpp"

namespace mobilsteg::probehandy {

namespace {

std::uint32_t zahlAb(const AdbKopfbytes& bytes, std::size_t stelle) {
    std::uint32_t zahl = 0;
    for (std::size_t i = 4; i-- > 0;) {
        zahl = (zahl << 8) | bytes[stelle + i];
    }
    return zahl;
}

void haengeZahlAn(std::string& ziel, std::uint32_t zahl) {
    for (int i = 0; i < 4; ++i) {
        ziel.push_back(static_cast<char>(static_cast<unsigned char>(zahl & 0xffU)));
        zahl >>= 8;
    }
}

} // namespace

std::optional<AdbKopf> liesAdbKopf(const AdbKopfbytes& bytes) {
    const std::uint32_t befehl = zahlAb(bytes, 0);
    AdbKopf kopf{static_cast<AdbBefehl>(befehl), zahlAb(bytes, 4), zahlAb(bytes, 8), zahlAb(bytes, 12),
                 zahlAb(bytes, 16)};
    if (zahlAb(bytes, 20) != (befehl ^ 0xffffffffU) || kopf.laenge > adbNutzlast) {
        return std::nullopt;
    }
    return kopf;
}

std::uint32_t adbPruefsumme(std::string_view nutzlast) {
    std::uint32_t summe = 0;
    for (const char zeichen : nutzlast) {
        summe += static_cast<unsigned char>(zeichen);
    }
    return summe;
}

std::string adbNachricht(AdbBefehl befehl, std::uint32_t arg0, std::uint32_t arg1,
                         std::string_view nutzlast) {
    const auto kennung = static_cast<std::uint32_t>(befehl);
    std::string nachricht;
    nachricht.reserve(adbKopflaenge + nutzlast.size());
    haengeZahlAn(nachricht, kennung);
    haengeZahlAn(nachricht, arg0);
    haengeZahlAn(nachricht, arg1);
    haengeZahlAn(nachricht, static_cast<std::uint32_t>(nutzlast.size()));
    haengeZahlAn(nachricht, adbPruefsumme(nutzlast));
    haengeZahlAn(nachricht, kennung ^ 0xffffffffU);
    nachricht += nutzlast;
    return nachricht;
}

} // namespace mobilsteg::probehandy
