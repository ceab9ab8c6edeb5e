#pragma once

#include "plattform/Anschluesse.hpp"
#include "plattform/AsioSchlange.hpp"
#include "plattform/Einstellungen.hpp"

#include <functional>
#include <vector>

namespace mobilsteg {

class Kabel;

/// Which profile is it to be?
[[nodiscard]] Frage profilfrage();

/// The welcome to the profile for company VPNs, under the edition's name.
[[nodiscard]] Frage willkommen(const std::string& anzeigename);

/// The questions of the first start: the profile, once, unless the edition or an answer tells it; then, in
/// the profile for company VPNs, the welcome, once. A question that is closed without an answer stores
/// nothing. Main queue; blocks until they are answered.
void erststart(Kabel& kabel, Einstellungen& einstellungen, Dialog& dialog);

/// What happens at the program's beginning and at each of its ends.
class Delegate {
public:
    /// How long an end is waited for: until the work queue begins with the clean-up; until that is over; and
    /// then for the proxy alone.
    struct Fristen {
        Dauer beginn = std::chrono::seconds(15), ende = std::chrono::seconds(75),
              notfall = std::chrono::seconds(15);
    };

    /// `beende` ends the process with a status and does not return.
    Delegate(Einstellungen& einstellungen, Dialog& dialog, std::function<void(int)> beende, Fristen fristen);
    Delegate(Einstellungen& einstellungen, Dialog& dialog, std::function<void(int)> beende)
        : Delegate(einstellungen, dialog, std::move(beende), Fristen()) {}

    /// Main queue, once: the first start's questions, the signals' handling, then the controller's clock.
    /// Blocks until the questions are answered.
    void applicationDidFinishLaunching();

    /// Any queue but the controller's: takes everything back and returns when that is done. A second call
    /// only waits for the first. With a tool in its way that never ends, only the proxy is taken back, and
    /// the process ends here.
    void applicationWillTerminate();

    /// After that, one line: what it took back, in the words of the log.
    [[nodiscard]] std::string schlusswort() const;

private:
    struct Verlauf;
    void beendeNachSignal(int signal);
    void wache(Verlauf& verlauf);

    Einstellungen& einstellungen_;
    Dialog& dialog_;
    std::function<void(int)> beende_;
    Fristen fristen_;
    std::string aufgeraeumtes_; ///< the log's lines; on the controller's queue
    AsioSchlange signalQ_{"signale"};
    std::vector<Signalquelle> signalQuellen_;
};

} // namespace mobilsteg
