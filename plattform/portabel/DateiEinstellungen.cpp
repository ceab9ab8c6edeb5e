#include "plattform/portabel/DateiEinstellungen.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <mutex>
#include <optional>

namespace mobilsteg {

using nlohmann::json;

namespace {

/// Tells one version of a replaced file from the next without reading it.
struct Stempel {
    dev_t geraet = 0;
    ino_t nummer = 0;
    off_t laenge = -1;
    std::int64_t sekunden = 0;
    std::int64_t nanosekunden = 0;
    bool operator==(const Stempel&) const = default;
};

Stempel stempel(const std::string& pfad) {
    struct stat lage {};
    if (::stat(pfad.c_str(), &lage) != 0)
        return {};
#ifdef __APPLE__
    const timespec& zeit = lage.st_mtimespec;
#else
    const timespec& zeit = lage.st_mtim;
#endif
    return {lage.st_dev, lage.st_ino, lage.st_size, zeit.tv_sec, zeit.tv_nsec};
}

enum class Lage {
    verstanden,      ///< a settings file, or none at all
    unverstaendlich, ///< something lies there that is no settings file
    unerreichbar     ///< it may be a good one, but nothing can be opened just now
};

struct Inhalt {
    json werte = json::object();
    Lage lage = Lage::verstanden;
};

// Deeper than any setting. nlohmann's copying and writing recurse.
constexpr std::size_t tiefstes = 100;

Inhalt lies(const std::string& pfad) {
    struct stat lage {};
    if (::lstat(pfad.c_str(), &lage) != 0 && errno == ENOENT)
        return {};
    const auto bytes = liesDatei(pfad);
    if (!bytes) {
        const bool voruebergehend = errno == EMFILE || errno == ENFILE || errno == ENOMEM;
        return {json::object(), voruebergehend ? Lage::unerreichbar : Lage::unverstaendlich};
    }
    json werte = klammertiefe(*bytes) > tiefstes ? json() : json::parse(*bytes, nullptr, false);
    if (!werte.is_object())
        return {json::object(), Lage::unverstaendlich};
    return {std::move(werte), Lage::verstanden};
}

/// Moves what lies at `pfad` to the first free second name. False: it is still there.
bool legeBeiseite(const std::string& pfad) {
    for (int n = 1; n < 1000; ++n) {
        const std::string zweiter = pfad + (n == 1 ? ".defekt" : ".defekt-" + std::to_string(n));
        struct stat lage {};
        if (::lstat(zweiter.c_str(), &lage) == 0)
            continue;
        return ::rename(pfad.c_str(), zweiter.c_str()) == 0;
    }
    return false;
}

} // namespace

struct DateiEinstellungen::Innen {
    std::string pfad;
    mutable std::mutex schloss; // guards all below
    mutable json gelesen = json::object();
    mutable std::optional<Stempel> stand;
    json offen = json::object(); ///< changes of this run that no disk has taken yet; null means removed

    json wert(const std::string& schluessel) const {
        const std::lock_guard wache(schloss);
        if (const auto eigener = offen.find(schluessel); eigener != offen.end())
            return *eigener;
        if (const Stempel jetzt = stempel(pfad); stand != jetzt) {
            Inhalt inhalt = lies(pfad);
            gelesen = std::move(inhalt.werte);
            stand = inhalt.lage == Lage::unerreichbar ? std::nullopt : std::optional(jetzt);
        }
        const auto treffer = gelesen.find(schluessel);
        return treffer == gelesen.end() ? json() : *treffer;
    }

    /// Lets `aenderung` look at what the file holds now and add to the open changes; then stores all of them.
    void aendere(const std::function<void(const json& werte, json& offen)>& aenderung) {
        const std::lock_guard wache(schloss);
        legeElternordnerAn(pfad);
        const Dateisperre sperre(pfad + ".sperre"); // not the file itself, which is replaced
        const Inhalt inhalt = lies(pfad);
        aenderung(inhalt.werte, offen);
        if (inhalt.lage == Lage::unerreichbar)
            return; // writing now could wipe out what stands there
        json werte = inhalt.werte;
        for (const auto& [schluessel, wert] : offen.items()) {
            if (wert.is_null())
                werte.erase(schluessel);
            else
                werte[schluessel] = wert;
        }
        const bool verstanden = inhalt.lage == Lage::verstanden;
        if (verstanden && werte == inhalt.werte && existiert(pfad)) {
            offen = json::object();
            return;
        }
        if (!verstanden && !legeBeiseite(pfad))
            return;
        const std::string bytes = werte.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
        if (schreibeAtomar(pfad, bytes, Haltbarkeit::dauerhaft))
            offen = json::object();
        stand.reset();
    }

    void setze(const std::string& schluessel, const json& wert) {
        aendere([&](const json&, json& aenderungen) { aenderungen[schluessel] = wert; });
    }
};

DateiEinstellungen::DateiEinstellungen(std::string pfad) : innen_(std::make_unique<Innen>()) {
    innen_->pfad = std::move(pfad);
}

DateiEinstellungen::~DateiEinstellungen() = default;

std::optional<std::string> DateiEinstellungen::text(const std::string& schluessel) const {
    const json wert = innen_->wert(schluessel);
    return wert.is_string() ? std::optional(wert.get<std::string>()) : std::nullopt;
}

std::optional<bool> DateiEinstellungen::flagge(const std::string& schluessel) const {
    const json wert = innen_->wert(schluessel);
    return wert.is_boolean() ? std::optional(wert.get<bool>()) : std::nullopt;
}

std::optional<Einstellungen::Tabelle> DateiEinstellungen::tabelle(const std::string& schluessel) const {
    const json wert = innen_->wert(schluessel);
    if (!wert.is_object())
        return std::nullopt;
    Tabelle tabelle;
    for (const auto& [name, zahl] : wert.items()) {
        if (!zahl.is_number_integer() || (zahl.is_number_unsigned() && zahl.get<std::uint64_t>() > INT64_MAX))
            return std::nullopt;
        tabelle[name] = zahl.get<std::int64_t>();
    }
    return tabelle;
}

void DateiEinstellungen::setzeText(const std::string& schluessel, const std::string& wert) {
    innen_->setze(schluessel, wert);
}

void DateiEinstellungen::setzeFlagge(const std::string& schluessel, bool wert) {
    innen_->setze(schluessel, wert);
}

void DateiEinstellungen::setzeTabelle(const std::string& schluessel, const Tabelle& wert) {
    innen_->setze(schluessel, json(wert));
}

void DateiEinstellungen::entferne(const std::string& schluessel) {
    innen_->setze(schluessel, json());
}

std::string DateiEinstellungen::textOderNeu(const std::string& schluessel, const std::string& wert) {
    std::string stehender = wert;
    innen_->aendere([&](const json& werte, json& aenderungen) {
        // One that this run could not store yet stands before the file's, as it does for `text`.
        const json& quelle = aenderungen.contains(schluessel) ? aenderungen : werte;
        const auto treffer = quelle.find(schluessel);
        if (treffer != quelle.end() && treffer->is_string())
            stehender = treffer->get<std::string>();
        else
            aenderungen[schluessel] = wert;
    });
    return stehender;
}

} // namespace mobilsteg
