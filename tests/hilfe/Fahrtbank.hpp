#pragma once

#include "plattform/Dateien.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/Klient.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/Programm.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace mobilsteg {

// Where things lie below a trip's folder.
inline const std::string einstellungsdatei = "/heim/Library/Preferences/de.mobilsteg.bordlotse.json";
inline const std::string vpnEinstellungen = "/heim/Library/Preferences/de.mobilsteg.vpnlotse.json";
inline const std::string anwendungsordner = "/heim/Library/Application Support/Mobilsteg Bordlotse/";
inline const std::string standdatei = anwendungsordner + "stand.json";
inline const std::string protokolldatei = "/heim/Library/Logs/MobilstegBordlotse.log";
inline const std::string tunnellog = "/heim/Library/Logs/MobilstegVolltunnel.log";

inline constexpr const char* vpnLotse = "mobilsteg-vpnlotse";
inline constexpr const char* laeuftImStand = R"("volltunnel": true)";

/// Where a shipped program of that name lies: beside this one, or in another build's folder,
/// MOBILSTEG_PROGRAMME.
inline std::string programmpfad(const std::string& name) {
    const char* andere = std::getenv("MOBILSTEG_PROGRAMME");
    return std::string(andere ? andere : BIN_ORDNER) + "/" + name;
}

/// The helper's stand-in, and the helper that the trips take: the shipped one where the machine gives a
/// tunnel in a network of the test's own.
inline const std::string attrappe = QUELL_ORDNER "/probe/tunnel/mobilsteg-volltunnel";
inline std::string helferprogramm() {
    const char* eigenesNetz = "[ $(id -u) = 0 ] && [ -z \"$(ip route)\" ] && "
                              "ip tuntap add probe0 mode tun && ip tuntap del probe0 mode tun";
    static const bool echt = lauf("/bin/sh", {"-c", eigenesNetz}, 60).status == 0;
    if (!echt)
        std::puts("Kein eigenes Netz mit Tunnel (root, /dev/net/tun): der Helfer ist eine Attrappe");
    return echt ? programmpfad("mobilsteg-volltunnel") : attrappe;
}

inline bool portFrei(int port) {
    return !Klient(port).verbunden;
}

/// A simulated phone that really runs, the first, second … one of its trip.
struct Probehandy {
    Probehandy(const std::string& nummer, const std::string& ordner, std::vector<std::string> optionen)
        : serial("127.0.0.1:565" + nummer), steuerport("566" + nummer) {
        optionen.insert(optionen.begin(),
                        {programmpfad("mobilsteg-probehandy"), "--ordner", ordner, "--port", "565" + nummer,
                         "--steuerport", steuerport, "--adb-server", std::getenv("ANDROID_ADB_SERVER_PORT")});
        const std::string ausgabe = ordner + ".ausgabe";
        programm = std::make_unique<Programm>(optionen, ausgabe);
        EXPECT_TRUE(warteBis([&] { return liesDatei(ausgabe).value_or("").ends_with("\n"); }));
    }

    /// Drives it; the test fails when it refuses.
    std::string sage(const std::string& befehl) const {
        const auto ergebnis = lauf(programmpfad("mobilsteg-probehandy"), {"--sage", steuerport, befehl}, 60);
        EXPECT_EQ(ergebnis.status, 0) << befehl << ": " << ergebnis.ausgabe << ergebnis.fehler;
        return ergebnis.ausgabe;
    }

    std::string serial, steuerport;
    std::unique_ptr<Programm> programm;
};

/// A trip with the shipped programs: an adb server of its own, a simulated Mac, a fresh home. Its user has
/// seen all explanations; the one of the VPN edition wants the tunnel.
class Fahrtbank {
public:
    Fahrtbank() {
        ::setenv("ANDROID_ADB_SERVER_PORT", "5643", 1);
        EXPECT_TRUE(portFrei(1080)) << "Port 1080 ist belegt: die Fahrt braucht ihn";
        const auto aufbau = lauf("/bin/sh", {QUELL_ORDNER "/probe/mac/aufbauen", ordner.pfad() + "/mac"}, 60);
        EXPECT_EQ(aufbau.status, 0) << aufbau.fehler;
        ordner.lege(einstellungsdatei, R"({"profil":"reise","austritt.dienst":"http://austritt.probe/"})");
        mitTunnel(vpnEinstellungen);
    }
    ~Fahrtbank() {
        programm.reset();
        (void)adb({"kill-server"});
    }

    void mitTunnel(const std::string& datei) const {
        ordner.lege(datei,
                    R"({"profil":"reise","b2b.erklaert":true,"volltunnel.erklaert":true,"volltunnel":true,
                               "nurVPN":false,"austritt.dienst":"http://austritt.probe/"})");
    }

    /// A phone on the cable unless told otherwise.
    Probehandy handy(const std::vector<std::string>& optionen = {"--stecken", "--erlaubt"}) {
        (void)adb({"start-server"});
        const auto nummer = std::to_string(++handys_);
        return {nummer, ordner.pfad() + "/handy" + nummer, optionen};
    }
    void starte(const std::string& name = "mobilsteg-bordlotse",
                const std::vector<std::string>& optionen = {"--terminal"}) {
        auto worte = aufruf(name, optionen);
        worte.insert(worte.begin(), {"/usr/bin/env", "--block-signal=TERM,INT,HUP"}); // as a parent may
        programm = std::make_unique<Programm>(worte, ordner.pfad() + "/ausgabe");
    }
    /// Runs the program to its end.
    [[nodiscard]] Ergebnis rufe(const std::vector<std::string>& optionen) const {
        const auto worte = aufruf("mobilsteg-bordlotse", optionen);
        return lauf(worte.front(), {worte.begin() + 1, worte.end()}, 60);
    }

    /// Waits for that phase in the state document; the test fails when it takes too long.
    void erwartePhase(const std::string& anfang) const {
        EXPECT_TRUE(imStand("\"phase\": \"" + anfang)) << anfang << ordner.lies(standdatei) << protokoll();
    }
    /// The test fails when anything of the program, or of one before it, is left.
    void erwarteNichts() const {
        EXPECT_FALSE(proxyAn());
        EXPECT_EQ(forwards(), "");
        EXPECT_TRUE(portFrei(1081)) << "an adb server that the program started must not have inherited it";
        EXPECT_TRUE(warteBis([&] { return !helferLaeuft(); }));
    }
    /// Whether no process works on this home any more: no program, no watchman, no helper.
    [[nodiscard]] bool verlassen() const {
        const auto alle = lauf("/bin/sh", {"-c", "cat /proc/[0-9]*/cmdline 2>/dev/null"}, 60).ausgabe;
        return alle.find(ordner.pfad() + "/heim") == std::string::npos;
    }
    /// Kills the program and, before it can notice, its watchman.
    void toeteMitWaechter() const {
        programm->sende(SIGSTOP);
        const auto inhaber = Laufsperre::inhaber(ordner.pfad() + "/heim");
        // One that has just begun is not named yet; an earlier one's watchman may by now be anybody.
        if (inhaber && inhaber->laeufer == programm->nummer() && inhaber->waechter > 0)
            ::kill(inhaber->waechter, SIGKILL);
        programm->sende(SIGKILL);
        programm->warteAufEnde();
    }
    /// Whether that piece comes to stand in a file, in the printed panel, in the state document.
    [[nodiscard]] bool kommt(const std::string& datei, const std::string& stueck) const {
        return warteBis([&] { return ordner.lies(datei).find(stueck) != std::string::npos; });
    }
    [[nodiscard]] bool zeigt(const std::string& stueck) const { return kommt("/ausgabe", stueck); }
    [[nodiscard]] bool imStand(const std::string& stueck) const { return kommt(standdatei, stueck); }

    [[nodiscard]] std::string protokoll() const { return ordner.lies(protokolldatei); }
    [[nodiscard]] std::string adb(const std::vector<std::string>& worte) const {
        return std::string(beschnitten(lauf(ordner.pfad() + "/mac/opt/homebrew/bin/adb", worte, 60).ausgabe));
    }
    [[nodiscard]] std::string forwards() const { return adb({"forward", "--list"}); }
    [[nodiscard]] bool proxyAn() const {
        return ordner.lies("/mac/zustand/socks").find("Wi-Fi\ton\t") != std::string::npos;
    }
    [[nodiscard]] bool helferLaeuft() const {
        return existiert(ordner.pfad() + anwendungsordner + "volltunnel.stopp.laeuft");
    }

    std::unique_ptr<Programm> programm;
    Ordner ordner;
    std::string helfer = helferprogramm(); ///< set before the program is started for the first time

private:
    /// In a package of its own, so that what lies in the build folder's resources makes no difference.
    [[nodiscard]] std::vector<std::string> aufruf(const std::string& name,
                                                  std::vector<std::string> optionen) const {
        const std::string& o = ordner.pfad();
        const std::string lege =
            R"(cd "$0" && mkdir -p bin Resources && cp -n "$1" "$1"-fenster bin; cp -n "$2" Resources)";
        (void)lauf("/bin/sh", {"-c", lege, o, programmpfad(name), helfer}, 60);
        optionen.insert(optionen.begin(),
                        {o + "/bin/" + name, "--heim", o + "/heim", "--wurzel", o + "/mac"});
        return optionen;
    }

    int handys_ = 0;
};

} // namespace mobilsteg
