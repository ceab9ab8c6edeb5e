#pragma once

#include "netz/Volltunnel.hpp"

#include <optional>
#include <string>

namespace mobilsteg {

/// Decides when the full tunnel starts and stops: holds the wish, the flags, and whether a start is under
/// way. Work queue only, but for `fuehreAus`.
class VolltunnelSteuerung {
public:
    struct Wunsch {
        bool an = false;
        bool vpnDurch = false;
        bool nurVPN = false;
    };

    VolltunnelSteuerung(Volltunnel::Anschluesse anschluesse, Wunsch wunsch);

    Wunsch wunsch;

    /// Whether a start is due: it is wished, the path is proven, none is under way, and no helper lives, not
    /// even one that has not yet followed the request to go. A start that only such a helper prevents is put
    /// off.
    [[nodiscard]] bool startFaellig(bool bewiesen);

    /// Once a tick: whether a start that was put off is due now. A mark that stays for half a minute after
    /// the request to stop is a dead helper's and is removed.
    [[nodiscard]] bool aufgeschobenerFaellig(bool bewiesen);

    /// Whether a start is put off because of a helper that nobody has asked to go: another copy's.
    [[nodiscard]] bool wartetAufFremden() const { return aufgeschoben_ && !volltunnel_.stoppGebeten(); }

    /// Marks a start as under way, and says what it is to be started with.
    [[nodiscard]] Tunnelauftrag beginne(const std::string& dienst);

    /// The start itself, on the queue "volltunnel.start"; blocks as `Volltunnel::start` does.
    [[nodiscard]] std::optional<std::string> fuehreAus(const Tunnelauftrag& auftrag) {
        return volltunnel_.start(auftrag);
    }

    /// The start has ended. `gelungen`: the helper came up. Returns whether it runs now.
    bool beendeStart(bool gelungen);

    /// Whether a running tunnel is not what is wanted now: the world may have changed while it was starting.
    [[nodiscard]] bool ueberholt(const Tunnelauftrag& auftrag, bool bewiesen) const;

    /// At the program's start: stops a helper that an earlier run left.
    void nimmUebriggebliebenenWeg();

    /// Stops a helper, also one that an earlier run left. False: there was none. Blocks for up to 10 s. One
    /// that does not follow time and again is dead, and its mark is removed.
    bool nimmWeg();

    /// The program ends: a helper that is only just coming up must find the request to go.
    void gibAuf();

    /// Whether the helper has gone by itself since the last look; if so, it is stopped in form and its reason
    /// (empty if it left none) is returned.
    [[nodiscard]] std::optional<std::string> zurueckgebaut();

    [[nodiscard]] bool laeuft() const { return volltunnel_.laeuft(); }
    [[nodiscard]] const Volltunnel& volltunnel() const { return volltunnel_; }

private:
    [[nodiscard]] bool startMoeglich(bool bewiesen) const;

    Volltunnel volltunnel_;
    bool startet_ = false;
    bool aufgeschoben_ = false;
    int taktMitMarke_ = 0;
    int vergebens_ = 0; ///< requests to stop in a row that no helper followed
};

} // namespace mobilsteg
