#include "netz/VolltunnelSteuerung.hpp"

#include <utility>

namespace mobilsteg {

VolltunnelSteuerung::VolltunnelSteuerung(Volltunnel::Anschluesse anschluesse, Wunsch w)
    : wunsch(w), volltunnel_(std::move(anschluesse)) {}

bool VolltunnelSteuerung::startMoeglich(bool bewiesen) const {
    return wunsch.an && bewiesen && !startet_ && !volltunnel_.laeuft();
}

bool VolltunnelSteuerung::startFaellig(bool bewiesen) {
    const bool moeglich = startMoeglich(bewiesen);
    // Remembered here and not told from the mark later: by the next look it may have gone already.
    aufgeschoben_ = moeglich && volltunnel_.markeLiegt();
    taktMitMarke_ = 0;
    return moeglich && !aufgeschoben_;
}

bool VolltunnelSteuerung::aufgeschobenerFaellig(bool bewiesen) {
    constexpr int geduld = 10; // ticks
    if (!aufgeschoben_)
        return false;
    const bool wartet = startMoeglich(bewiesen) && volltunnel_.stoppGebeten();
    if (!wartet || !volltunnel_.markeLiegt())
        return startFaellig(bewiesen);
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
    constexpr int geduld = 3; // requests of ten seconds
    volltunnel_.stopp();
    if (!volltunnel_.markeLiegt()) {
        vergebens_ = 0;
    } else if (++vergebens_ >= geduld) { // or every tick would wait for it anew, the proxy behind it
        volltunnel_.entferneMarke();
        vergebens_ = 0;
    }
    return true;
}

void VolltunnelSteuerung::nimmUebriggebliebenenWeg() {
    if (volltunnel_.markeLiegt())
        volltunnel_.stoppeUebriggebliebenen();
}

void VolltunnelSteuerung::gibAuf() {
    if (startet_)
        volltunnel_.gibAuf();
}

std::optional<std::string> VolltunnelSteuerung::zurueckgebaut() {
    if (!volltunnel_.laeuft() || volltunnel_.markeLiegt())
        return std::nullopt;
    volltunnel_.stopp();
    return volltunnel_.grund();
}

} // namespace mobilsteg
