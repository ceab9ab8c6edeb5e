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
    std::optional<double> rtt_ruhe_ms; ///< on an idle line
};

/// A machine that uses the phone.
struct Gast {
    std::string IP; ///< "kabel:" and the machine's name for one on the cable
    std::int64_t BytesUp = 0;
    std::int64_t BytesDown = 0;
};

struct Status {
    std::optional<std::vector<Pfad>> paths;
    std::optional<bool> alles; ///< whether all traffic is carried: first class
    std::optional<bool> notlage;
    std::optional<std::string> notlage_grund;
    std::optional<std::vector<Gast>> guests;
    std::optional<std::int64_t> funkloecher;
    std::optional<std::int64_t> gerettet;
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
    /// the whole. Unknown keys are passed over. Absent: it is no such document. Pure; any bytes may come.
    [[nodiscard]] static std::optional<Antwort> ausJson(std::string_view bytes);
};

} // namespace mobilsteg
