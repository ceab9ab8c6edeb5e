#include "handy/Lauf.hpp"

#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>

namespace mobilsteg {

namespace {

using Zeit = std::chrono::steady_clock;

constexpr auto gnadenfrist = std::chrono::seconds(2);
// A process closes its outputs a little before it can be reaped.
constexpr auto nachlauf = std::chrono::milliseconds(500);
// How often a process is asked whether it has ended, where the system cannot announce it.
constexpr int nachfrageMs = 20;

/// Takes one block of what is there: only one, or a tool that writes faster than it is read would never let
/// the limit be looked at. False: the other end is closed and everything has been read.
bool lieseAus(const Deskriptor& rohr, std::string& bytes) {
    std::array<char, 65536> block; // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    const ssize_t n = ::read(rohr.nummer(), block.data(), block.size());
    if (n > 0)
        bytes.append(block.data(), static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR));
}

/// Accompanies one process from its start to the end of its outputs.
class Begleitung {
public:
    explicit Begleitung(Kindprozess& kind) : kind_(kind) {}

    /// Drains both outputs until the process has ended (and then no longer) or `frist` has come.
    /// True: it has ended.
    bool bisEnde(Zeit::time_point frist) {
        while (!kind_.istBeendet()) {
            const auto rest = std::chrono::ceil<std::chrono::milliseconds>(frist - Zeit::now()).count();
            if (rest <= 0)
                return false;
            const int warten = static_cast<int>(std::min<long long>(rest, kind_.ende ? 60'000 : nachfrageMs));
            warte(kind_.ende.nummer(), warten);
        }
        return true;
    }

    /// Drains both outputs to their end, however long that takes.
    void bisAusgabenZu() {
        while (kind_.ausgabe || kind_.fehler)
            warte(-1, -1);
    }

    std::string ausgabe;
    std::string fehler;

private:
    void warte(int ende, int millisekunden) {
        // poll passes over negative descriptors, so a closed output needs no case of its own.
        std::array<pollfd, 3> faelle = {pollfd{kind_.ausgabe.nummer(), POLLIN, 0},
                                        pollfd{kind_.fehler.nummer(), POLLIN, 0}, pollfd{ende, POLLIN, 0}};
        if (::poll(faelle.data(), faelle.size(), millisekunden) <= 0)
            return;
        if (faelle[0].revents != 0 && !lieseAus(kind_.ausgabe, ausgabe))
            kind_.ausgabe.schliesse();
        if (faelle[1].revents != 0 && !lieseAus(kind_.fehler, fehler))
            kind_.fehler.schliesse();
    }

    Kindprozess& kind_;
};

Zeit::time_point fristIn(double sekunden) {
    // A limit beyond a day means none; the cap keeps the conversion within range.
    const double begrenzt = std::clamp(sekunden, 0.0, 86'400.0);
    return Zeit::now() + std::chrono::duration_cast<Zeit::duration>(std::chrono::duration<double>(begrenzt));
}

} // namespace

Ergebnis lauf(const std::string& programm, const std::vector<std::string>& argumente, double sekunden) {
    Startversuch versuch = starteProzess(programm, argumente);
    if (!versuch.kind)
        return {-1, "", versuch.grund};
    Kindprozess& kind = *versuch.kind;
    Begleitung begleitung(kind);
    if (!begleitung.bisEnde(fristIn(sekunden))) {
        kind.bitteUmEnde();
        begleitung.bisEnde(Zeit::now() + gnadenfrist);
    }
    begleitung.bisAusgabenZu();
    begleitung.bisEnde(Zeit::now() + nachlauf);
    // Still running with both outputs closed: it was asked to go and will; nobody waits for it.
    const int status = kind.ernte().value_or(SIGTERM);
    return {status, alsUtf8(begleitung.ausgabe), alsUtf8(begleitung.fehler)};
}

} // namespace mobilsteg
