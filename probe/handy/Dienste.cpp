#include "probe/handy/Dienste.hpp"

#include "plattform/Text.hpp"
#include "probe/handy/AdbVerbindung.hpp"
#include "probe/handy/Handy.hpp"
#include "probe/handy/Netz.hpp"

#include <nlohmann/json.hpp>

#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace mobilsteg::probehandy {

namespace {

using nlohmann::json;

constexpr std::string_view kopfende = "\r\n\r\n";

// The proxy. Behind it lies no internet: one name that exists only in here tells its callers an address, as
// the services for that do, and every address is this machine's own loopback.
constexpr std::string_view austrittsname = "austritt.probe";
constexpr std::string_view austrittsadresse = "203.0.113.7\n";

unsigned char byte(std::string_view bytes, std::size_t stelle) {
    return static_cast<unsigned char>(bytes[stelle]);
}

bool antworteSocks(Strom& strom, char ergebnis) {
    return strom.schreibe(std::string{5, ergebnis, 0, 1, 0, 0, 0, 0, 0, 0});
}

std::string http(const std::string& status, const std::string& art, std::string_view koerper) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + art +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(koerper.size()) +
           "\r\nConnection: close\r\n\r\n" + std::string(koerper);
}

void antworteAustritt(Strom& strom, Handy& handy) {
    const std::string anfrage = strom.liesBis(kopfende);
    if (!anfrage.ends_with(kopfende))
        return;
    const std::string antwort = http("200 OK", "text/plain", austrittsadresse);
    {
        const std::scoped_lock sperre(handy.schloss);
        handy.bytesHoch += anfrage.size();
        handy.bytesRunter += antwort.size();
    }
    strom.schreibe(antwort);
}

/// With no way into the net the bytes wait and the connection holds, as the real app does it.
void warteAufNetz(Handy& handy, std::uint64_t& zaehler, std::size_t menge) {
    for (;; std::this_thread::sleep_for(std::chrono::milliseconds(50))) {
        const std::scoped_lock sperre(handy.schloss);
        if (!handy.wlan.da && !handy.mobilfunk.da)
            continue;
        zaehler += menge;
        return;
    }
}

void reicheDurch(Strom& strom, Handy& handy, const Deskriptor& buchse) {
    std::thread herein([&] {
        for (std::string bytes; !(bytes = lies(buchse)).empty() && strom.schreibe(bytes);)
            warteAufNetz(handy, handy.bytesRunter, bytes.size());
        strom.schliesse();
    });
    for (std::string bytes; !(bytes = strom.lies()).empty() && sende(buchse, bytes);)
        warteAufNetz(handy, handy.bytesHoch, bytes.size());
    ::shutdown(buchse.nummer(), SHUT_RDWR);
    herein.join();
}

void bedieneSocks(Strom& strom, Handy& handy) {
    std::string benehmen;
    {
        const std::scoped_lock sperre(handy.schloss);
        benehmen = handy.proxy;
    }
    if (benehmen == "stumm") {
        while (!strom.lies().empty()) {
        }
        return;
    }
    const std::string gruss = strom.lies(2); // version, number of ways to log in
    if (gruss.size() < 2 || strom.lies(byte(gruss, 1)).size() < byte(gruss, 1) || benehmen == "kaputt")
        return;
    strom.schreibe(std::string{5, 0});
    const std::string auftrag = strom.lies(4); // version, command, reserved, kind of address
    if (auftrag.size() < 4 || byte(auftrag, 1) != 1)
        return;
    const bool name = byte(auftrag, 3) == 3;
    const std::string laenge = name ? strom.lies(1) : std::string(1, byte(auftrag, 3) == 4 ? 16 : 4);
    const std::string ziel = laenge.empty() ? "" : strom.lies(byte(laenge, 0));
    const std::string port = strom.lies(2);
    if (port.size() < 2)
        return;
    const int nummer = byte(port, 0) * 256 + byte(port, 1);
    if (!name) {
        const Deskriptor buchse = verbinde(nummer);
        if (antworteSocks(strom, buchse ? 0 : 5) && buchse) // 5: refused
            reicheDurch(strom, handy, buchse);
        return;
    }
    {
        const std::scoped_lock sperre(handy.schloss);
        handy.proxyziele.push_back(ziel + ":" + std::to_string(nummer));
    }
    if (inKleinbuchstaben(ziel) != austrittsname)
        antworteSocks(strom, 4); // no such host
    else if (antworteSocks(strom, 0))
        antworteAustritt(strom, handy);
}

// The app's interface: POST /api/kabel registers a Mac, POST /api/bericht?name=… leaves a report. The caller
// holds the phone's lock.

std::string nimmAnmeldung(Handy& handy, const std::string& koerper) {
    json anmeldung = json::parse(koerper, nullptr, false);
    const auto text = [&](const char* feld) {
        return anmeldung.contains(feld) && anmeldung[feld].is_string();
    };
    if (!anmeldung.is_object() || !text("id") || !text("name"))
        return http("400 Bad Request", "text/plain", "erwartet ein Objekt mit id und name\n");
    handy.letzteAnmeldung = std::move(anmeldung);
    const std::string antwort = handy.antwort.empty() ? anmeldeantwort(handy).dump() : handy.antwort;
    return http("200 OK", "application/json", antwort);
}

std::string ohneProzente(const std::string& kodiert) {
    std::string text;
    for (std::size_t i = 0; i < kodiert.size(); ++i) {
        const bool prozent = kodiert[i] == '%';
        text += prozent ? static_cast<char>(std::strtol(kodiert.substr(i + 1, 2).c_str(), nullptr, 16))
                        : kodiert[i];
        i += prozent ? 2 : 0;
    }
    return text;
}

std::string nimmBericht(Handy& handy, const std::string& name, const std::string& koerper) {
    char nummer[16];
    std::snprintf(nummer, sizeof nummer, "%03d-", ++handy.berichte);
    const std::string datei = handy.ordner + "/berichte/" + nummer + name;
    if (!handy.ordner.empty() && !schreibeAtomar(datei, koerper, Haltbarkeit::fluechtig))
        return http("500 Internal Server Error", "text/plain", "der Bericht ließ sich nicht ablegen\n");
    return http("200 OK", "application/json", "{\"ok\":true}\n");
}

std::string beantworte(Handy& handy, const std::string& anfragezeile, const std::string& koerper) {
    constexpr std::string_view bericht = "POST /api/bericht?name=";
    const std::scoped_lock sperre(handy.schloss);
    if (anfragezeile.starts_with("POST /api/kabel "))
        return nimmAnmeldung(handy, koerper);
    if (anfragezeile.starts_with(bericht)) {
        const std::string hinten = anfragezeile.substr(bericht.size());
        const std::string name = ohneProzente(hinten.substr(0, hinten.find(' ')));
        if (name.find('/') == std::string::npos)
            return nimmBericht(handy, name, koerper);
    }
    return http("404 Not Found", "text/plain", "unbekannter Pfad\n");
}

void bedieneApi(Strom& strom, Handy& handy) {
    constexpr std::string_view laengenfeld = "\r\ncontent-length:";
    const std::string kopf = strom.liesBis(kopfende);
    if (!kopf.ends_with(kopfende))
        return;
    const std::string klein = inKleinbuchstaben(kopf);
    const auto stelle = klein.find(laengenfeld);
    const std::size_t laenge = stelle == std::string::npos
                                   ? 0
                                   : std::strtoul(klein.c_str() + stelle + laengenfeld.size(), nullptr, 10);
    const std::string koerper = strom.lies(laenge);
    if (koerper.size() == laenge)
        strom.schreibe(beantworte(handy, kopf.substr(0, kopf.find("\r\n")), koerper));
}

} // namespace

Dienst findeDienst(std::string_view ziel) {
    if (ziel == "tcp:1080")
        return bedieneSocks;
    return ziel == "tcp:8080" ? bedieneApi : nullptr;
}

} // namespace mobilsteg::probehandy
