#pragma once

#include "handy/Handy.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Uhr.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// Uploads the logs' new parts and a diagnosis of the Mac's network to the phone, so that all that explains a
/// trouble lies in one place. Work queue only; blocks for the tools' and the uploads' time, a minute at
/// worst.
class Berichte {
public:
    struct Protokolldatei {
        std::string name; ///< under which the phone keeps it
        std::string pfad;
    };

    /// What the documents say about the program.
    struct Angaben {
        std::string rechner;
        std::string id;
        std::string ausgabe; ///< the edition's title
        std::optional<std::string> version;
        std::optional<std::string> bauversion;
        Uhr::Zeitpunkt zeit;
        std::string phase;
        bool volltunnel = false;
        bool proxy = false;
    };

    Berichte(Laeufer laeufer, Orte orte, Einstellungen& einstellungen, std::vector<Protokolldatei> dateien);

    void sende(Handy& handy, const Angaben& angaben);

private:
    [[nodiscard]] std::string diagnose(const Angaben& angaben) const;
    [[nodiscard]] std::string ausgabe(const std::string& werkzeug, const std::vector<std::string>& argumente,
                                      double sekunden) const;
    [[nodiscard]] std::optional<std::string> tailscale() const;
    [[nodiscard]] std::string tailscaleDiagnose() const;

    Laeufer laeufer_;
    Orte orte_;
    Einstellungen& einstellungen_;
    std::vector<Protokolldatei> dateien_;
};

} // namespace mobilsteg
