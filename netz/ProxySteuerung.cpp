#include "netz/ProxySteuerung.hpp"

namespace mobilsteg {

ProxySteuerung::Setzung ProxySteuerung::setze() {
    const auto dienst = proxy_.dienst();
    if (!dienst)
        return {Ausgang::keinDienst, ""};
    if (const auto grund = proxy_.setzen(*dienst, socksPort))
        return {Ausgang::misslungen, *grund};
    dienst_ = dienst;
    gesetzt_ = true;
    return {Ausgang::gesetzt, *dienst};
}

std::optional<std::string> ProxySteuerung::nimmWeg() {
    proxy_.nimmUngewisseZurueck();
    const auto gemerkt = proxy_.gemerkterDienst();
    if (!gesetzt_ && !gemerkt)
        return std::nullopt;
    const std::string dienst = dienst_ ? *dienst_ : gemerkt.value_or("Wi-Fi");
    // A failure is not reported: the remembered service stays then, and the next call tries again.
    (void)proxy_.entfernen(dienst);
    gesetzt_ = false;
    return dienst;
}

void ProxySteuerung::nimmUebriggebliebenenWeg() {
    proxy_.nimmUngewisseZurueck();
    if (const auto gemerkt = proxy_.gemerkterDienst())
        (void)proxy_.entfernen(*gemerkt);
}

std::string ProxySteuerung::dienstFuerTunnel() const {
    return dienst_ ? *dienst_ : proxy_.dienst().value_or("Wi-Fi");
}

} // namespace mobilsteg
