#pragma once

#include "plattform/Nutzerordner.hpp"

#include "volltunnel/Befehlszeile.hpp"

namespace mobilsteg::volltunnel {

/// What the process without rights gets from the one that has them.
struct Tunnelteile {
    int geraet = -1;
    int kanal = -1;    ///< lines both ways, see below
    int horcher4 = -1; ///< listening on the tunnel's own address
    int horcher6 = -1; ///< -1: the machine has no IPv6
};

// The lines. Up: "vpns" and the servers' addresses that need a road of their own; "bewiesen" once a
// connection came through; "grund" and why everything has to be taken back. Down: "openvpn" and the ends of
// its connections as `lsof -Fn` has them; "ende". Without "ende" the other side has died.

/// Carries everything that comes into the tunnel, until told to end. Ends the process.
[[noreturn]] void fuehreTunnel(const Tunnelteile& teile, const Auftrag& auftrag, const Nutzerordner& ordner);

} // namespace mobilsteg::volltunnel
