#include "app/Waechter.hpp"

#include "app/Dienste.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "kabel/Protokoll.hpp"
#include "kabel/Stand.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Orte.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace mobilsteg {

namespace {

/// The program without the toolkit, where that is a file of its own.
std::string waechterprogramm() {
    constexpr std::string_view fenster = "-fenster";
    const std::string eigenes = eigenesProgramm();
    const auto ohne = eigenes.substr(0, eigenes.size() - std::min(eigenes.size(), fenster.size()));
    return eigenes.ends_with(fenster) && istAusfuehrbar(ohne) ? ohne : eigenes;
}

/// Blocks until the watched process says something (true) or is dead.
bool hoertEtwas() {
    char wort = 0;
    ssize_t n = 0;
    do
        n = ::read(STDIN_FILENO, &wort, 1);
    while (n < 0 && errno == EINTR);
    return n > 0;
}

} // namespace

Waechter::Waechter(const Befehlszeile& zeile, Laufsperre& sperre)
    : worte_{"--waechter", std::to_string(::getpid())}, sperre_(sperre) {
    // Absolute: it works in a folder of its own.
    const Orte orte = orteAus(zeile);
    if (zeile.heim)
        worte_.insert(worte_.end(), {"--heim", orte.heim});
    if (zeile.wurzel)
        worte_.insert(worte_.end(), {"--wurzel", orte.wurzel});
}

void Waechter::halte() {
    const std::lock_guard wache(schloss_);
    if (heimgeschickt_ || (kind_ && !kind_->istBeendet()))
        return;
    if (kind_)
        (void)kind_->ernte();
    kind_.reset();
    starte();
}

void Waechter::starte() {
    int enden[2] = {-1, -1};
    if (::pipe(enden) != 0)
        return; // the next tick tries again
    const Deskriptor lesen(enden[0]);
    rohr_ = Deskriptor(enden[1]);
    for (const int ende : enden)
        ::fcntl(ende, F_SETFD, FD_CLOEXEC);
    auto versuch = starteProzess(waechterprogramm(), worte_,
                                 {.eingabe = lesen.nummer(), .ohneAusgabe = true, .eigeneSitzung = true});
    if (!versuch.kind)
        return;
    kind_ = std::move(versuch.kind);
    kind_->fehler.schliesse();
    kind_->ende.schliesse();
    sperre_.nenneWaechter(kind_->nummer);
}

void Waechter::schickeHeim() {
    const std::lock_guard wache(schloss_);
    heimgeschickt_ = true;
    if (rohr_)
        (void)!::write(rohr_.nummer(), "e", 1);
}

int waechterdienst(const Befehlszeile& zeile, const std::string& kennung) {
    // A log-out sends them to all: it is the program that ends then, and says so.
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT})
        std::signal(signal, SIG_IGN);
    {
        const Deskriptor nichts(::open("/dev/null", O_RDWR | O_CLOEXEC));
        ::dup2(nichts.nummer(), STDERR_FILENO);
    }
    (void)!::chdir("/");
    if (hoertEtwas())
        return 0;

    const Orte orte = orteAus(zeile);
    Laufsperre sperre(orte.heim);
    if (!sperre.nimmNach(std::atoi(zeile.bewachter.value_or("").c_str())))
        return 0; // a new copy cleans up
    Umfeld umfeld(zeile, kennung);
    Systemuhr uhr;
    const bool alles = raeumeNachTodAuf(umfeld, uhr);
    beendeStand(orte.imHeim(standOrt), umfeld.proxy.gemerkterDienst().has_value());
    Protokoll(orte.imHeim(protokollOrt), uhr)
        .schreibe(std::string("Der Bordlotse ist unerwartet beendet worden — ") +
                  (alles ? "aufgeräumt" : "nicht alles ließ sich aufräumen"));
    return 0;
}

} // namespace mobilsteg
