#include "probe/handy/HandyApi.hpp"

#include "probe/handy/Antwort.hpp"
#include "probe/handy/HttpLeser.hpp"
#include "probe/handy/Text.hpp"

#include <asio/steady_timer.hpp>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace mobilsteg::probehandy {

namespace {

using nlohmann::json;

/// How long a client whose request was refused may go on sending it: a connection closed on unread bytes
/// would take the refusal with it.
constexpr std::chrono::seconds nachlauf{2};

/// What becomes of the connection once the answer is out.
enum class Danach { bleibtOffen, schliesst, laeuftAus };

struct HttpAntwort {
    int status = 200;
    std::string koerper;
};

const char* grund(int status) {
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 413:
        return "Content Too Large";
    case 431:
        return "Request Header Fields Too Large";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    case 501:
        return "Not Implemented";
    case 505:
        return "HTTP Version Not Supported";
    default:
        return "Status";
    }
}

HttpAntwort fehler(int status, const char* text) {
    return {status, alsZeile(json{{"fehler", text}}) + "\n"};
}

std::optional<std::string> abfragewert(std::string_view abfrage, std::string_view gesucht) {
    while (!abfrage.empty()) {
        const std::string_view paar = abfrage.substr(0, abfrage.find('&'));
        abfrage.remove_prefix(std::min(abfrage.size(), paar.size() + 1));
        if (paar.substr(0, paar.find('=')) == gesucht && paar.size() > gesucht.size()) {
            return entziffereProzent(paar.substr(gesucht.size() + 1));
        }
    }
    return std::nullopt;
}

/// Discarded if it is no JSON. So is what is nested absurdly deep: the library writes values out recursively,
/// and a hostile body would exhaust the stack.
json liesJson(const std::string& text) {
    constexpr int hoechsteTiefe = 64;
    bool zuTief = false;
    json wert = json::parse(
        text,
        [&](int tiefe, json::parse_event_t, const json&) {
            zuTief = zuTief || tiefe > hoechsteTiefe;
            return !zuTief;
        },
        false);
    return zuTief ? json(json::value_t::discarded) : wert;
}

bool istAnmeldung(const json& koerper) {
    const auto text = [&](const char* feld) { return koerper.contains(feld) && koerper[feld].is_string(); };
    return koerper.is_object() && text("id") && text("name") &&
           (!koerper.contains("vpn") || koerper["vpn"].is_array());
}

class HttpSitzung : public std::enable_shared_from_this<HttpSitzung> {
public:
    HttpSitzung(std::shared_ptr<Strom> strom, Handyzustand& zustand, Gedaechtnis& gedaechtnis)
        : strom_(std::move(strom)), zustand_(zustand), gedaechtnis_(gedaechtnis),
          frist_(strom_->ausfuehrer()) {}

    void arbeite() {
        auto naechste = leser_.naechste();
        if (const auto* anfrage = std::get_if<HttpAnfrage>(&naechste)) {
            beantworte(*anfrage);
        } else if (const auto* warum = std::get_if<HttpFehler>(&naechste)) {
            schreibe(fehler(warum->status, "unverständliche oder zu große Anfrage"), false,
                     Danach::laeuftAus);
        } else if (leser_.wartetAufErlaubnis()) {
            strom_->schreibe("HTTP/1.1 100 Continue\r\n\r\n", [selbst = shared_from_this()](bool heil) {
                if (heil) {
                    selbst->liesMehr();
                }
            });
        } else {
            liesMehr();
        }
    }

private:
    void liesMehr() {
        strom_->lies([selbst = shared_from_this()](const std::string& daten) {
            if (!daten.empty()) {
                selbst->leser_.nimm(daten);
                selbst->arbeite();
            }
        });
    }

    void beantworte(const HttpAnfrage& anfrage) {
        const bool zuKabel = anfrage.pfad == "/api/kabel";
        const bool zuBericht = anfrage.pfad == "/api/bericht";
        HttpAntwort ergebnis;
        if (!zuKabel && !zuBericht) {
            ergebnis = fehler(404, "unbekannter Pfad");
        } else if (anfrage.methode != "POST") {
            ergebnis = fehler(405, "hier gilt nur POST");
        } else if (zuKabel) {
            ergebnis = nimmAnmeldung(anfrage.koerper);
        } else {
            ergebnis = nimmBericht(anfrage);
        }
        if (zustand_.api == Apiart::stumm) {
            schluckeAlles();
            return;
        }
        if (zustand_.api == Apiart::fehler) {
            ergebnis.status = static_cast<int>(zustand_.apiStatus);
        } else if (zustand_.api == Apiart::roh) {
            ergebnis = {200, zustand_.apiText};
        }
        schreibe(std::move(ergebnis), anfrage.methode == "HEAD",
                 anfrage.bleibtOffen ? Danach::bleibtOffen : Danach::schliesst);
    }

    HttpAntwort nimmAnmeldung(const std::string& koerper) {
        json anmeldung = liesJson(koerper);
        if (!istAnmeldung(anmeldung)) {
            return fehler(400, "erwartet ein Objekt mit id, name und vpn");
        }
        ++zustand_.anmeldungen;
        if (!gedaechtnis_.merkeAnmeldung(alsZeile(anmeldung))) {
            return fehler(500, "die Anmeldung ließ sich nicht merken");
        }
        zustand_.letzteAnmeldung = std::move(anmeldung);
        return {200, alsZeile(antwort(zustand_)) + "\n"};
    }

    HttpAntwort nimmBericht(const HttpAnfrage& anfrage) {
        const auto name = abfragewert(anfrage.abfrage, "name");
        if (!name || name->empty()) {
            return fehler(400, "erwartet einen Namen");
        }
        if (!zustand_.nimmtBerichte) {
            return fehler(503, "das Handy nimmt gerade keine Berichte an");
        }
        // A report that the client is told has failed, or hears nothing of, must not have arrived.
        if (zustand_.api == Apiart::heil || zustand_.api == Apiart::roh) {
            if (!gedaechtnis_.legeBerichtAb(*name, anfrage.koerper)) {
                return fehler(500, "der Bericht ließ sich nicht ablegen");
            }
            ++zustand_.berichte;
            zustand_.letzterBericht = *name;
        }
        return {200, "{\"ok\":true}\n"};
    }

    void schreibe(HttpAntwort antwort, bool nurKopf, Danach danach) {
        std::string text = "HTTP/1.1 " + std::to_string(antwort.status) + " " + grund(antwort.status) +
                           "\r\nContent-Type: application/json; charset=utf-8\r\nContent-Length: " +
                           std::to_string(antwort.koerper.size()) +
                           (antwort.status == 405 ? "\r\nAllow: POST" : "") +
                           (danach == Danach::bleibtOffen ? "" : "\r\nConnection: close") + "\r\n\r\n";
        if (!nurKopf) {
            text += antwort.koerper;
        }
        strom_->schreibe(std::move(text), [selbst = shared_from_this(), danach](bool heil) {
            if (!heil) {
                return;
            }
            if (danach == Danach::bleibtOffen) {
                selbst->arbeite();
            } else if (danach == Danach::schliesst) {
                selbst->strom_->schliesse();
            } else {
                selbst->laufeAus();
            }
        });
    }

    void laufeAus() {
        frist_.expires_after(nachlauf);
        frist_.async_wait([selbst = shared_from_this()](std::error_code) { selbst->strom_->schliesse(); });
        schluckeAlles();
    }

    void schluckeAlles() {
        strom_->lies([selbst = shared_from_this()](const std::string& daten) {
            if (!daten.empty()) {
                selbst->schluckeAlles();
            } else {
                selbst->frist_.cancel();
            }
        });
    }

    std::shared_ptr<Strom> strom_;
    Handyzustand& zustand_;
    Gedaechtnis& gedaechtnis_;
    asio::steady_timer frist_;
    HttpLeser leser_;
};

} // namespace

void bedieneApi(std::shared_ptr<Strom> strom, Handyzustand& zustand, Gedaechtnis& gedaechtnis) {
    std::make_shared<HttpSitzung>(std::move(strom), zustand, gedaechtnis)->arbeite();
}

} // namespace mobilsteg::probehandy
