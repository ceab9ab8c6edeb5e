// The full tunnel's helper: a process with the rights, which makes the device, starts the tunnel as the user,
// sets the roads once it is proven, and takes everything back at whatever end.

#include "plattform/Kindprozess.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Text.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "volltunnel/Tunnel.hpp"
#include "volltunnel/Umschau.hpp"
#include "volltunnel/Wegewart.hpp"

extern char** environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

namespace mobilsteg::volltunnel {

namespace {

using Uhrzeit = std::chrono::steady_clock;

constexpr int blickabstandMs = 200;
constexpr std::chrono::seconds umschauabstand{3};
constexpr std::chrono::seconds sperrfrist{3}; // one that is just taking everything back
constexpr std::chrono::seconds kindfrist{2};
constexpr std::chrono::seconds horchfrist{2};
constexpr std::size_t hoechstensVpns = 64;
constexpr std::size_t hoechstensOffen = 65'536; // bytes without a line end
constexpr std::size_t deskriptoren = 65'536;    // two for each connection

volatile std::sig_atomic_t signalDa = 0;

/// Never two helpers. Empty: another one runs.
Deskriptor nimmSperre(const std::string& pfad) {
    Deskriptor sperre = oeffneSperrdatei(pfad);
    for (const auto frist = Uhrzeit::now() + sperrfrist; sperre && Uhrzeit::now() < frist; ::usleep(100'000))
        if (::flock(sperre.nummer(), LOCK_EX | LOCK_NB) == 0)
            return sperre;
    return {};
}

/// A listener on our end of the tunnel. An address may take a moment until it is ours.
Deskriptor horche(bool sechs) {
    const Stelle stelle(tunnelenden(sechs).hier, 0);
    for (const auto frist = Uhrzeit::now() + horchfrist;; ::usleep(50'000)) {
        Deskriptor horcher(::socket(sechs ? AF_INET6 : AF_INET, SOCK_STREAM, 0));
        ::fcntl(horcher.nummer(), F_SETFD, FD_CLOEXEC);
        if (::bind(horcher.nummer(), stelle.data(), static_cast<socklen_t>(stelle.size())) == 0 &&
            ::listen(horcher.nummer(), 4096) == 0)
            return horcher;
        if (Uhrzeit::now() > frist)
            return {};
    }
}

class Helfer {
public:
    explicit Helfer(const Auftrag& auftrag) : a_(auftrag), ordner_(auftrag.stopp) {}

    int laufe() {
        if (!ordner_.da()) {
            protokolliere("Der Ordner der Stoppdatei fehlt: " + a_.stopp);
            return 1;
        }
        sperre_ = nimmSperre(rueckbaunotiz(a_.wurzel) + ".sperre");
        if (!sperre_) {
            gibAuf("es läuft schon ein Helfer");
            return 1;
        }
        Rueckbau rueckbau(rueckbaunotiz(a_.wurzel));
        if (!rueckbau.leer())
            protokolliere(rueckbau.alles()
                              ? "Zurückgenommen, was ein früherer Lauf hinterließ"
                              : "Ein früherer Lauf hinterließ etwas, das sich nicht zurücknehmen lässt");
        protokolliere("Start: Proxy " + a_.proxy.address().to_string() + ":" +
                      std::to_string(a_.proxy.port()) + ", Dienst " + a_.dienst + ", " +
                      (a_.nurVPN     ? "nur VPN"
                       : a_.vpnDurch ? "alles, auch VPN"
                                     : "alles") +
                      ", Wache " + std::to_string(a_.wache));
        Fehler fehler;
        try {
            Wegewart wart(a_, rueckbau);
            fehler = gerufen() ? std::nullopt : baueAuf(wart);
            if (!fehler)
                fehler = wache(wart);
        } catch (const std::exception& ausnahme) {
            fehler = ausnahme.what();
        }
        // The tunnel first: its roads go with its device. Beside it the VPNs keep their roads until then.
        beendeKind();
        rueckbau.alles();
        if (fehler)
            gibAuf(*fehler);
        // The marks last: they promise that everything is taken back.
        ordner_.entferne({".vpns.json", ".laeuft"});
        protokolliere("Ende: " + fehler.value_or(warum_));
        return fehler ? 1 : 0;
    }

private:
    void gibAuf(const std::string& grund) {
        if (!ordner_.schreibe(".fehler", grund + "\n"))
            protokolliere("Die Fehlerdatei lässt sich nicht schreiben");
        std::fprintf(stderr, "mobilsteg-volltunnel: %s\n", grund.c_str());
    }

    /// Whether somebody wants the end; `warum_` then says who.
    bool gerufen() {
        if (signalDa != 0)
            warum_ = "auf Signal " + std::to_string(signalDa);
        else if (ordner_.stoppGebeten())
            warum_ = "auf Bitte";
        else if (::kill(a_.wache, 0) != 0 && errno == ESRCH)
            warum_ = "der Bordlotse ist weg";
        return !warum_.empty();
    }

    Fehler baueAuf(Wegewart& wart) {
        auto geraet = neuesTunnelgeraet();
        if (!geraet)
            return "kein Tunnelgerät: " + fehlerbeschreibung(errno);
        if (const auto fehler = wart.richteEin(geraet->name))
            return fehler;
        const Deskriptor horcher4 = horche(false);
        const Deskriptor horcher6 = wart.hatSechs() ? horche(true) : Deskriptor();
        if (!horcher4 || (wart.hatSechs() && !horcher6))
            return "kein Platz zum Horchen: " + fehlerbeschreibung(errno);
        erlaubeDeskriptoren(deskriptoren);
        kind_ = spalteAb([&](int kanal) {
            sperre_.schliesse();
            if (legeRechteAb(ordner_.benutzer(), ordner_.gruppe()))
                fuehreTunnel({geraet->datei.nummer(), kanal, horcher4.nummer(), horcher6.nummer()}, a_,
                             ordner_);
            protokolliere("Die Rechte lassen sich nicht ablegen");
        });
        return kind_ ? Fehler() : "kein Prozess für den Tunnel: " + fehlerbeschreibung(errno);
    }

    Fehler wache(Wegewart& wart) {
        auto naechste = Uhrzeit::now();
        while (!gerufen()) {
            pollfd fall{kind_->kanal.nummer(), POLLIN, 0};
            if (::poll(&fall, 1, blickabstandMs) > 0)
                if (const auto fehler = liesKanal(wart))
                    return fehler;
            if (Uhrzeit::now() < naechste)
                continue;
            const std::string zeile = "openvpn" + frageOpenvpn(a_.wurzel) + "\n";
            (void)!::send(kind_->kanal.nummer(), zeile.data(), zeile.size(), MSG_DONTWAIT);
            wart.gleicheAb();
            naechste = Uhrzeit::now() + umschauabstand;
        }
        return std::nullopt;
    }

    Fehler liesKanal(Wegewart& wart) {
        char block[4096];
        const ssize_t n = ::recv(kind_->kanal.nummer(), block, sizeof block, MSG_DONTWAIT);
        if (n <= 0 || eingang_.size() > hoechstensOffen)
            return "der Tunnel ist abgestürzt";
        eingang_.append(block, static_cast<std::size_t>(n));
        for (std::size_t ende = 0; (ende = eingang_.find('\n')) != std::string::npos;
             eingang_.erase(0, ende + 1))
            if (const auto fehler = nimmZeile(eingang_.substr(0, ende), wart))
                return fehler;
        return std::nullopt;
    }

    /// The process without rights may be anybody's by now: only addresses are taken from it.
    Fehler nimmZeile(const std::string& zeile, Wegewart& wart) {
        if (zeile.starts_with("grund "))
            return std::string(ersteZeichen(zeile, 200)).substr(6);
        if (zeile == "bewiesen") {
            if (const auto fehler = wart.setze())
                return fehler;
            return ordner_.schreibe(".laeuft", "") ? Fehler() : "die Laufmarke lässt sich nicht schreiben";
        }
        std::set<std::string> server;
        for (const auto wort : teile(zeile, ' ')) {
            std::error_code keine;
            const auto adresse = asio::ip::make_address(std::string(wort), keine);
            if (!keine && istEinzelne(adresse) && !adresse.is_loopback() && server.size() < hoechstensVpns)
                server.insert(adresse.to_string());
        }
        if (zeile.starts_with("vpns"))
            wart.fuehre(std::move(server));
        return std::nullopt;
    }

    void beendeKind() {
        if (!kind_)
            return;
        (void)!::send(kind_->kanal.nummer(), "ende\n", 5, MSG_DONTWAIT);
        for (const auto frist = Uhrzeit::now() + kindfrist; ::waitpid(kind_->nummer, nullptr, WNOHANG) == 0;
             ::usleep(10'000))
            if (Uhrzeit::now() > frist)
                ::kill(kind_->nummer, SIGKILL);
    }

    const Auftrag a_;
    Nutzerordner ordner_;
    Deskriptor sperre_;
    std::optional<Abspaltung> kind_;
    std::string eingang_, warum_;
};

} // namespace

} // namespace mobilsteg::volltunnel

int main(int anzahl, char** worte) {
    using namespace mobilsteg;
    if (anzahl == 2 && std::string_view(worte[1]) == "--hilfe") {
        std::puts(volltunnel::hilfe);
        return 0;
    }
    std::string fehler;
    const auto auftrag = volltunnel::liesBefehlszeile({worte + 1, worte + anzahl}, fehler);
    if (!auftrag || ::geteuid() != 0) {
        std::fprintf(stderr, "mobilsteg-volltunnel: %s\n",
                     auftrag ? "braucht die Rechte eines Administrators" : fehler.c_str());
        return auftrag ? 1 : 2;
    }
    // The user's environment must not decide what root's tools do, nor in which language they speak.
    static char* leer[] = {nullptr};
    environ = leer;
    ::setenv("PATH", "/usr/bin:/bin:/usr/sbin:/sbin", 1);
    ::setenv("LC_ALL", "C", 1);
    sichereStandardstroeme();
    ::umask(022);
    ::signal(SIGPIPE, SIG_IGN);
    struct sigaction behandlung {};
    behandlung.sa_handler = [](int signal) { volltunnel::signalDa = signal; };
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &behandlung, nullptr);
    return volltunnel::Helfer(*auftrag).laufe();
}
