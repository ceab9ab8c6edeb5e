#include "plattform/Laufsperre.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <thread>

namespace mobilsteg {

namespace {

constexpr auto blickabstand = std::chrono::milliseconds(50);
constexpr int warteblicke = 1200; // a minute
constexpr int namensblicke = 10;

} // namespace

Laufsperre::Laufsperre(const std::string& heim) : Laufsperre(heim, true) {}

Laufsperre::Laufsperre(const std::string& heim, bool anlegen) {
    const std::string datei = pfad(heim);
    if (anlegen)
        legeElternordnerAn(datei);
    if (anlegen || existiert(datei))
        datei_ = oeffneSperrdatei(datei);
}

std::string Laufsperre::pfad(const std::string& heim) {
    return heim + "/Library/Application Support/Mobilsteg Bordlotse/lauf.sperre";
}

std::optional<Laufsperre::Inhaber> Laufsperre::nimm() {
    int vorher = 0, gleiche = 0;
    for (int blick = 0; blick < warteblicke; ++blick) {
        if (!datei_ || versuche(LOCK_EX)) {
            schreibe({::getpid(), 0});
            return std::nullopt;
        }
        // It may be a dead one's that nobody has reaped yet; its watchman is about to strike the number out.
        const Inhaber inhaber = lies();
        gleiche = inhaber.laeufer == vorher ? gleiche + 1 : 0;
        if (inhaber.laeufer > 0 && gleiche >= namensblicke && ::kill(inhaber.laeufer, 0) == 0)
            return inhaber;
        vorher = inhaber.laeufer;
        std::this_thread::sleep_for(blickabstand);
    }
    return lies();
}

bool Laufsperre::nimmNach(int toter) {
    while (datei_ && !versuche(LOCK_EX)) {
        // It lets go only at the end of its death.
        if (const int laeufer = lies().laeufer; laeufer != toter)
            return false;
        std::this_thread::sleep_for(blickabstand);
    }
    schreibe({});
    return true;
}

void Laufsperre::nenneWaechter(int nummer) {
    schreibe({::getpid(), nummer});
}

std::optional<Laufsperre::Inhaber> Laufsperre::inhaber(const std::string& heim) {
    const Laufsperre sperre(heim, false);
    return sperre.datei_ && !sperre.versuche(LOCK_SH) ? std::optional(sperre.lies()) : std::nullopt;
}

bool Laufsperre::versuche(int art) const {
    return ::flock(datei_.nummer(), art | LOCK_NB) == 0;
}

Laufsperre::Inhaber Laufsperre::lies() const {
    std::array<char, 64> text{};
    Inhaber inhaber;
    (void)!::pread(datei_.nummer(), text.data(), text.size() - 1, 0);
    (void)std::sscanf(text.data(), "%d %d", &inhaber.laeufer, &inhaber.waechter);
    return inhaber;
}

void Laufsperre::schreibe(Inhaber inhaber) {
    // In one write, and as long each time: a reader sees one of the two.
    std::array<char, 64> text{};
    const int laenge =
        std::snprintf(text.data(), text.size(), "%10d %10d\n", inhaber.laeufer, inhaber.waechter);
    (void)!::pwrite(datei_.nummer(), text.data(), static_cast<std::size_t>(laenge), 0);
}

} // namespace mobilsteg
