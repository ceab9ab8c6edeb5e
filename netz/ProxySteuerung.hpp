#pragma once

#include "handy/Ports.hpp"
#include "netz/SystemProxy.hpp"

#include <optional>
#include <string>

namespace mobilsteg {

/// Puts the system proxy on the phone and takes it away; knows whether this run has set it. Work queue only;
/// every operation but the looks blocks for the tools' time.
class ProxySteuerung {
public:
    explicit ProxySteuerung(SystemProxy proxy) : proxy_(std::move(proxy)) {}

    enum class Ausgang { gesetzt, keinDienst, misslungen };
    struct Setzung {
        Ausgang ausgang;
        std::string text; ///< the service when set, the tool's reason when failed
    };

    /// Finds the service of the default route and sets its proxy.
    [[nodiscard]] Setzung setze();

    /// Takes the proxy away if this run set it or an earlier one left it. Returns the service on which that
    /// was tried, whatever came of it; absent: there was nothing to take away and no tool ran.
    std::optional<std::string> nimmWeg();

    /// At the program's start: takes away what an earlier run left, if its settings tell.
    void nimmUebriggebliebenenWeg();

    [[nodiscard]] bool gesetzt() const { return gesetzt_; }

    /// The service on which this run last set the proxy; stays after it was taken away.
    [[nodiscard]] const std::optional<std::string>& dienst() const { return dienst_; }

    /// The service that a full tunnel is to take over: the proxy's, else the default route's, else "Wi-Fi".
    [[nodiscard]] std::string dienstFuerTunnel() const;

private:
    SystemProxy proxy_;
    bool gesetzt_ = false;
    std::optional<std::string> dienst_;
};

} // namespace mobilsteg
