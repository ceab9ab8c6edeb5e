#include "volltunnel/Tabelle.hpp"

namespace mobilsteg::volltunnel {

Tabelle::Eintrag* Tabelle::eintrag(std::uint16_t port) {
    const std::size_t i = static_cast<std::size_t>(port) - ersterPort; // below the first one: far too large
    return i < eintraege_.size() ? &eintraege_[i] : nullptr;
}

std::optional<std::uint16_t> Tabelle::freierPort(Zeit jetzt) {
    if (!ruhende_.empty() && ruhende_.front().seit + ruhezeit <= jetzt) {
        const std::uint16_t port = ruhende_.front().port;
        ruhende_.pop_front();
        Eintrag& alter = *eintrag(port);
        if (alter.gueltig)
            ports_.erase(alter.fluss);
        alter = {};
        return port;
    }
    const std::size_t naechster = ersterPort + eintraege_.size();
    if (naechster > 65'535)
        return std::nullopt;
    eintraege_.emplace_back();
    return static_cast<std::uint16_t>(naechster);
}

std::optional<std::uint16_t> Tabelle::hin(const Fluss& fluss, bool anfang, Zeit jetzt) {
    const auto bekannt = ports_.find(fluss);
    if (bekannt != ports_.end() && !(anfang && eintrag(bekannt->second)->ruht))
        return bekannt->second;
    if (!anfang)
        return std::nullopt;
    const auto port = freierPort(jetzt);
    if (!port)
        return std::nullopt;
    // The program took its own port again: what still comes from the old connection is no longer for it.
    if (const auto alter = ports_.find(fluss); alter != ports_.end())
        eintrag(alter->second)->gueltig = false;
    ports_.insert_or_assign(fluss, *port);
    Eintrag& neuer = *eintrag(*port);
    neuer.fluss = fluss;
    neuer.gueltig = true;
    begonnene_.push_back({*port, jetzt});
    return port;
}

const Tabelle::Fluss* Tabelle::her(std::uint16_t port) const {
    const Eintrag* e = const_cast<Tabelle*>(this)->eintrag(port);
    return e != nullptr && e->gueltig ? &e->fluss : nullptr;
}

std::optional<Tabelle::Fluss> Tabelle::nimmAn(std::uint16_t port) {
    Eintrag* e = eintrag(port);
    if (e == nullptr || !e->gueltig || e->ruht)
        return std::nullopt;
    if (e->halter++ == 0)
        ++gehalten_;
    return e->fluss;
}

void Tabelle::gibFrei(std::uint16_t port, Zeit jetzt) {
    if (--eintrag(port)->halter > 0)
        return;
    --gehalten_;
    ruhe(port, jetzt);
}

void Tabelle::ruhe(std::uint16_t port, Zeit jetzt) {
    eintrag(port)->ruht = true;
    ruhende_.push_back({port, jetzt});
}

void Tabelle::raeume(Zeit jetzt) {
    for (; !begonnene_.empty() && begonnene_.front().seit + geduld <= jetzt; begonnene_.pop_front()) {
        const Eintrag& e = *eintrag(begonnene_.front().port);
        if (e.halter == 0 && !e.ruht)
            ruhe(begonnene_.front().port, jetzt);
    }
}

bool Tabelle::lebt(const Adresse& ziel) const {
    for (const Eintrag& e : eintraege_)
        if (e.halter > 0 && e.fluss.nach.address() == ziel)
            return true;
    return false;
}

} // namespace mobilsteg::volltunnel
