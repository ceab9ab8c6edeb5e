#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace mobilsteg::probehandy {

inline constexpr std::uint16_t proxyPort = 1080;
inline constexpr std::uint16_t apiPort = 8080;

/// What the person holding the phone has answered to the Mac's request.
enum class Entscheidung { fragt, erlaubt, abgelehnt };

/// How the proxy behaves: as it should, hanging up after the greeting, saying nothing at all, or with an exit
/// address that is a web page instead of an address.
enum class Proxyart { heil, kaputt, stumm, unsinn };

/// How the app's interface behaves: as it should, never answering, with a status of its own choosing, or with
/// a body given word by word.
enum class Apiart { heil, stumm, fehler, roh };

struct Weg {
    bool da = true;
    double rttMs = 0;
    double rttRuheMs = 0;
};

/// One target that a client of the proxy has asked for, as it asked for it.
struct Proxyziel {
    std::string ziel;
    std::uint16_t port = 0;
    const char* art = ""; ///< "name", "ipv4" or "ipv6"
};

/// Everything about the phone that can be set from outside or is worth asking for.
struct Handyzustand {
    std::string modell = "SM_S911B";
    std::string austritt = "203.0.113.7";
    bool debugging = true;
    bool weitergabe = true;
    bool insNetz = false; ///< the proxy may reach further than this machine
    Entscheidung entscheidung = Entscheidung::fragt;

    Weg wlan{true, 42.7, 30.0};
    Weg mobilfunk{true, 61.3, 48.0};
    bool alles = false; ///< all traffic is carried, which is what first class means
    bool notlage = false;
    std::string notlageGrund; ///< empty: none is told
    std::uint64_t funkloecher = 0;
    std::uint64_t gerettet = 0;

    Proxyart proxy = Proxyart::heil;
    Apiart api = Apiart::heil;
    unsigned apiStatus = 500; ///< for Apiart::fehler
    std::string apiText;      ///< for Apiart::roh
    bool nimmtBerichte = true;

    std::uint64_t anmeldungen = 0;
    nlohmann::json letzteAnmeldung; ///< null until the first one
    std::uint64_t berichte = 0;
    std::string letzterBericht; ///< the name it was sent under; empty until the first one
    std::deque<Proxyziel> proxyziele;
    std::uint64_t bytesHoch = 0; ///< from the Mac to the net, without the proxy's own protocol
    std::uint64_t bytesRunter = 0;

    /// Only the latest ones are kept.
    void merkeZiel(Proxyziel ziel);

    /// All of it as one JSON object with German keys.
    nlohmann::json alsJson() const;
};

/// As one line, whatever bytes the texts in it are made of.
std::string alsZeile(const nlohmann::json& wert);

const char* name(Entscheidung entscheidung);
const char* name(Proxyart art);
const char* name(Apiart art);

} // namespace mobilsteg::probehandy
