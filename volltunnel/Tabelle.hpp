#pragma once

#include <chrono>
#include <compare>
#include <deque>
#include <map>
#include <vector>

#include "volltunnel/Paket.hpp"

namespace mobilsteg::volltunnel {

using Zeit = std::chrono::steady_clock::time_point;

/// Which connection goes by which port of the tunnel's peer. A port is given at the first packet, stays as
/// long as somebody holds the connection, and then rests for a minute, in which its last packets still find
/// their way and no new connection can be taken for it. One thread only; the caller brings the time.
class Tabelle {
public:
    struct Fluss {
        Stelle von, nach; ///< as the program that connects sees it
        std::weak_ordering operator<=>(const Fluss&) const = default;
    };

    static constexpr std::chrono::seconds geduld{30};   ///< for a connection that nobody accepts
    static constexpr std::chrono::seconds ruhezeit{60}; ///< longer than TIME_WAIT of the systems we know
    static constexpr std::uint16_t ersterPort = 1024;

    /// The port for a packet on its way out. Absent: it belongs to no connection, or no port is free.
    [[nodiscard]] std::optional<std::uint16_t> hin(const Fluss& fluss, bool anfang, Zeit jetzt);

    /// The connection that a packet to this port belongs to.
    [[nodiscard]] const Fluss* her(std::uint16_t port) const;

    /// The listener has accepted a connection from this port; to be let go of with `gibFrei`. Absent: the
    /// tunnel did not make that connection.
    [[nodiscard]] std::optional<Fluss> nimmAn(std::uint16_t port);
    void gibFrei(std::uint16_t port, Zeit jetzt);

    /// Lets go of what was begun and never accepted. Now and then.
    void raeume(Zeit jetzt);

    /// Whether a held connection leads to this address.
    [[nodiscard]] bool lebt(const Adresse& ziel) const;

    [[nodiscard]] std::size_t gehalten() const { return gehalten_; }

private:
    struct Eintrag {
        Fluss fluss;
        unsigned halter = 0;
        bool gueltig = false; ///< packets of this port still belong to `fluss`
        bool ruht = false;
    };
    struct Termin {
        std::uint16_t port;
        Zeit seit;
    };

    [[nodiscard]] Eintrag* eintrag(std::uint16_t port);
    [[nodiscard]] std::optional<std::uint16_t> freierPort(Zeit jetzt);
    void ruhe(std::uint16_t port, Zeit jetzt);

    std::vector<Eintrag> eintraege_; ///< from `ersterPort` on, as many as were ever used at once
    std::map<Fluss, std::uint16_t> ports_;
    std::deque<Termin> begonnene_, ruhende_; ///< the oldest first
    std::size_t gehalten_ = 0;
};

} // namespace mobilsteg::volltunnel
