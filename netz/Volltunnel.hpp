#pragma once

#include "netz/Variante.hpp"
#include "plattform/Anschluesse.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Schlange.hpp"
#include "plattform/Uhr.hpp"

#include <atomic>
#include <optional>
#include <string>

namespace mobilsteg {

/// What a full tunnel is started with.
struct Tunnelauftrag {
    std::string dienst;    ///< the network service whose routes and DNS it takes over
    bool vpnDurch = false; ///< VPN traffic goes through the phone, too
    bool nurVPN = false;   ///< only the VPN servers do; wins over `vpnDurch`

    bool operator==(const Tunnelauftrag&) const = default;
};

/// The shell command that starts the helper in the background. Values stand between single quotes and must
/// not hold any themselves. Pure.
[[nodiscard]] std::string tunnelbefehl(const std::string& helfer, const std::string& stoppPfad,
                                       const std::string& protokoll, int prozess,
                                       const Tunnelauftrag& auftrag);

/// The AppleScript source that runs the command as administrator, with the reason in its password dialog.
/// Pure.
[[nodiscard]] std::string skriptquelle(const std::string& befehl, const std::string& grund);

/// The privileged helper: started through the administrator's password dialog, stopped through a file. The
/// two sides talk through files next to the stop file only. Work queue only, except `start`.
///
///     ruht --beginne--> startet --beendeStart--> laeuft --stopp--> ruht
///
/// A failed start leads back to `ruht`; `beendeFuerImmer` leads from everywhere to `beendet`, for good.
class Volltunnel {
public:
    enum class Stand { ruht, startet, laeuft, beendet };

    struct Anschluesse {
        Schlange& haupt; ///< where the script runs
        Uhr& uhr;
        Adminskript& skript;
        const Variante& variante;
        std::optional<std::string> ressourcen;
        Orte orte;
    };

    explicit Volltunnel(Anschluesse anschluesse);

    [[nodiscard]] Stand stand() const { return stand_; }

    /// The helper has confirmed that it runs, and has not been stopped since.
    [[nodiscard]] bool laeuft() const { return stand_ == Stand::laeuft; }

    /// Marks a start as under way, in `ruht` only. A helper whose mark still lies there is stopped before;
    /// that blocks for up to 10 s.
    void beginne();

    /// The start itself, after `beginne`, on the queue "volltunnel.start": asks for the administrator's
    /// password and starts the helper. Blocks until it reports that it runs: for up to 40 s and as long as
    /// the user sits before the dialog. Absent: it runs; a text is the reason why not.
    [[nodiscard]] std::optional<std::string> start(const Tunnelauftrag& auftrag);

    /// Back on the work queue: the start has ended, `gelungen` when the helper came up. Whether it still runs
    /// is in `laeuft()`.
    void beendeStart(bool gelungen);

    enum class Ende {
        keinHelfer,
        gegangen,
        verstummt ///< its mark still lay there after 10 s
    };

    /// Asks a helper, also one that an earlier run left, to take everything down, and waits up to 10 s for
    /// it. One that may only be slow keeps its mark; one that was asked before is dead, and loses it.
    Ende nimmWeg();

    /// The same where nothing may be left: its mark is removed in any case.
    Ende raeumeWeg();

    /// The same at the program's end: from now on none is started any more, and one that is only coming up
    /// finds the request to go.
    Ende beendeFuerImmer();

    /// Whether a helper that was killed left something changed that only another one can take back.
    [[nodiscard]] bool hinterliess() const;

    /// Asks for the administrator's password and starts a helper that only takes back what a killed one left.
    /// Main queue, while none runs; blocks for up to 10 s and as long as the user sits before the dialog.
    /// Absent: everything is taken back; a text is the reason why not.
    [[nodiscard]] std::optional<std::string> nimmZurueck();

    /// Whether a running helper has gone by itself. If so it counts as stopped, and its reason (empty when it
    /// left none) is returned.
    [[nodiscard]] std::optional<std::string> zurueckgebaut();

    /// Whether the request to stop lies there: a helper that goes now goes because we asked.
    [[nodiscard]] bool stoppGebeten() const;

    /// Whether a helper's mark lies there, ours or one that an earlier run left.
    [[nodiscard]] bool markeLiegt() const;

    /// Why the helper gave up; empty when it left no reason. Trimmed.
    [[nodiscard]] std::string grund() const;

    /// Its existence asks the helper to go; ".laeuft", ".fehler" and ".vpns.json" lie beside it.
    [[nodiscard]] const std::string& stoppPfad() const { return stoppPfad_; }
    [[nodiscard]] const std::string& protokollPfad() const { return protokollPfad_; }

private:
    [[nodiscard]] std::optional<std::string> einwand(const Tunnelauftrag& auftrag) const;
    [[nodiscard]] std::optional<std::string> rufeHelfer(const Tunnelauftrag& auftrag);
    [[nodiscard]] std::optional<std::string> fuehreSkriptAus(const std::string& quelle);
    [[nodiscard]] std::optional<std::string> warteAufHelfer();
    [[nodiscard]] std::string bereitPfad() const { return stoppPfad_ + ".bereit"; }
    [[nodiscard]] bool bereiteStoppVor() const;
    void bitteUmStopp() const;
    Ende stopp(bool entferneMarke);

    Anschluesse anschluesse_;
    std::string stoppPfad_;
    std::string protokollPfad_;
    std::string helfer_;
    std::atomic<Stand> stand_ = Stand::ruht; // written on the work queue, read by `start` as well
};

} // namespace mobilsteg
