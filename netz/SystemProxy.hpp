#pragma once

#include "handy/Lauf.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Orte.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// The SOCKS proxy of one of the Mac's network services, switched through the Mac's own tools. The service on
/// which it was last switched on is remembered in the settings, so that a later run can take it back after a
/// crash. Every operation runs one or two tools and blocks; work queue only.
///
/// Where the result is an optional text, absent means success and a text is the reason for failure.
class SystemProxy {
public:
    SystemProxy(Laeufer laeufer, Orte orte, Einstellungen& einstellungen);

    /// The network service through which the Mac reaches the internet now; absent when none can be told.
    [[nodiscard]] std::optional<std::string> dienst() const;

    /// Points the service at 127.0.0.1:`port` and switches its proxy on.
    [[nodiscard]] std::optional<std::string> setzen(const std::string& dienst, int port);

    /// Switches the service's proxy off; the address stays configured.
    [[nodiscard]] std::optional<std::string> entfernen(const std::string& dienst);

    /// The service on which an earlier run (or this one) left the proxy on.
    [[nodiscard]] std::optional<std::string> gemerkterDienst() const;

    /// Switches off what may be on beside the remembered service: where switching on or off was cut short, by
    /// the tool's failure or by this program's death. Without such a place no tool runs.
    void nimmUngewisseZurueck();

    // The reading of the tools' texts. Pure.
    [[nodiscard]] static std::optional<std::string> schnittstelle(std::string_view routeAusgabe);
    [[nodiscard]] static std::optional<std::string>
    dienstFuer(const std::optional<std::string>& schnittstelle, std::string_view reihenfolge);
    /// Every service in the tool's list, the disabled ones too.
    [[nodiscard]] static std::vector<std::string> dienste(std::string_view reihenfolge);
    [[nodiscard]] static std::string fehlertext(const Ergebnis& ergebnis);

private:
    [[nodiscard]] Ergebnis networksetup(const std::vector<std::string>& argumente, double sekunden) const;
    Ergebnis schalteAus(const std::string& dienst);

    Laeufer laeufer_;
    Orte orte_;
    Einstellungen& einstellungen_;
    Ruecknahmen ungewisse_; ///< services whose proxy may be on beside the remembered one's
};

} // namespace mobilsteg
