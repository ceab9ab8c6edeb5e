#include "handy/Http.hpp"

#include "handy/Ports.hpp"
#include "plattform/Loopback.hpp"

#include <curl/curl.h>

#include <fcntl.h>

#include <chrono>
#include <memory>

namespace mobilsteg {

namespace {

using Zeit = std::chrono::steady_clock;

// The phone's answers have a few kilobytes.
constexpr std::size_t groessterKoerper = 4U << 20U;
// As many as the platform's own client follows before it gives up.
constexpr long meisteUmleitungen = 20;

/// One request's body and signs of life.
struct Vorgang {
    std::string koerper;
    std::chrono::seconds stille{}; ///< longest time without a byte in either direction
    Zeit::time_point letztesZeichen = Zeit::now();
    curl_off_t bewegt = 0;
};

std::size_t sammle(const char* bytes, std::size_t eins, std::size_t anzahl, void* ziel) {
    auto& koerper = static_cast<Vorgang*>(ziel)->koerper;
    if (koerper.size() + eins * anzahl > groessterKoerper)
        return 0; // anything but the full count aborts the transfer
    koerper.append(bytes, eins * anzahl);
    return eins * anzahl;
}

int pruefeStille(void* ziel, curl_off_t, curl_off_t herunter, curl_off_t, curl_off_t hinauf) {
    auto& vorgang = *static_cast<Vorgang*>(ziel);
    if (herunter + hinauf != vorgang.bewegt) {
        vorgang.bewegt = herunter + hinauf;
        vorgang.letztesZeichen = Zeit::now();
    }
    return Zeit::now() - vorgang.letztesZeichen > vorgang.stille ? 1 : 0;
}

// libcurl opens its sockets without the mark; a tool started meanwhile would inherit the connection.
int markiereSocket(void*, curl_socket_t nummer, curlsocktype) {
    ::fcntl(nummer, F_SETFD, FD_CLOEXEC);
    return CURL_SOCKOPT_OK;
}

/// A header line is a sign of life that the progress counters leave out.
std::size_t bemerkeKopf(const char*, std::size_t eins, std::size_t anzahl, void* ziel) {
    static_cast<Vorgang*>(ziel)->letztesZeichen = Zeit::now();
    return eins * anzahl;
}

/// Everything about a request but its address, headers and body.
void richteEin(CURL* griff, HttpAnfrage::Weg weg, Vorgang& vorgang) {
    const bool direkt = weg == HttpAnfrage::Weg::direkt;
    vorgang.stille = std::chrono::seconds(direkt ? 3 : 10);
    curl_easy_setopt(griff, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(griff, CURLOPT_CONNECTTIMEOUT, direkt ? 3L : 10L);
    curl_easy_setopt(griff, CURLOPT_TIMEOUT, direkt ? 4L : 12L);
    curl_easy_setopt(griff, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(griff, CURLOPT_XFERINFOFUNCTION, pruefeStille);
    curl_easy_setopt(griff, CURLOPT_XFERINFODATA, &vorgang);
    curl_easy_setopt(griff, CURLOPT_WRITEFUNCTION, sammle);
    curl_easy_setopt(griff, CURLOPT_WRITEDATA, &vorgang);
    curl_easy_setopt(griff, CURLOPT_HEADERFUNCTION, bemerkeKopf);
    curl_easy_setopt(griff, CURLOPT_HEADERDATA, &vorgang);
    curl_easy_setopt(griff, CURLOPT_SOCKOPTFUNCTION, markiereSocket);
    // The phone does not send us elsewhere: what it is told is for it alone.
    curl_easy_setopt(griff, CURLOPT_FOLLOWLOCATION, direkt ? 0L : 1L);
    curl_easy_setopt(griff, CURLOPT_MAXREDIRS, meisteUmleitungen);
    curl_easy_setopt(griff, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(griff, CURLOPT_ACCEPT_ENCODING, "");
    // A connection kept from an earlier request may still lead to the phone that was plugged in then, and
    // proves nothing about the path of now; and after a redirect the server may be closing the one that it
    // answered on.
    curl_easy_setopt(griff, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(griff, CURLOPT_SSL_SESSIONID_CACHE, 0L);
    // Set in both cases: an unset proxy or exception list would be read from the environment.
    curl_easy_setopt(griff, CURLOPT_PROXY, direkt ? "" : ("socks5h://" + amMac(socksPort)).c_str());
    curl_easy_setopt(griff, CURLOPT_NOPROXY, direkt ? "*" : "");
}

} // namespace

CurlHttp::CurlHttp() : griff_(nullptr, curl_easy_cleanup) {
    static const CURLcode vorbereitet = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (vorbereitet == CURLE_OK)
        griff_.reset(curl_easy_init());
}

std::optional<HttpErgebnis> CurlHttp::hole(const HttpAnfrage& anfrage) {
    CURL* griff = griff_.get();
    if (griff == nullptr)
        return std::nullopt;
    curl_easy_reset(griff);
    Vorgang vorgang;
    richteEin(griff, anfrage.weg, vorgang);
    curl_easy_setopt(griff, CURLOPT_URL, anfrage.url.c_str());

    // Empty, or curl would wait a second for the phone's leave to send a larger body.
    curl_slist* kopf = curl_slist_append(nullptr, "Expect:");
    for (const auto& [name, wert] : anfrage.kopf)
        kopf = curl_slist_append(kopf, (name + ": " + wert).c_str());
    curl_easy_setopt(griff, CURLOPT_HTTPHEADER, kopf);
    if (anfrage.methode == "POST") {
        curl_easy_setopt(griff, CURLOPT_POST, 1L);
        curl_easy_setopt(griff, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(anfrage.koerper.size()));
        curl_easy_setopt(griff, CURLOPT_POSTFIELDS, anfrage.koerper.data());
    }
    const CURLcode ausgang = curl_easy_perform(griff);
    curl_slist_free_all(kopf);
    long status = 0;
    curl_easy_getinfo(griff, CURLINFO_RESPONSE_CODE, &status);
    if (ausgang != CURLE_OK || status == 0)
        return std::nullopt;
    return HttpErgebnis{static_cast<int>(status), std::move(vorgang.koerper)};
}

bool CurlHttp::proxyGruesst() {
    using namespace std::string_view_literals;
    std::string antwort;
    // Version 5; one way to log in: without.
    frageLoopback(socksPort, "\x05\x01\x00"sv, std::chrono::seconds(1), [&](std::string_view bytes) {
        antwort += bytes;
        return antwort.size() < 2;
    });
    return antwort.starts_with("\x05\x00"sv);
}

} // namespace mobilsteg
