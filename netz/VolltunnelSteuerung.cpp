#include "netz/VolltunnelSteuerung.hpp"

#include <utility>

namespace mobilsteg {

VolltunnelSteuerung::VolltunnelSteuerung(Volltunnel::Anschluesse anschluesse, Wunsch w)
    : wunsch(w), volltunnel_(std::move(anschluesse)) {}

bool VolltunnelSteuerung::startFaellig(bool bewiesen) const {
    return wunsch.an && bewiesen && !startet_ && !volltunnel_.laeuft() && !volltunnel_.markeLiegt();
}

bool VolltunnelSteuerung::aufgeschobenerFaellig(bool bewiesen) {
    constexpr int geduld = 10; // ticks
    const bool wartet =
        wunsch.an && bewiesen && !startet_ && !volltunnel_.laeuft() && volltunnel_.stoppGebeten();
    if (!wartet || !volltunnel_.markeLiegt()) {
        // It only just went: then the start that waited for it is due.
        return std::exchange(taktMitMarke_, 0) > 0 && startFaellig(bewiesen);
    }
    if (++taktMitMarke_ >= geduld)
        volltunnel_.entferneMarke();
    return false;
}

Tunnelauftrag VolltunnelSteuerung::beginne(const std::string& dienst) {
    startet_ = true;
    return {dienst, wunsch.vpnDurch, wunsch.nurVPN};
}

bool VolltunnelSteuerung::beendeStart(bool gelungen) {
    startet_ = false;
    return gelungen && volltunnel_.bestaetige();
}

bool VolltunnelSteuerung::ueberholt(const Tunnelauftrag& auftrag, bool bewiesen) const {
    return !wunsch.an || !bewiesen || auftrag.vpnDurch != wunsch.vpnDurch || auftrag.nurVPN != wunsch.nurVPN;
}

bool VolltunnelSteuerung::nimmWeg() {
    if (!volltunnel_.laeuft() && !volltunnel_.markeLiegt())
        return false;
    volltunnel_.stopp();
    return true;
}

void VolltunnelSteuerung::nimmUebriggebliebenenWeg() {
    if (volltunnel_.markeLiegt())
        volltunnel_.stoppeUebriggebliebenen();
}

void VolltunnelSteuerung::gibAuf() {
    if (startet_)
        volltunnel_.bitteUmStopp();
}

std::optional<std::string> VolltunnelSteuerung::zurueckgebaut() {
    if (!volltunnel_.laeuft() || volltunnel_.markeLiegt())
        return std::nullopt;
    volltunnel_.stopp();
    return volltunnel_.grund();
}

} // namespace mobilsteg
