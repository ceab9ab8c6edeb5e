#include "probe/handy/HttpLeser.hpp"

#include "probe/handy/Text.hpp"

#include <charconv>
#include <utility>

namespace mobilsteg::probehandy {

namespace {

constexpr std::size_t hoechsterKopf = 32 * 1024;
constexpr std::string_view zeilenende = "\r\n";

std::optional<std::size_t> stuecklaenge(std::string_view zeile) {
    const std::string_view ziffern = ohneRand(zeile.substr(0, zeile.find(';')));
    std::size_t laenge = 0;
    const auto [ende, fehler] = std::from_chars(ziffern.data(), ziffern.data() + ziffern.size(), laenge, 16);
    if (fehler != std::errc() || ende != ziffern.data() + ziffern.size()) {
        return std::nullopt;
    }
    return laenge;
}

} // namespace

std::variant<std::monostate, HttpAnfrage, HttpFehler> HttpLeser::naechste() {
    if (!kopfDa_) {
        if (const auto fehler = liesKopf()) {
            return *fehler;
        }
        if (!kopfDa_) {
            return {};
        }
    }
    if (inStuecken_) {
        if (const auto fehler = liesStuecke()) {
            return *fehler;
        }
    } else if (puffer_.size() >= laenge_.value_or(0)) {
        anfrage_.koerper = puffer_.substr(0, laenge_.value_or(0));
        puffer_.erase(0, anfrage_.koerper.size());
        fertig_ = true;
    }
    if (!fertig_) {
        return {};
    }
    HttpAnfrage ganze = std::move(anfrage_);
    std::string rest = std::move(puffer_);
    *this = {};
    puffer_ = std::move(rest);
    return ganze;
}

bool HttpLeser::wartetAufErlaubnis() {
    return kopfDa_ && std::exchange(erlaubnisErbeten_, false);
}

std::optional<HttpFehler> HttpLeser::liesKopf() {
    const auto ende = puffer_.find("\r\n\r\n");
    if (ende == std::string::npos || ende > hoechsterKopf) {
        return puffer_.size() > hoechsterKopf ? std::optional(HttpFehler{431}) : std::nullopt;
    }
    if (const auto fehler = deuteKopf(std::string_view(puffer_).substr(0, ende))) {
        return fehler;
    }
    puffer_.erase(0, ende + 4);
    if (inStuecken_ && laenge_) {
        return HttpFehler{400};
    }
    if (laenge_.value_or(0) > hoechsterKoerper) {
        return HttpFehler{413};
    }
    kopfDa_ = true;
    return std::nullopt;
}

std::optional<HttpFehler> HttpLeser::deuteKopf(std::string_view kopf) {
    auto ende = kopf.find(zeilenende);
    if (const auto fehler = deuteZeile(kopf.substr(0, ende))) {
        return fehler;
    }
    while (ende != std::string_view::npos) {
        kopf.remove_prefix(ende + zeilenende.size());
        ende = kopf.find(zeilenende);
        const std::string_view zeile = kopf.substr(0, ende);
        const auto trenner = zeile.find(':');
        if (trenner == std::string_view::npos) {
            return HttpFehler{400};
        }
        if (const auto fehler =
                deuteFeld(klein(zeile.substr(0, trenner)), ohneRand(zeile.substr(trenner + 1)))) {
            return fehler;
        }
    }
    return std::nullopt;
}

std::optional<HttpFehler> HttpLeser::deuteZeile(std::string_view zeile) {
    const auto methode = erstesWort(zeile);
    const auto ziel = erstesWort(zeile);
    if (ziel.empty() || ziel.front() != '/') {
        return HttpFehler{400};
    }
    if (zeile != "HTTP/1.1" && zeile != "HTTP/1.0") {
        return HttpFehler{zeile.substr(0, 5) == "HTTP/" ? 505 : 400};
    }
    anfrage_.bleibtOffen = zeile == "HTTP/1.1";
    anfrage_.methode = methode;
    const auto frage = ziel.find('?');
    anfrage_.pfad = ziel.substr(0, frage);
    anfrage_.abfrage = frage == std::string_view::npos ? std::string_view() : ziel.substr(frage + 1);
    return std::nullopt;
}

std::optional<HttpFehler> HttpLeser::deuteFeld(std::string_view feld, std::string_view wert) {
    if (feld == "content-length") {
        const auto laenge = alsZahl<std::size_t>(wert);
        if (!laenge || (laenge_ && *laenge_ != *laenge)) {
            return HttpFehler{400};
        }
        laenge_ = laenge;
    } else if (feld == "transfer-encoding") {
        if (klein(wert) != "chunked") {
            return HttpFehler{501};
        }
        inStuecken_ = true;
    } else if (feld == "connection") {
        anfrage_.bleibtOffen = anfrage_.bleibtOffen && klein(wert) != "close";
    } else if (feld == "expect") {
        erlaubnisErbeten_ = klein(wert) == "100-continue";
    }
    return std::nullopt;
}

std::optional<HttpFehler> HttpLeser::liesStuecke() {
    while (true) {
        const auto ende = puffer_.find(zeilenende);
        if (ende == std::string::npos) {
            return puffer_.size() > hoechsterKopf ? std::optional(HttpFehler{400}) : std::nullopt;
        }
        if (schlussstueck_) {
            puffer_.erase(0, ende + zeilenende.size());
            if (ende == 0) {
                fertig_ = true;
                return std::nullopt;
            }
            continue;
        }
        const auto laenge = stuecklaenge(std::string_view(puffer_).substr(0, ende));
        if (!laenge) {
            return HttpFehler{400};
        }
        if (*laenge > hoechsterKoerper - anfrage_.koerper.size()) {
            return HttpFehler{413};
        }
        const std::size_t anfang = ende + zeilenende.size();
        if (*laenge == 0) {
            puffer_.erase(0, anfang);
            schlussstueck_ = true;
            continue;
        }
        if (puffer_.size() < anfang + *laenge + zeilenende.size()) {
            return std::nullopt;
        }
        if (puffer_.compare(anfang + *laenge, zeilenende.size(), zeilenende) != 0) {
            return HttpFehler{400};
        }
        anfrage_.koerper.append(puffer_, anfang, *laenge);
        puffer_.erase(0, anfang + *laenge + zeilenende.size());
    }
}

} // namespace mobilsteg::probehandy
