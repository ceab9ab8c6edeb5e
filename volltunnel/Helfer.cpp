#include "volltunnel/Helfer.hpp"

#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"
#include "plattform/Tunnelgeraet.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <map>
#include <set>

#include "volltunnel/Nutzerordner.hpp"
#include "volltunnel/Tunnel.hpp"
#include "volltunnel/Wege.hpp"
#include "volltunnel/Werkzeug.hpp"

namespace mobilsteg::volltunnel {

namespace {

using Uhrzeit = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int blickabstandMs = 200;
constexpr std::chrono::seconds umschauabstand{3};
constexpr std::chrono::seconds sperrfrist{3}; // one that is just taking everything back
constexpr std::chrono::seconds kindfrist{2};
constexpr milliseconds geraetefrist{2000};
constexpr std::size_t hoechstensVpns = 64;
constexpr rlim_t deskriptoren = 65'536; // two for each connection
const std::vector<std::string> neueDnsserver{"1.1.1.1", "9.9.9.9"};

volatile std::sig_atomic_t signalDa = 0;

/// One step that may fail with a reason.
using Fehler = std::optional<std::string>;

class Helfer {
public:
    explicit Helfer(const Auftrag& auftrag)
        : a_(auftrag), ordner_(auftrag.stopp), wege_(wegewerkzeug(), auftrag.wurzel), ablage_(ablage()) {}

    int laufe() {
        if (!ordner_.da()) {
            protokolliere("Der Ordner der Stoppdatei fehlt: " + a_.stopp);
            return 1;
        }
        if (!sperre()) {
            gibAuf("es läuft schon ein Helfer");
            return 1;
        }
        rueckbau_.emplace(ablage_ + "/mobilsteg-volltunnel.rueckbau");
        if (!rueckbau_->leer())
            protokolliere(rueckbau_->alles()
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
            fehler = gerufen() ? std::nullopt : baueAuf();
            if (!fehler)
                fehler = wache();
        } catch (const std::exception& ausnahme) {
            fehler = ausnahme.what();
        }
        baueAb();
        if (fehler)
            gibAuf(*fehler);
        // The marks last: they promise that everything is taken back.
        for (const char* endung : {".vpns.json", ".laeuft"})
            ordner_.entferne(endung);
        protokolliere("Ende: " + fehler.value_or(warum_));
        return fehler ? 1 : 0;
    }

private:
    /// Where root keeps what has to outlive a crash and a restart.
    [[nodiscard]] std::string ablage() const {
        const std::string mac = a_.wurzel + "/var/db";
        return existiert(mac) ? mac : a_.wurzel + "/var/lib";
    }

    bool sperre() {
        const std::string pfad = ablage_ + "/mobilsteg-volltunnel.sperre";
        sperre_ = Deskriptor(::open(pfad.c_str(), O_RDONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
        for (const auto frist = Uhrzeit::now() + sperrfrist; sperre_ && Uhrzeit::now() < frist;
             ::usleep(100'000))
            if (::flock(sperre_.nummer(), LOCK_EX | LOCK_NB) == 0)
                return true;
        return false;
    }

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

    // Up.

    Fehler baueAuf() {
        auto geraet = neuesTunnelgeraet();
        if (!geraet)
            return "kein Tunnelgerät: " + fehlerbeschreibung(errno);
        name_ = geraet->name;
        for (const auto& befehl : wege_.geraetEin(name_, false))
            if (const auto lauf = fuehreAus(befehl, geraetefrist); !lauf.gelungen)
                return name_ + " lässt sich nicht einrichten: " + lauf.grund();
        sechs_ = std::ranges::all_of(wege_.geraetEin(name_, true), [](const Befehl& befehl) {
            return fuehreAus(befehl, geraetefrist).gelungen; // not every machine has IPv6
        });
        Tunnelteile teile;
        const Deskriptor horcher4 = horche(false);
        const Deskriptor horcher6 = sechs_ ? horche(true) : Deskriptor();
        if (!horcher4 || (sechs_ && !horcher6))
            return "kein Platz zum Horchen: " + fehlerbeschreibung(errno);
        teile.geraet = geraet->datei.nummer();
        teile.horcher4 = horcher4.nummer();
        teile.horcher6 = horcher6.nummer();
        return gebaere(teile);
    }

    /// A listener on our end of the tunnel. An address may take a moment until it is ours.
    static Deskriptor horche(bool sechs) {
        const Stelle stelle(tunnelenden(sechs).hier, 0);
        const int ja = 1;
        for (const auto frist = Uhrzeit::now() + geraetefrist;; ::usleep(50'000)) {
            Deskriptor horcher(::socket(sechs ? AF_INET6 : AF_INET, SOCK_STREAM, 0));
            ::fcntl(horcher.nummer(), F_SETFD, FD_CLOEXEC);
            if (sechs)
                ::setsockopt(horcher.nummer(), IPPROTO_IPV6, IPV6_V6ONLY, &ja, sizeof ja);
            if (::bind(horcher.nummer(), stelle.data(), static_cast<socklen_t>(stelle.size())) == 0 &&
                ::listen(horcher.nummer(), 4096) == 0)
                return horcher;
            if (Uhrzeit::now() > frist)
                return {};
        }
    }

    Fehler gebaere(Tunnelteile teile) {
        int kanal[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, kanal) != 0)
            return "kein Kanal: " + fehlerbeschreibung(errno);
        ::fcntl(kanal[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(kanal[1], F_SETFD, FD_CLOEXEC);
        kanal_ = Deskriptor(kanal[0]);
        const Deskriptor seiner(kanal[1]);
        teile.kanal = kanal[1];
        rlimit grenze{};
        ::getrlimit(RLIMIT_NOFILE, &grenze);
        for (const rlim_t viele : {deskriptoren, grenze.rlim_max}) // or as many as the system lets us have
            if (const rlimit mehr{viele, viele}; ::setrlimit(RLIMIT_NOFILE, &mehr) == 0)
                break;
        kind_ = ::fork();
        if (kind_ < 0)
            return "kein Prozess für den Tunnel: " + fehlerbeschreibung(errno);
        if (kind_ > 0)
            return std::nullopt;
        kanal_.schliesse();
        sperre_.schliesse();
        // What ends the other one must not end this one first: it says good-bye on its own.
        for (const int signal : {SIGTERM, SIGINT, SIGHUP})
            ::signal(signal, SIG_IGN);
        if (!legeRechteAb(ordner_.benutzer(), ordner_.gruppe())) {
            protokolliere("Die Rechte lassen sich nicht ablegen");
            ::_exit(1);
        }
        fuehreTunnel(teile, a_, ordner_);
    }

    // Running.

    Fehler wache() {
        auto naechste = Uhrzeit::now();
        while (!gerufen()) {
            pollfd fall{kanal_.nummer(), POLLIN, 0};
            if (::poll(&fall, 1, blickabstandMs) > 0)
                if (const auto fehler = liesKanal())
                    return fehler;
            if (Uhrzeit::now() < naechste)
                continue;
            frageOpenvpn();
            if (steht_)
                pruefeAusweg();
            naechste = Uhrzeit::now() + umschauabstand;
        }
        return std::nullopt;
    }

    Fehler liesKanal() {
        char block[4096];
        const ssize_t n = ::recv(kanal_.nummer(), block, sizeof block, MSG_DONTWAIT);
        if (n < 0 && (errno == EAGAIN || errno == EINTR))
            return std::nullopt;
        if (n <= 0)
            return "der Tunnel ist abgestürzt";
        eingang_.append(block, static_cast<std::size_t>(n));
        for (std::size_t ende = 0; (ende = eingang_.find('\n')) != std::string::npos;
             eingang_.erase(0, ende + 1))
            if (const auto fehler = nimmZeile(eingang_.substr(0, ende)))
                return fehler;
        return std::nullopt;
    }

    Fehler nimmZeile(const std::string& zeile) {
        if (zeile.starts_with("grund "))
            return std::string(ersteZeichen(zeile, 200)).substr(6);
        if (zeile == "bewiesen")
            return setzeWege();
        if (zeile.starts_with("vpns")) {
            vpns_.clear();
            for (const auto wort : teile(std::string_view(zeile).substr(4), ' ')) {
                std::error_code keine;
                const auto adresse = asio::ip::make_address(std::string(wort), keine);
                if (!keine && istEinzelne(adresse) && !adresse.is_loopback() && vpns_.size() < hoechstensVpns)
                    vpns_.insert(adresse.to_string());
            }
            if (steht_)
                zieheNach();
        }
        return std::nullopt;
    }

    Fehler setzeWege() {
        steht_ = true;
        pruefeAusweg();
        if (!a_.nurVPN) {
            setzeDns();
            for (const std::string netz :
                 {"0.0.0.0/1", "128.0.0.0/1", "::/1", "8000::/1"}) // beats a default route
                if (sechs_ || !istSechs(netz))
                    if (const auto lauf = fuehreAus(wege_.fuehre(netz, {"", name_}), geraetefrist);
                        !lauf.gelungen)
                        return "kein Weg für " + netz + ": " + lauf.grund();
        }
        protokolliere("Wege über " + name_ + ": " + (a_.nurVPN ? "die Server der VPNs" : "alles") +
                      (sechs_ ? "" : " (ohne IPv6)"));
        return ordner_.schreibe(".laeuft", "") ? Fehler() : "die Laufmarke lässt sich nicht schreiben";
    }

    /// In another network, what leads beside the tunnel has to lead there.
    void pruefeAusweg() {
        for (const bool sechs : {false, true}) {
            auto jetzt = a_.nurVPN
                             ? Ausweg{"", name_}
                             : wege_.liesAusweg(fuehreAus(wege_.frageAusweg(sechs), geraetefrist).ausgabe);
            if (jetzt == auswege_[sechs ? 1 : 0])
                continue;
            auswege_[sechs ? 1 : 0] = std::move(jetzt);
            for (const auto& [netz, zurueck] : std::exchange(gesetzte_, {}))
                rueckbau_->nimmZurueck(zurueck);
        }
        zieheNach();
    }

    /// The roads of their own that are to be there and those that are: each difference is mended.
    void zieheNach() {
        auto soll = vpns_;
        if (!a_.nurVPN && wegewerkzeug() == Wegewerkzeug::ip)
            soll.insert("224.0.0.0/4"); // on a Mac multicast has its own road anyway
        std::erase_if(gesetzte_, [&](const auto& gesetzter) {
            const bool weg = !soll.contains(gesetzter.first);
            if (weg)
                rueckbau_->nimmZurueck(gesetzter.second);
            return weg;
        });
        for (const auto& netz : soll) {
            const auto& ausweg = auswege_[istSechs(netz) ? 1 : 0];
            if (gesetzte_.contains(netz) || !ausweg || (a_.nurVPN && istSechs(netz) && !sechs_))
                continue;
            const Befehl zurueck = wege_.fuehre(netz, *ausweg, true);
            const auto fehler = rueckbau_->tue(wege_.fuehre(netz, *ausweg), zurueck);
            if (!fehler)
                gesetzte_.emplace(netz, zurueck);
            if (!fehler ||
                std::exchange(wegfehler_[netz], *fehler) != *fehler) // tried again and again, told once
                protokolliere("Weg für " + netz + (a_.nurVPN ? " durch den Tunnel" : " am Tunnel vorbei") +
                              (fehler ? ": " + *fehler : ""));
        }
    }

    /// Only root sees what another user's programs are connected to. Which of it counts is not decided here.
    void frageOpenvpn() {
        std::string zeile = "openvpn";
        if (fuehreAus({a_.wurzel + "/usr/bin/pgrep", "-x", "openvpn"}, geraetefrist).gelungen) {
            const auto lauf = fuehreAus({a_.wurzel + "/usr/sbin/lsof", "-nP", "-a", "-c", "openvpn", "-iTCP",
                                         "-sTCP:ESTABLISHED", "-Fn"},
                                        geraetefrist);
            for (const auto wort : teile(lauf.ausgabe, '\n'))
                if (wort.starts_with('n') && zeile.size() < 4096)
                    zeile.append(" ").append(wort);
        }
        zeile += "\n";
        (void)!::send(kanal_.nummer(), zeile.data(), zeile.size(), MSG_DONTWAIT);
    }

    // Names: on a Mac the network service has its servers, often the router's own, which the phone cannot
    // reach.

    void setzeDns() {
        const std::string werkzeug = a_.wurzel + "/usr/sbin/networksetup";
        if (!istAusfuehrbar(werkzeug))
            return;
        const auto lauf = fuehreAus({werkzeug, "-getdnsservers", a_.dienst}, geraetefrist);
        if (!lauf.gelungen)
            return protokolliere("DNS bleibt, wie es ist: " +
                                 std::string(beschnitten(lauf.ausgabe + lauf.fehler)));
        auto alte = liesDnsserver(lauf.ausgabe);
        const auto geltende =
            !alte.empty()
                ? alte
                : liesDnsserver(fuehreAus({a_.wurzel + "/usr/sbin/scutil", "--dns"}, geraetefrist).ausgabe);
        if (!geltende.empty() && std::ranges::all_of(geltende, [](const std::string& a) {
                return istOeffentlich(asio::ip::make_address(a));
            }))
            return; // they are reached through the tunnel
        if (alte.empty())
            alte = {"Empty"};
        Befehl hin{werkzeug, "-setdnsservers", a_.dienst};
        Befehl zurueck = hin;
        hin.insert(hin.end(), neueDnsserver.begin(), neueDnsserver.end());
        zurueck.insert(zurueck.end(), alte.begin(), alte.end());
        const auto fehler = rueckbau_->tue(hin, zurueck);
        protokolliere(fehler ? "DNS bleibt, wie es ist: " + *fehler
                             : "DNS von " + a_.dienst + ": " + verbunden(neueDnsserver, ", ") + " statt " +
                                   verbunden(alte, ", "));
    }

    // Down.

    /// The tunnel first: its roads go with its device. Beside it the VPNs keep their roads until then.
    void baueAb() {
        if (kind_ > 0) {
            (void)!::send(kanal_.nummer(), "ende\n", 5, MSG_DONTWAIT);
            const auto frist = Uhrzeit::now() + kindfrist;
            while (::waitpid(kind_, nullptr, WNOHANG) == 0) {
                if (Uhrzeit::now() > frist)
                    ::kill(kind_, SIGKILL);
                ::usleep(10'000);
            }
        }
        rueckbau_->alles();
    }

    Auftrag a_;
    Nutzerordner ordner_;
    Wege wege_;
    std::string ablage_;
    Deskriptor sperre_, kanal_;
    std::optional<Rueckbau> rueckbau_;
    std::string name_; ///< of the device
    bool sechs_ = false;
    pid_t kind_ = -1;
    std::string eingang_;
    std::string warum_;
    bool steht_ = false; ///< the roads are set
    std::optional<Ausweg> auswege_[2];
    std::set<std::string> vpns_;                   ///< servers that need a road of their own
    std::map<std::string, Befehl> gesetzte_;       ///< those that have one, and how to take it back
    std::map<std::string, std::string> wegfehler_; ///< what was told last of each
};

} // namespace

int fuehreHelfer(const Auftrag& auftrag) {
    sichereStandardstroeme();
    ::umask(022);
    ::signal(SIGPIPE, SIG_IGN);
    struct sigaction behandlung {};
    behandlung.sa_handler = [](int signal) { signalDa = signal; };
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &behandlung, nullptr);
    return Helfer(auftrag).laufe();
}

} // namespace mobilsteg::volltunnel
