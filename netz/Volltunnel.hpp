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

/// The shell command that starts the helper in the background. Values stand between single quotes, which are
/// not escaped: paths and service names are trusted. Pure.
[[nodiscard]] std::string tunnelbefehl(const std::string& helfer, const std::string& stoppPfad,
                                       const std::string& protokoll, int prozess,
                                       const Tunnelauftrag& auftrag);

/// The AppleScript source that runs the command as administrator, with the reason in its password dialog.
/// Pure.
[[nodiscard]] std::string skriptquelle(const std::string& befehl, const std::string& grund);

/// Starts and stops the privileged helper. The two sides talk through files next to the stop file only.
class Volltunnel {
public:
    struct Anschluesse {
        Schlange& haupt; ///< where the script runs
        Uhr& uhr;
        Adminskript& skript;
        const Variante& variante;
        std::optional<std::string> ressourcen;
        Orte orte;
    };

    explicit Volltunnel(Anschluesse anschluesse);

    /// Asks for the administrator's password and starts the helper. Blocks until it reports that it runs: for
    /// up to 40 s and as long as the user sits before the dialog. On the queue "volltunnel.start", never
    /// while that or the main queue is waited for. Absent: it runs; a text is the reason why not.
    [[nodiscard]] std::optional<std::string> start(const Tunnelauftrag& auftrag);

    /// After a start that succeeded, back on the work queue: from now on it counts as running. False: it was
    /// stopped or went in the meantime.
    bool bestaetige();

    /// Asks the helper to take everything down and waits up to 10 s for it. Work queue.
    void stopp();

    /// The same for a helper that an earlier run left. Its own watch should have ended it long ago: a mark
    /// that outlives the request as well is a dead helper's, and is removed; then false. Work queue.
    bool stoppeUebriggebliebenen();

    /// Removes the mark of a helper that is dead for certain.
    void entferneMarke();

    /// Whether the request to stop lies there: whoever goes now goes because we asked.
    [[nodiscard]] bool stoppGebeten() const;

    /// Leaves the request to stop without waiting for anything; a helper that is only just coming up finds
    /// it, and none is started any more. Work queue.
    void gibAuf();

    /// The helper has confirmed that it runs, and has not been stopped since. Work queue.
    [[nodiscard]] bool laeuft() const { return laeuft_; }

    /// Whether a helper's mark lies there, ours or one that an earlier run left.
    [[nodiscard]] bool markeLiegt() const;

    /// Why the helper gave up; empty when it left no reason. Trimmed.
    [[nodiscard]] std::string grund() const;

    /// Its existence asks the helper to go; ".laeuft", ".fehler" and ".vpns.json" lie beside it.
    [[nodiscard]] const std::string& stoppPfad() const { return stoppPfad_; }
    [[nodiscard]] const std::string& protokollPfad() const { return protokollPfad_; }

private:
    [[nodiscard]] std::optional<std::string> fuehreSkriptAus(const std::string& quelle);
    [[nodiscard]] std::optional<std::string> warteAufHelfer();
    void bitteUmStopp();
    [[nodiscard]] std::string fehlertext() const;

    Anschluesse a_;
    std::string stoppPfad_;
    std::string protokollPfad_;
    bool laeuft_ = false;
    std::atomic<bool> aufgegeben_ = false; // read on "volltunnel.start", written on the work queue
};

} // namespace mobilsteg
