#include "probe/handy/Befehle.hpp"

#include "probe/handy/Text.hpp"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::string_view hilfetext[] = {
    "erlauben | ablehnen | vergessen      die Anfrage des Mac entscheiden oder wieder offen lassen",
    "weitergabe an|aus                    die App gibt die Verbindung weiter",
    "stecken                              das Kabel einstecken",
    "ziehen [hart]                        das Kabel ziehen; hart: ohne dem adb-Server Bescheid zu geben",
    "debugging an|aus                     der Rechner darf auf das Handy zugreifen",
    "weg wlan|mobilfunk                   ein Weg ins Netz fällt aus",
    "da wlan|mobilfunk                    … und kommt wieder",
    "rtt wlan|mobilfunk MS                seine Laufzeit in Millisekunden",
    "klasse 1|2                           1: das Handy trägt alles, 2: nicht alles",
    "notlage an [GRUND]|aus               das Handy meldet eine Notlage",
    "funkloch N M                         N Funklöcher, davon M gerettet",
    "proxy heil|kaputt|stumm|unsinn       wie sich der SOCKS-Proxy benimmt",
    "austritt ADRESSE                     womit http://austritt.probe/ antwortet",
    "bericht an|aus                       das Handy nimmt Berichte an",
    "api heil|stumm|fehler STATUS|roh TEXT  wie sich die Schnittstelle der App benimmt",
    "modell NAME                          gilt ab der nächsten Verbindung",
    "zustand                              der Zustand als eine Zeile JSON",
    "hilfe                                diese Übersicht",
    "ende                                 das Programm beenden",
};

Befehlsantwort gelungen() {
    return {};
}

Befehlsantwort erwartet(const char* was) {
    return {{}, std::string("erwartet „") + was + "“", false};
}

std::optional<bool> alsSchalter(std::string_view wort) {
    if (wort == "an") {
        return true;
    }
    return wort == "aus" ? std::optional(false) : std::nullopt;
}

Weg* findeWeg(Handyzustand& zustand, std::string_view wort) {
    if (wort == "wlan") {
        return &zustand.wlan;
    }
    return wort == "mobilfunk" ? &zustand.mobilfunk : nullptr;
}

bool einzeilig(std::string_view text) {
    for (const char zeichen : text) {
        if (static_cast<unsigned char>(zeichen) < 0x20 || zeichen == 0x7f) {
            return false;
        }
    }
    return !text.empty();
}

} // namespace

bool istModell(std::string_view name) {
    return einzeilig(name) && name.find_first_of(";=:") == std::string_view::npos && name.size() <= 100;
}

bool istAustritt(std::string_view adresse) {
    return einzeilig(adresse);
}

void Befehle::fuehreAus(std::string_view zeile, Antworter fertig) {
    std::string_view rest = zeile;
    const std::string_view befehl = erstesWort(rest);
    if (befehl == "stecken" && rest.empty()) {
        steckplatz_.stecke(std::move(fertig));
    } else if (befehl == "ziehen" && (rest.empty() || rest == "hart")) {
        steckplatz_.ziehe(rest == "hart", std::move(fertig));
    } else {
        fertig(fuehreGleichAus(befehl, rest));
    }
}

Befehlsantwort Befehle::fuehreGleichAus(std::string_view befehl, Rest rest) {
    struct Eintrag {
        std::string_view name;
        Befehlsantwort (Befehle::*tut)(Rest);
    };
    static constexpr std::array mitRest{
        Eintrag{"weitergabe", &Befehle::weitergabe},
        Eintrag{"debugging", &Befehle::debugging},
        Eintrag{"rtt", &Befehle::rtt},
        Eintrag{"klasse", &Befehle::klasse},
        Eintrag{"notlage", &Befehle::notlage},
        Eintrag{"funkloch", &Befehle::funkloch},
        Eintrag{"proxy", &Befehle::proxy},
        Eintrag{"api", &Befehle::api},
        Eintrag{"austritt", &Befehle::austritt},
        Eintrag{"bericht", &Befehle::bericht},
        Eintrag{"modell", &Befehle::modell},
    };
    for (const Eintrag& eintrag : mitRest) {
        if (eintrag.name == befehl) {
            return (this->*eintrag.tut)(rest);
        }
    }
    if (befehl == "weg" || befehl == "da") {
        return weg(rest, befehl == "da");
    }
    if (befehl == "erlauben" && rest.empty()) {
        return entscheide(Entscheidung::erlaubt);
    }
    if (befehl == "ablehnen" && rest.empty()) {
        return entscheide(Entscheidung::abgelehnt);
    }
    if (befehl == "vergessen" && rest.empty()) {
        return entscheide(Entscheidung::fragt);
    }
    if (befehl == "zustand" && rest.empty()) {
        return zustand();
    }
    if (befehl == "ende" && rest.empty()) {
        return {{}, std::nullopt, true};
    }
    if (befehl == "hilfe") {
        return {{std::begin(hilfetext), std::end(hilfetext)}, std::nullopt, false};
    }
    return {{},
            "unbekannter Befehl „" +
                zeigbar(std::string(befehl) + (rest.empty() ? "" : " ") + std::string(rest)) +
                "“, siehe „hilfe“",
            false};
}

Befehlsantwort Befehle::entscheide(Entscheidung entscheidung) {
    zustand_.entscheidung = entscheidung;
    return gelungen();
}

Befehlsantwort Befehle::weitergabe(Rest rest) {
    const auto an = alsSchalter(rest);
    if (!an) {
        return erwartet("weitergabe an|aus");
    }
    zustand_.weitergabe = *an;
    if (!*an) {
        geraet_.kappeStroeme();
    }
    return gelungen();
}

Befehlsantwort Befehle::debugging(Rest rest) {
    const auto an = alsSchalter(rest);
    if (!an) {
        return erwartet("debugging an|aus");
    }
    const bool vorher = std::exchange(zustand_.debugging, *an);
    if (*an) {
        geraet_.gibFrei();
    } else if (vorher) {
        geraet_.trenneAlle(); // a permission can only be asked for anew on a new connection
    }
    return gelungen();
}

Befehlsantwort Befehle::weg(Rest rest, bool da) {
    Weg* welcher = findeWeg(zustand_, rest);
    if (welcher == nullptr) {
        return erwartet(da ? "da wlan|mobilfunk" : "weg wlan|mobilfunk");
    }
    welcher->da = da;
    return gelungen();
}

Befehlsantwort Befehle::rtt(Rest rest) {
    Weg* welcher = findeWeg(zustand_, erstesWort(rest));
    const auto ms = alsZahl<double>(rest);
    if (welcher == nullptr || !ms || !std::isfinite(*ms) || *ms < 0) {
        return erwartet("rtt wlan|mobilfunk MS");
    }
    welcher->rttMs = *ms;
    return gelungen();
}

Befehlsantwort Befehle::klasse(Rest rest) {
    if (rest != "1" && rest != "2") {
        return erwartet("klasse 1|2");
    }
    zustand_.alles = rest == "1";
    return gelungen();
}

Befehlsantwort Befehle::notlage(Rest rest) {
    const auto an = alsSchalter(erstesWort(rest));
    if (!an || (!*an && !rest.empty())) {
        return erwartet("notlage an [GRUND]|aus");
    }
    zustand_.notlage = *an;
    zustand_.notlageGrund = rest;
    return gelungen();
}

Befehlsantwort Befehle::funkloch(Rest rest) {
    const auto loecher = alsZahl<std::uint64_t>(erstesWort(rest));
    const auto gerettet = alsZahl<std::uint64_t>(rest);
    if (!loecher || !gerettet) {
        return erwartet("funkloch N M");
    }
    zustand_.funkloecher = *loecher;
    zustand_.gerettet = *gerettet;
    return gelungen();
}

Befehlsantwort Befehle::proxy(Rest rest) {
    for (const Proxyart art : {Proxyart::heil, Proxyart::kaputt, Proxyart::stumm, Proxyart::unsinn}) {
        if (rest == name(art)) {
            zustand_.proxy = art;
            return gelungen();
        }
    }
    return erwartet("proxy heil|kaputt|stumm|unsinn");
}

Befehlsantwort Befehle::api(Rest rest) {
    const std::string_view art = erstesWort(rest);
    const auto status = alsZahl<unsigned>(rest);
    if (art == "heil" && rest.empty()) {
        zustand_.api = Apiart::heil;
    } else if (art == "stumm" && rest.empty()) {
        zustand_.api = Apiart::stumm;
    } else if (art == "roh") {
        zustand_.api = Apiart::roh;
        zustand_.apiText = rest;
    } else if (art == "fehler" && status && *status >= 200 && *status <= 599 && *status != 204 &&
               *status != 304) { // these two must not have a body
        zustand_.api = Apiart::fehler;
        zustand_.apiStatus = *status;
    } else {
        return erwartet("api heil|stumm|fehler STATUS|roh TEXT");
    }
    return gelungen();
}

Befehlsantwort Befehle::austritt(Rest rest) {
    if (!istAustritt(rest)) {
        return erwartet("austritt ADRESSE");
    }
    zustand_.austritt = rest;
    return gelungen();
}

Befehlsantwort Befehle::bericht(Rest rest) {
    const auto an = alsSchalter(rest);
    if (!an) {
        return erwartet("bericht an|aus");
    }
    zustand_.nimmtBerichte = *an;
    return gelungen();
}

Befehlsantwort Befehle::modell(Rest rest) {
    if (!istModell(rest)) {
        return erwartet("modell NAME");
    }
    zustand_.modell = rest;
    return gelungen();
}

Befehlsantwort Befehle::zustand() const {
    nlohmann::json alles = zustand_.alsJson();
    alles["adb_port"] = geraet_.port();
    alles["steuerport"] = steuerport_;
    alles["gesteckt"] = geraet_.lauscht();
    alles["verbunden"] = geraet_.verbunden();
    alles["offene_stroeme"] = geraet_.offeneStroeme();
    return {{alsZeile(alles)}, std::nullopt, false};
}

} // namespace mobilsteg::probehandy
