#include "probe/handy/Steckplatz.hpp"

#include "probe/handy/Text.hpp"

#include <chrono>
#include <string>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

using Art = AdbServerAntwort::Art;

// adb itself gives a device ten seconds to introduce itself before it answers a "connect".
constexpr std::chrono::seconds verbindefrist{15};
constexpr std::chrono::seconds trennfrist{2};
constexpr std::chrono::seconds pruefabstand{1};

Befehlsantwort deute(const AdbServerAntwort& antwort, bool verbunden) {
    Befehlsantwort ergebnis;
    if (antwort.art == Art::gelungen) {
        // adb reports its failures to connect as a success with a text.
        ergebnis.zeilen.push_back("adb: " + zeigbar(antwort.text));
        if (!verbunden) {
            ergebnis.fehler = "der adb-Server hat sich nicht verbunden";
        }
    } else if (antwort.art == Art::abgelehnt) {
        ergebnis.fehler = "der adb-Server lehnt ab: " + zeigbar(antwort.text);
    } else {
        ergebnis.fehler = antwort.text;
    }
    return ergebnis;
}

} // namespace

Steckplatz::Steckplatz(asio::io_context& schleife, AdbGeraet& geraet, std::optional<std::uint16_t> adbServer)
    : schleife_(schleife), geraet_(geraet), adbServer_(adbServer), takt_(schleife) {}

void Steckplatz::stecke(Antworter fertig) {
    if (const std::error_code fehler = geraet_.oeffneWieder()) {
        fertig({{}, "Port " + std::to_string(geraet_.port()) + " ist belegt", false});
        return;
    }
    if (!adbServer_ || geraet_.verbunden()) {
        fertig({});
        return;
    }
    const unsigned diese = ++steckung_;
    angemeldet_ = true;
    melde([this, diese, fertig = std::move(fertig)](const AdbServerAntwort& antwort) {
        if (diese != steckung_) {
            fertig({{}, "inzwischen wieder gezogen", false});
            return;
        }
        fertig(deute(antwort, geraet_.verbunden()));
        bleibeAngemeldet();
    });
}

void Steckplatz::steckeBeimStart() {
    angemeldet_ = adbServer_.has_value();
    pruefeAnmeldung();
}

void Steckplatz::ziehe(bool hart, Antworter fertig) {
    const unsigned diese = ++steckung_;
    angemeldet_ = false;
    takt_.cancel();
    geraet_.lauscheNichtMehr();
    if (hart || !adbServer_) {
        geraet_.trenneAlle();
        fertig({});
        return;
    }
    frage("host:disconnect:", [this, diese, fertig = std::move(fertig)](const AdbServerAntwort& antwort) {
        if (diese == steckung_) {
            geraet_.trenneAlle();
        }
        Befehlsantwort ergebnis;
        if (!antwort.text.empty()) {
            ergebnis.zeilen.push_back("adb: " + zeigbar(antwort.text));
        }
        fertig(std::move(ergebnis));
    });
}

void Steckplatz::melde(Gefragt fertig) {
    fragtGerade_ = true;
    frage("host:connect:", [this, fertig = std::move(fertig)](AdbServerAntwort antwort) {
        if (antwort.art != Art::gelungen || geraet_.verbunden() || !angemeldet_ ||
            antwort.text.find("already") == std::string::npos) {
            fragtGerade_ = false;
            fertig(std::move(antwort));
            return;
        }
        // The server still lists the phone it lost and means to come back to it in its own time. Only a
        // forgotten phone is connected to at once.
        frage("host:disconnect:", [this, fertig](const AdbServerAntwort&) {
            frage("host:connect:", [this, fertig](AdbServerAntwort zweite) {
                fragtGerade_ = false;
                fertig(std::move(zweite));
            });
        });
    });
}

void Steckplatz::frage(const char* dienst, Gefragt fertig) {
    const bool verbindet = std::string_view(dienst) == "host:connect:";
    frageAdbServer(schleife_, *adbServer_, dienst + ("127.0.0.1:" + std::to_string(geraet_.port())),
                   verbindet ? verbindefrist : trennfrist, std::move(fertig));
}

void Steckplatz::bleibeAngemeldet() {
    takt_.expires_after(pruefabstand);
    takt_.async_wait([this](std::error_code fehler) {
        if (!fehler) {
            pruefeAnmeldung();
        }
    });
}

void Steckplatz::pruefeAnmeldung() {
    if (!angemeldet_) {
        return;
    }
    if (fragtGerade_ || geraet_.verbunden()) {
        bleibeAngemeldet();
        return;
    }
    melde([this](const AdbServerAntwort&) { bleibeAngemeldet(); });
}

} // namespace mobilsteg::probehandy
