#pragma once

#include "ansicht/Browser.hpp"
#include "app/Befehlszeile.hpp"
#include "app/Waechter.hpp"
#include "handy/Geraetewache.hpp"
#include "handy/Http.hpp"
#include "kabel/Kabel.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/AsioSchlange.hpp"
#include "standdienst/Standdienst.hpp"

#include <memory>
#include <optional>
#include <string>

namespace mobilsteg {

/// The program put together: makes every adapter and the one controller, which lives until the
/// process ends.
class MobilstegBordlotseApp {
public:
    /// `haupt` is the main queue; the front brings it and the dialogs. `sperre` is held by this process.
    MobilstegBordlotseApp(const Befehlszeile& zeile, const std::string& kennung, Schlange& haupt,
                          Dialog& dialog, Laufsperre& sperre);

    [[nodiscard]] Kabel& kabel() { return kabel_; }
    [[nodiscard]] Einstellungen& einstellungen() { return *einstellungen_; }

private:
    Orte orte_;
    Waechter waechter_;
    Systemuhr uhr_;
    std::shared_ptr<Einstellungen> einstellungen_;
    CurlHttp http_;
    std::unique_ptr<Adminskript> skript_;
    Browser browser_;
    AsioSchlange standQ_{"standdienst"};
    Standdienst standdienst_{standQ_};
    Geraetewache geraetewache_{standQ_, [this] { kabel_.siehNach(); }};
    AsioSchlange takt_{"kabel.takt"};
    AsioSchlange volltunnelQ_{"volltunnel.start"};
    Kabel kabel_;
};

/// Where the command line puts home and system.
[[nodiscard]] Orte orteAus(const Befehlszeile& zeile);

/// Takes this home for this program. Absent: it is ours; else the line that tells whose it is, which is also
/// written to standard error. Blocks while a watchman cleans up after an earlier run.
[[nodiscard]] std::optional<std::string> nimmHeim(Laufsperre& sperre);

/// Runs the program in the terminal until its user or a signal ends it; returns the exit status.
int terminalbetrieb(const Befehlszeile& zeile, const std::string& kennung);

/// Runs the menu-bar program until its user or a signal ends it; returns the exit status. Qt takes its own
/// options out of `worte`. The program that has no Qt becomes the one beside it, and returns only if that
/// failed.
int fensterbetrieb(const Befehlszeile& zeile, const std::string& kennung, int& anzahl, char** worte);

/// Ends the process at once, without running what only an orderly return would: other queues may be in the
/// middle of anything.
[[noreturn]] void beendeProzess(int status);

} // namespace mobilsteg
