#include "volltunnel/Werkzeug.hpp"

#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"
#include "plattform/Uhr.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace mobilsteg::volltunnel {

namespace {

constexpr std::size_t genug = 1U << 20U; // no tool that we ask says more

/// False: the other end is closed.
bool liesRohr(const Deskriptor& rohr, std::string& bytes) {
    std::array<char, 4096> block{};
    const ssize_t n = ::read(rohr.nummer(), block.data(), block.size());
    if (n > 0 && bytes.size() < genug)
        bytes.append(block.data(), static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && (errno == EAGAIN || errno == EINTR));
}

/// Reads until the tool has ended and closed its outputs (true) or the time is up.
bool warte(Kindprozess& kind, Werkzeuglauf& lauf, std::chrono::steady_clock::time_point frist) {
    while (kind.ausgabe || kind.fehler || !kind.istBeendet()) {
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(frist - std::chrono::steady_clock::now());
        if (rest.count() <= 0)
            return false;
        std::array<pollfd, 2> faelle = {pollfd{kind.ausgabe.nummer(), POLLIN, 0},
                                        pollfd{kind.fehler.nummer(), POLLIN, 0}};
        // Its end itself is asked for: tools close their outputs right before.
        ::poll(faelle.data(), faelle.size(),
               static_cast<int>(std::min<long long>(rest.count(), kind.ausgabe ? 50 : 5)));
        if (faelle[0].revents != 0 && !liesRohr(kind.ausgabe, lauf.ausgabe))
            kind.ausgabe.schliesse();
        if (faelle[1].revents != 0 && !liesRohr(kind.fehler, lauf.fehler))
            kind.fehler.schliesse();
    }
    return true;
}

} // namespace

std::string Werkzeuglauf::grund() const {
    return std::string(beschnitten(fehler.empty() ? ausgabe : fehler));
}

Werkzeuglauf fuehreAus(const std::vector<std::string>& befehl, std::chrono::milliseconds frist) {
    Werkzeuglauf lauf;
    Startversuch versuch = starteProzess(befehl.front(), {befehl.begin() + 1, befehl.end()});
    if (!versuch.kind) {
        lauf.fehler = versuch.grund;
        return lauf;
    }
    const auto bis = std::chrono::steady_clock::now() + frist;
    if (warte(*versuch.kind, lauf, bis)) {
        lauf.gelungen = versuch.kind->warteUndErnte() == 0;
        return lauf;
    }
    lauf.abgelaufen = true;
    versuch.kind->bitteUmEnde();
    warte(*versuch.kind, lauf, bis + std::chrono::seconds(2));
    (void)versuch.kind->ernte();
    lauf.fehler = befehl.front() + ": keine Antwort in " + std::to_string(frist.count() / 1000) + " s";
    return lauf;
}

void protokolliere(const std::string& text) {
    const std::string zeile = ortszeit(std::chrono::system_clock::now()) + "  " + text + "\n";
    (void)!::write(STDOUT_FILENO, zeile.data(), zeile.size());
}

} // namespace mobilsteg::volltunnel
