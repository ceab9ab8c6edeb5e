#include "handy/Http.hpp"

#include "handy/Ports.hpp"

#include <curl/curl.h>

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <cerrno>
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

/// A header line is a sign of life that the progress counters leave out. And a body that a redirect answered
/// with must not stand before the final one.
std::size_t bemerkeKopf(const char* zeile, std::size_t eins, std::size_t anzahl, void* ziel) {
    auto& vorgang = *static_cast<Vorgang*>(ziel);
    vorgang.letztesZeichen = Zeit::now();
    if (std::string_view(zeile, eins * anzahl).starts_with("HTTP/"))
        vorgang.koerper.clear();
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
    // A redirect asks anew: the server may be closing the connection that it answered on.
    curl_easy_setopt(griff, CURLOPT_FORBID_REUSE, 1L);
    // Set in both cases: an unset proxy or exception list would be read from the environment.
    curl_easy_setopt(griff, CURLOPT_PROXY, direkt ? "" : ("socks5h://" + amMac(socksPort)).c_str());
    curl_easy_setopt(griff, CURLOPT_NOPROXY, direkt ? "*" : "");
}

using Griff = std::unique_ptr<CURL, void (*)(CURL*)>;

/// One for each request: a connection kept from an earlier one may still lead to the phone that was plugged
/// in then, and proves nothing about the path of now. Null: there is none to be had.
Griff neuerGriff() {
    static const CURLcode vorbereitet = curl_global_init(CURL_GLOBAL_DEFAULT);
    return {vorbereitet == CURLE_OK ? curl_easy_init() : nullptr, curl_easy_cleanup};
}

/// What comes over the handle's connection, once it is `anzahl` bytes; less when they do not come in time.
std::string empfange(CURL* griff, std::size_t anzahl, Zeit::time_point frist) {
    std::string bytes;
    curl_socket_t nummer = CURL_SOCKET_BAD;
    curl_easy_getinfo(griff, CURLINFO_ACTIVESOCKET, &nummer);
    while (bytes.size() < anzahl) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(frist - Zeit::now()).count();
        pollfd fall{nummer, POLLIN, 0};
        if (rest <= 0 || (::poll(&fall, 1, static_cast<int>(rest)) < 0 && errno != EINTR))
            break;
        std::array<char, 16> block{};
        std::size_t n = 0;
        const auto ausgang =
            curl_easy_recv(griff, block.data(), std::min(block.size(), anzahl - bytes.size()), &n);
        if (ausgang != CURLE_AGAIN && (ausgang != CURLE_OK || n == 0))
            break;
        bytes.append(block.data(), n);
    }
    return bytes;
}

} // namespace

std::optional<HttpErgebnis> CurlHttp::hole(const HttpAnfrage& anfrage) {
    const auto besitz = neuerGriff();
    CURL* griff = besitz.get();
    if (griff == nullptr)
        return std::nullopt;
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
    const auto frist = Zeit::now() + std::chrono::seconds(1);
    const auto besitz = neuerGriff();
    CURL* griff = besitz.get();
    if (griff == nullptr)
        return false;
    curl_easy_setopt(griff, CURLOPT_URL, ("http://" + amMac(socksPort)).c_str());
    curl_easy_setopt(griff, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(griff, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(griff, CURLOPT_TIMEOUT_MS, 1000L);
    curl_easy_setopt(griff, CURLOPT_SOCKOPTFUNCTION, markiereSocket);
    curl_easy_setopt(griff, CURLOPT_CONNECT_ONLY, 1L);
    constexpr auto gruss = "\x05\x01\x00"sv; // version 5; one way to log in: without
    std::size_t gesendet = 0;
    return curl_easy_perform(griff) == CURLE_OK &&
           curl_easy_send(griff, gruss.data(), gruss.size(), &gesendet) == CURLE_OK &&
           gesendet == gruss.size() && empfange(griff, 2, frist) == "\x05\x00"sv;
}

} // namespace mobilsteg
