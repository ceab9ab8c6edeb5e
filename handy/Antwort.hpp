#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

// What the phone tells about itself. The fields are named as in its JSON.

/// One network path of the phone.
struct Pfad {
    std::string iface; ///< "wifi", "cellular" or another kind of interface
    bool healthy = false;
    double rtt_ms = 0;
    double rtt_ruhe_ms = 0; ///< on an idle line; 0 when the phone does not tell
};

/// A machine that uses the phone.
struct Gast {
    std::string IP; ///< "kabel:" and the machine's name for one on the cable
    std::int64_t BytesUp = 0;
    std::int64_t BytesDown = 0;
};

/// What the phone leaves out has the value that stands here.
struct Status {
    std::vector<Pfad> paths;
    bool alles = false; ///< whether all traffic is carried: first class
    bool notlage = false;
    std::string notlage_grund;
    std::vector<Gast> guests;
    std::int64_t funkloecher = 0;
    std::int64_t gerettet = 0;
};

struct KabelGast {
    std::string id;
    std::string name;
};

struct KabelStand {
    std::optional<KabelGast> anfrage; ///< waits for the user's yes on the phone
    std::optional<KabelGast> gast;    ///< has it
};

struct Antwort {
    std::string app;
    std::int64_t proxy_port = 0;
    std::optional<std::string> zustand; ///< "erlaubt", "abgelehnt", or not decided yet
    KabelStand kabel;
    std::optional<Status> status;

    /// Reads a document strictly: a required field that is missing, or any field of the wrong type, spoils
    /// the whole. Unknown keys are passed over, and so are paths beyond the sixteenth; texts become one line
    /// of at most 200 characters. Absent: it is no such document. Pure; any bytes may come.
    [[nodiscard]] static std::optional<Antwort> ausJson(std::string_view bytes);
};

} // namespace mobilsteg
