#include "netz/Variante.hpp"

namespace mobilsteg {

std::string anzeigename(bool bundleB2B, bool profilIstVpn) {
    if (bundleB2B)
        return "Mobilsteg VPN-Lotse";
    return profilIstVpn ? "Mobilsteg Bordlotse · VPN" : "Mobilsteg Bordlotse";
}

bool istVpnLotse(std::string_view kennung) {
    return kennung.ends_with("vpnlotse");
}

Variante::Variante(const Buendel& buendel, const Einstellungen& einstellungen)
    : einstellungen_(einstellungen), bundleB2B_(istVpnLotse(buendel.kennung)) {}

std::string Variante::profil() const {
    return einstellungen_.text("profil").value_or(bundleB2B_ ? "vpn" : "reise");
}

Variante::Art Variante::aktuell() const {
    return profil() == "vpn" ? Art::vpn : Art::reise;
}

std::string Variante::anzeigename() const {
    return mobilsteg::anzeigename(bundleB2B_, aktuell() == Art::vpn);
}

std::string Variante::adminGrund() const {
    if (aktuell() == Art::vpn)
        return anzeigename() + " braucht einmal Administratorrechte: "
                               "Er legt eine Netzwerkschnittstelle an und leitet den Verkehr des Mac — "
                               "auch Ihren VPN — über das Handy, das WLAN und Mobilfunk bündelt. "
                               "Beim Abstecken wird alles zurückgebaut.";
    return "Mobilsteg Bordlotse braucht einmal Administratorrechte für den Volltunnel: "
           "Netzwerkschnittstelle anlegen, Routen und DNS setzen. "
           "Beim Abstecken wird alles zurückgebaut.";
}

} // namespace mobilsteg
