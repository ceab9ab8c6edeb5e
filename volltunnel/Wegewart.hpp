#pragma once

#include "plattform/Wege.hpp"

#include <map>
#include <optional>
#include <set>

#include "volltunnel/Befehlszeile.hpp"

namespace mobilsteg::volltunnel {

using Fehler = std::optional<std::string>; ///< why a step failed; absent: it did not

/// What was done to the system and has to be taken back: written into a file of root's before it is done.
/// Blocks on the tools.
class Rueckbau {
public:
    explicit Rueckbau(std::string pfad);

    /// Notes `zurueck`, then runs `befehl`. When that fails, what may have been done all the same stays
    /// noted.
    [[nodiscard]] Fehler tue(const Befehl& befehl, const Befehl& zurueck);

    void nimmZurueck(const Befehl& zurueck);

    /// Takes everything back, the last first. False: something could not be, and stays noted.
    bool alles();

    [[nodiscard]] bool leer() const { return offene_.empty(); }

private:
    bool sichere() const;

    std::string pfad_;
    std::vector<Befehl> offene_;
};

/// Leads the machine's traffic into the tunnel, or beside it, as the order says: addresses, routes, name
/// servers. What does not go with the device is noted for its undoing. Blocks on the tools.
class Wegewart {
public:
    Wegewart(const Auftrag& auftrag, Rueckbau& rueckbau)
        : a_(auftrag), rueckbau_(rueckbau), wege_(wegewerkzeug(), auftrag.wurzel) {}

    /// Gives the device its addresses.
    [[nodiscard]] Fehler richteEin(const std::string& geraet);
    [[nodiscard]] bool hatSechs() const { return sechs_; } ///< whether IPv6 is among them

    /// The traffic goes into the tunnel from here on.
    [[nodiscard]] Fehler setze();

    /// The servers that need a road of their own.
    void fuehre(std::set<std::string> server);

    /// In another network, what leads beside the tunnel has to lead there. Now and then.
    void gleicheAb();

private:
    void setzeDns();

    const Auftrag& a_;
    Rueckbau& rueckbau_;
    Wege wege_;
    std::string geraet_;
    bool sechs_ = false, steht_ = false;
    std::set<std::string> server_;
    std::map<std::string, Ausweg> gesetzte_;       ///< roads of their own that are there
    std::map<std::string, std::string> wegfehler_; ///< what was told last of each
};

} // namespace mobilsteg::volltunnel
