#pragma once

#include <functional>
#include <memory>

namespace mobilsteg {

class AsioSchlange;

/// Keeps a signal's handling alive.
using Signalquelle = std::shared_ptr<void>;

/// From now on `signal` no longer ends the process; `aufgabe(signal)` runs on `schlange` instead, never in
/// signal context. Signals that arrive together may be merged into one run. Tools that the program starts
/// get the default handling back.
[[nodiscard]] Signalquelle beiSignal(int signal, AsioSchlange& schlange, std::function<void(int)> aufgabe);

} // namespace mobilsteg
