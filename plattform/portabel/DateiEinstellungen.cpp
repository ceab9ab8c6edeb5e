#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <mutex>
#include <utility>

namespace mobilsteg {

using nlohmann::json;

namespace {

// Deeper than any setting. nlohmann's copying and writing recurse.
constexpr std::size_t tiefstes = 100;

bool liegtDort(const std::string& pfad) {
    struct stat lage {};
    return ::lstat(pfad.c_str(), &lage) == 0; // a link that leads nowhere lies there as well
}

/// Moves what lies at `pfad` to the first free second name, and returns that. Absent: it is still there.
std::optional<std::string> legeBeiseite(const std::string& pfad) {
    for (int n = 1; n < 1000; ++n) {
        const std::string zweiter = pfad + (n == 1 ? ".defekt" : ".defekt-" + std::to_string(n));
        if (!liegtDort(zweiter))
            return ::rename(pfad.c_str(), zweiter.c_str()) == 0 ? std::optional(zweiter) : std::nullopt;
    }
    return std::nullopt;
}

std::string alsBytes(const json& werte) {
    return werte.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

class DateiEinstellungen final : public Einstellungen {
public:
    explicit DateiEinstellungen(std::string pfad) : pfad_(std::move(pfad)) {}

    [[nodiscard]] std::optional<std::string> text(const std::string& schluessel) const override {
        const json wert = lies(schluessel);
        return wert.is_string() ? std::optional(wert.get<std::string>()) : std::nullopt;
    }

    [[nodiscard]] std::optional<bool> flagge(const std::string& schluessel) const override {
        const json wert = lies(schluessel);
        return wert.is_boolean() ? std::optional(wert.get<bool>()) : std::nullopt;
    }

    [[nodiscard]] std::optional<Tabelle> tabelle(const std::string& schluessel) const override {
        const json wert = lies(schluessel);
        if (!wert.is_object())
            return std::nullopt;
        Tabelle tabelle;
        for (const auto& [name, zahl] : wert.items()) {
            if (!zahl.is_number_integer() ||
                (zahl.is_number_unsigned() && zahl.get<std::uint64_t>() > INT64_MAX))
                return std::nullopt;
            tabelle[name] = zahl.get<std::int64_t>();
        }
        return tabelle;
    }

    void setzeText(const std::string& schluessel, const std::string& wert) override {
        setze(schluessel, wert);
    }
    void setzeFlagge(const std::string& schluessel, bool wert) override { setze(schluessel, wert); }
    void setzeTabelle(const std::string& schluessel, const Tabelle& wert) override {
        setze(schluessel, wert);
    }
    void entferne(const std::string& schluessel) override { setze(schluessel, nullptr); }
    [[nodiscard]] std::string textOderNeu(const std::string& schluessel, const std::string& wert) override {
        return setze(schluessel, wert, Vorrang::stehenderText).get<std::string>();
    }

    [[nodiscard]] std::optional<std::string> speicherfehler() const override {
        const std::lock_guard wache(schloss_);
        return offen_.empty() ? std::nullopt : std::optional(fehlerbeschreibung(grund_));
    }
    [[nodiscard]] std::optional<std::string> beiseitegelegt() override {
        const std::lock_guard wache(schloss_);
        return std::exchange(beiseite_, std::nullopt);
    }

private:
    enum class Lage {
        verstanden,      ///< a settings file, or none at all
        unverstaendlich, ///< something lies there that is no settings file
        unerreichbar     ///< it may be a good one, but nothing can be opened just now
    };
    enum class Vorrang { neuer, stehenderText };

    /// Reads the file into `werte_`, which stays as it is when the file is out of reach.
    Lage liesDatei() const {
        if (!liegtDort(pfad_)) {
            werte_ = json::object();
            return Lage::verstanden;
        }
        const auto bytes = mobilsteg::liesDatei(pfad_, megabyte);
        if (!bytes && (errno == EMFILE || errno == ENFILE || errno == ENOMEM))
            return Lage::unerreichbar;
        werte_ = !bytes || klammertiefe(*bytes) > tiefstes ? json() : json::parse(*bytes, nullptr, false);
        if (werte_.is_object())
            return Lage::verstanden;
        werte_ = json::object();
        return Lage::unverstaendlich;
    }

    /// Null: nothing stands there.
    [[nodiscard]] json wert(const std::string& schluessel) const {
        return offen_.contains(schluessel) ? offen_[schluessel] : werte_.value(schluessel, json());
    }

    [[nodiscard]] json lies(const std::string& schluessel) const {
        const std::lock_guard wache(schloss_);
        liesDatei();
        return wert(schluessel);
    }

    /// Notes the change, stores all that are open, and returns what the key holds now.
    json setze(const std::string& schluessel, const json& neuer, Vorrang vorrang = Vorrang::neuer) {
        const std::lock_guard wache(schloss_);
        legeElternordnerAn(pfad_);
        const Dateisperre sperre(pfad_ + ".sperre"); // not the file itself, which is replaced
        const Lage lage = liesDatei();
        if (vorrang == Vorrang::neuer || !wert(schluessel).is_string())
            offen_[schluessel] = neuer;
        json stehender = wert(schluessel);
        grund_ = errno;
        if (lage != Lage::unerreichbar) // else writing now could wipe out what stands there
            speichere(lage);
        return stehender;
    }

    void speichere(Lage lage) {
        const std::string vorher = alsBytes(werte_);
        for (const auto& [schluessel, neuer] : offen_.items()) {
            if (neuer.is_null())
                werte_.erase(schluessel);
            else
                werte_[schluessel] = neuer;
        }
        const std::string bytes = alsBytes(werte_);
        const bool steht = lage == Lage::verstanden && bytes == vorher;
        const bool frei = lage == Lage::verstanden || (beiseite_ = legeBeiseite(pfad_));
        if (steht || (frei && schreibeAuchWennVoll(pfad_, bytes, Haltbarkeit::dauerhaft)))
            offen_ = json::object();
        grund_ = errno;
        if (!std::exchange(gefegt_, true))
            fegeReste(pfad_); // under the lock nobody else is in the middle of it
    }

    const std::string pfad_;
    mutable std::mutex schloss_;          // guards all below
    mutable json werte_ = json::object(); ///< as the file was read last
    int grund_ = 0;                       ///< the last failure's errno
    bool gefegt_ = false;
    std::optional<std::string> beiseite_;
    json offen_ = json::object(); ///< changes of this run that no disk has taken yet; null means removed
};

} // namespace

std::unique_ptr<Einstellungen> dateiEinstellungen(const std::string& pfad) {
    return std::make_unique<DateiEinstellungen>(pfad);
}

} // namespace mobilsteg
