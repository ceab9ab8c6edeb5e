#include "handy/Antwort.hpp"

#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace mobilsteg {

using nlohmann::json;

namespace {

// Deeper than any honest answer, and as deep as the phone's other readers go.
constexpr std::size_t tiefstes = 512;

bool erkenne(const json& wert, std::string& ziel) {
    if (!wert.is_string())
        return false;
    ziel = wert.get_ref<const std::string&>();
    return true;
}

bool erkenne(const json& wert, bool& ziel) {
    if (!wert.is_boolean())
        return false;
    ziel = wert.get<bool>();
    return true;
}

bool erkenne(const json& wert, double& ziel) {
    if (!wert.is_number())
        return false;
    ziel = wert.get<double>();
    return true;
}

bool erkenne(const json& wert, std::int64_t& ziel) {
    using Grenzen = std::numeric_limits<std::int64_t>;
    if (wert.is_number_unsigned() && wert.get<std::uint64_t>() > static_cast<std::uint64_t>(Grenzen::max()))
        return false;
    if (wert.is_number_float()) { // 1.0 is an integer, 1.5 and 2^63 are not
        const double zahl = wert.get<double>();
        // Both ends excluded: a whole number just below the least one has been rounded to it by the parser.
        constexpr double grenze = 9223372036854775808.0;
        if (std::trunc(zahl) != zahl || zahl <= -grenze || zahl >= grenze)
            return false;
    } else if (!wert.is_number()) {
        return false;
    }
    ziel = wert.get<std::int64_t>();
    return true;
}

template <typename T>
bool erkenne(const json& wert, std::vector<T>& ziel);
bool erkenne(const json& wert, Pfad& ziel);
bool erkenne(const json& wert, Gast& ziel);
bool erkenne(const json& wert, Status& ziel);
bool erkenne(const json& wert, KabelGast& ziel);
bool erkenne(const json& wert, KabelStand& ziel);

/// Reads the fields of one object; `gut` tells whether all of them fitted.
class Felder {
public:
    explicit Felder(const json& objekt) : objekt_(objekt), gut(objekt.is_object()) {}

    template <typename T>
    Felder& muss(const char* name, T& ziel) {
        const json* wert = suche(name);
        gut = gut && wert != nullptr && erkenne(*wert, ziel);
        return *this;
    }

    template <typename T>
    Felder& kann(const char* name, std::optional<T>& ziel) {
        const json* wert = suche(name);
        if (gut && wert != nullptr && !wert->is_null())
            gut = erkenne(*wert, ziel.emplace());
        return *this;
    }

private:
    const json* suche(const char* name) const {
        if (!gut)
            return nullptr;
        const auto treffer = objekt_.find(name);
        return treffer == objekt_.end() ? nullptr : &*treffer;
    }

    const json& objekt_;

public:
    bool gut;
};

template <typename T>
bool erkenne(const json& wert, std::vector<T>& ziel) {
    if (!wert.is_array())
        return false;
    for (const json& element : wert)
        if (!erkenne(element, ziel.emplace_back()))
            return false;
    return true;
}

bool erkenne(const json& wert, Pfad& ziel) {
    return Felder(wert)
        .muss("iface", ziel.iface)
        .muss("healthy", ziel.healthy)
        .muss("rtt_ms", ziel.rtt_ms)
        .kann("rtt_ruhe_ms", ziel.rtt_ruhe_ms)
        .gut;
}

bool erkenne(const json& wert, Gast& ziel) {
    return Felder(wert)
        .muss("IP", ziel.IP)
        .muss("BytesUp", ziel.BytesUp)
        .muss("BytesDown", ziel.BytesDown)
        .gut;
}

bool erkenne(const json& wert, Status& ziel) {
    return Felder(wert)
        .kann("paths", ziel.paths)
        .kann("alles", ziel.alles)
        .kann("notlage", ziel.notlage)
        .kann("notlage_grund", ziel.notlage_grund)
        .kann("guests", ziel.guests)
        .kann("funkloecher", ziel.funkloecher)
        .kann("gerettet", ziel.gerettet)
        .gut;
}

bool erkenne(const json& wert, KabelGast& ziel) {
    return Felder(wert).muss("id", ziel.id).muss("name", ziel.name).gut;
}

bool erkenne(const json& wert, KabelStand& ziel) {
    return Felder(wert).kann("anfrage", ziel.anfrage).kann("gast", ziel.gast).gut;
}

} // namespace

std::optional<Antwort> Antwort::ausJson(std::string_view bytes) {
    // Counted beforehand: a parser that asks at each step looks through all earlier elements each time.
    if (klammertiefe(bytes) > tiefstes)
        return std::nullopt;
    try {
        const json dokument = json::parse(bytes);
        Antwort antwort;
        const bool gut = Felder(dokument)
                             .muss("app", antwort.app)
                             .muss("proxy_port", antwort.proxy_port)
                             .kann("zustand", antwort.zustand)
                             .muss("kabel", antwort.kabel)
                             .kann("status", antwort.status)
                             .gut;
        return gut ? std::optional(std::move(antwort)) : std::nullopt;
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

} // namespace mobilsteg
