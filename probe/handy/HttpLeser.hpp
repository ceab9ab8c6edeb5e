#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace mobilsteg::probehandy {

struct HttpAnfrage {
    std::string methode;
    std::string pfad;    ///< without the query
    std::string abfrage; ///< what follows the question mark, still encoded
    std::string koerper;
    bool bleibtOffen = true; ///< the client expects to ask again on the same connection
};

struct HttpFehler {
    int status = 400;
};

/// Takes HTTP/1.1 requests out of a stream of bytes that may be cut anywhere. Understands bodies with a
/// Content-Length and chunked ones, up to hoechsterKoerper.
class HttpLeser {
public:
    static constexpr std::size_t hoechsterKoerper = 8 * 1024 * 1024;

    void nimm(std::string_view bytes) { puffer_ += bytes; }

    /// The next request; nothing while it is incomplete. After an error no request can be found any more.
    std::variant<std::monostate, HttpAnfrage, HttpFehler> naechste();

    /// True once per request whose client holds its body back until it is told to go on.
    bool wartetAufErlaubnis();

private:
    std::optional<HttpFehler> liesKopf();
    std::optional<HttpFehler> deuteKopf(std::string_view kopf);
    std::optional<HttpFehler> deuteZeile(std::string_view zeile);
    std::optional<HttpFehler> deuteFeld(std::string_view feld, std::string_view wert);
    std::optional<HttpFehler> liesStuecke();

    std::string puffer_;
    HttpAnfrage anfrage_;
    bool kopfDa_ = false;
    bool fertig_ = false;
    std::optional<std::size_t> laenge_;
    bool inStuecken_ = false;
    bool schlussstueck_ = false; ///< the last chunk has come, only trailers may follow
    bool erlaubnisErbeten_ = false;
};

} // namespace mobilsteg::probehandy
