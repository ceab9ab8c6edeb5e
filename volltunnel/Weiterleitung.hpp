#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_set>

#include "volltunnel/Waehler.hpp"

namespace mobilsteg::volltunnel {

/// Takes the connections that the tunnel has turned to our listeners, and carries their bytes to where they
/// wanted to go, through the proxy. Half-close and reset travel; nothing is read that cannot be written.
/// On the context's thread only.
class Weiterleitung {
public:
    struct Auftrag {
        Stelle proxy;
        /// Where a connection is to be dialled to; usually where it wanted to go.
        std::function<Stelle(const Tabelle::Fluss&)> ziel;
        /// What came of it, begun when.
        std::function<void(const Tabelle::Fluss&, Ausgang, Zeit beginn)> ausgang;
    };

    struct Zaehler {
        std::uint64_t verbindungen = 0, hinaus = 0, herein = 0; ///< the last two in bytes
        std::uint64_t namen = 0;                                ///< for the caller's use
        bool operator==(const Zaehler&) const = default;
    };

    Weiterleitung(asio::io_context& kontext, Tabelle& tabelle, Auftrag auftrag);
    ~Weiterleitung();

    /// Accepts on `annahme` what comes from the tunnel's peer.
    void horche(asio::ip::tcp::acceptor annahme);

    /// Ends what has been half-closed and still for five minutes. About once a second.
    void raeume(Zeit jetzt);

    /// Resets every connection and accepts no more.
    void reisseAb();

    [[nodiscard]] const Zaehler& zaehler() const { return zaehler_; }

private:
    class Verbindung;
    struct Horcher;

    void nimmAn(Horcher& horcher);

    asio::io_context& kontext_;
    Tabelle& tabelle_;
    Auftrag auftrag_;
    Zaehler zaehler_;
    std::unordered_set<std::shared_ptr<Verbindung>> verbindungen_;
    std::vector<std::unique_ptr<Horcher>> horcher_;
    std::vector<char> puffer_;   ///< one for all: what is read is written at once
    std::size_t ausstehend_ = 0; ///< bytes that were read and could not be written yet
};

} // namespace mobilsteg::volltunnel
