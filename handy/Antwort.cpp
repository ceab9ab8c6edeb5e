#include "handy/Antwort.hpp"

#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace mobilsteg {

using nlohmann::json;

namespace {

// Deeper than any honest answer, and as deep as the phone's other readers go.
constexpr std::size_t tiefsteAntwort = 512;

// More than any phone has, and as much as a panel can show.
constexpr std::size_t meistePfade = 16;
constexpr std::size_t laengsterText = 200;

/// The value of a number written with a point or an exponent; absent when it is no integer of 64 bits.
std::optional<std::int64_t> ganzzahl(const std::string& text) {
    std::string ziffern = text.substr(0, text.find_first_of("eE"));
    const char* nachE = text.c_str() + std::min(ziffern.size() + 1, text.size());
    const long exponent = std::clamp(std::strtol(nachE, nullptr, 10), -1'000'000'000L, 1'000'000'000L);
    const auto punkt = std::min(ziffern.find('.'), ziffern.size());
    ziffern.erase(punkt, 1);
    if (ziffern.find_first_of("123456789") == std::string::npos)
        return 0;
    const auto stellen = static_cast<std::size_t>(std::max(0L, static_cast<long>(punkt) + exponent));
    if (ziffern.find_first_not_of('0', stellen) != std::string::npos || stellen > ziffern.size() + 18)
        return std::nullopt;
    ziffern.resize(stellen, '0');
    std::int64_t wert = 0;
    const auto gelesen = std::from_chars(ziffern.data(), ziffern.data() + stellen, wert);
    return gelesen.ec == std::errc() ? std::optional(wert) : std::nullopt;
}

/// Builds the document. An integer in it is judged by its text: rounded to a double,
/// 1.00000000000000000001 would be one.
struct Aufbau : nlohmann::detail::json_sax_dom_parser<json> {
    using Basis = nlohmann::detail::json_sax_dom_parser<json>;
    using Basis::Basis;

    bool number_float(double wert, const std::string& text) {
        const auto ganz = ganzzahl(text);
        return ganz ? number_integer(*ganz) : Basis::number_float(wert, text);
    }
    bool number_unsigned(std::uint64_t wert) {
        return wert <= INT64_MAX ? Basis::number_unsigned(wert)
                                 : Basis::number_float(static_cast<double>(wert), "");
    }
};

/// Thrown where a field is missing or of the wrong type; caught in `ausJson`.
struct Unpassend {};

template <typename T>
T als(const json& wert) {
    const bool passt = std::is_same_v<T, std::string> ? wert.is_string()
                       : std::is_same_v<T, bool>      ? wert.is_boolean()
                       : std::is_same_v<T, double>    ? wert.is_number()
                                                      : wert.is_number_integer();
    return passt ? wert.get<T>() : throw Unpassend{};
}

/// The field's value; null when it is missing or null.
const json* suche(const json& objekt, const char* name) {
    if (!objekt.is_object())
        throw Unpassend{};
    const auto treffer = objekt.find(name);
    return treffer == objekt.end() || treffer->is_null() ? nullptr : &*treffer;
}

template <typename T>
T muss(const json& objekt, const char* name) {
    const json* wert = suche(objekt, name);
    return wert != nullptr ? als<T>(*wert) : throw Unpassend{};
}

template <typename T>
std::optional<T> kann(const json& objekt, const char* name) {
    const json* wert = suche(objekt, name);
    return wert != nullptr ? std::optional(als<T>(*wert)) : std::nullopt;
}

template <typename T>
std::vector<T> liste(const json& objekt, const char* name) {
    const json* wert = suche(objekt, name);
    if (wert == nullptr)
        return {};
    if (!wert->is_array())
        throw Unpassend{};
    std::vector<T> elemente;
    for (const json& element : *wert)
        elemente.push_back(als<T>(element));
    return elemente;
}

/// What the user gets to see of a text.
std::string zeile(const std::string& text) {
    return einzeilig(text, laengsterText);
}

template <>
Pfad als(const json& w) {
    return {zeile(muss<std::string>(w, "iface")), muss<bool>(w, "healthy"), muss<double>(w, "rtt_ms"),
            kann<double>(w, "rtt_ruhe_ms").value_or(0)};
}

template <>
Gast als(const json& w) {
    return {muss<std::string>(w, "IP"), muss<std::int64_t>(w, "BytesUp"), muss<std::int64_t>(w, "BytesDown")};
}

template <>
Status als(const json& w) {
    auto pfade = liste<Pfad>(w, "paths");
    pfade.resize(std::min(pfade.size(), meistePfade));
    return {std::move(pfade),
            kann<bool>(w, "alles").value_or(false),
            kann<bool>(w, "notlage").value_or(false),
            zeile(kann<std::string>(w, "notlage_grund").value_or("")),
            liste<Gast>(w, "guests"),
            kann<std::int64_t>(w, "funkloecher").value_or(0),
            kann<std::int64_t>(w, "gerettet").value_or(0)};
}

template <>
KabelGast als(const json& w) {
    return {muss<std::string>(w, "id"), zeile(muss<std::string>(w, "name"))};
}

template <>
KabelStand als(const json& w) {
    return {kann<KabelGast>(w, "anfrage"), kann<KabelGast>(w, "gast")};
}

template <>
Antwort als(const json& w) {
    auto zustand = kann<std::string>(w, "zustand");
    if (zustand)
        zustand = zeile(*zustand);
    return {muss<std::string>(w, "app"), muss<std::int64_t>(w, "proxy_port"), std::move(zustand),
            muss<KabelStand>(w, "kabel"), kann<Status>(w, "status")};
}

} // namespace

std::optional<Antwort> Antwort::ausJson(std::string_view bytes) {
    // Counted beforehand: a parser that asks at each step looks through all earlier elements each time.
    if (klammertiefe(bytes) > tiefsteAntwort)
        return std::nullopt;
    json dokument;
    Aufbau aufbau(dokument, false);
    if (!json::sax_parse(bytes, &aufbau))
        return std::nullopt;
    try {
        return als<Antwort>(dokument);
    } catch (const Unpassend&) {
        return std::nullopt;
    }
}

} // namespace mobilsteg
