#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/Einstellungen.hpp"

#include <string>
#include <string_view>

namespace mobilsteg {

/// The name of an edition as the user reads it in a profile. Pure.
[[nodiscard]] std::string anzeigename(bool bundleB2B, bool profilIstVpn);

/// Whether a package's identifier names the edition for company VPNs. Pure.
[[nodiscard]] bool istVpnLotse(std::string_view kennung);

/// Which edition this is and which profile its user works in. Callable on any queue.
class Variante {
public:
    enum class Art { reise, vpn };

    Variante(const Buendel& buendel, const Einstellungen& einstellungen);

    /// Whether this is the edition for company VPNs.
    [[nodiscard]] bool bundleB2B() const { return bundleB2B_; }

    /// The text of the profile: the stored one, else the edition's own.
    [[nodiscard]] std::string profil() const;

    /// The active variant; asks the settings each time.
    [[nodiscard]] Art aktuell() const;

    /// Why the full tunnel needs the administrator's password, for the system's dialog.
    [[nodiscard]] std::string adminGrund() const;

    /// This edition's, in the active variant.
    [[nodiscard]] std::string anzeigename() const;

private:
    const Einstellungen& einstellungen_;
    bool bundleB2B_;
};

} // namespace mobilsteg
