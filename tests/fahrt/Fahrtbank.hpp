#pragma once

#include "handy/Lauf.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Kindprozess.hpp"
#include "tests/hilfe/Klient.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

// Where things lie below a trip's folder.
inline const std::string einstellungen = "/heim/Library/Preferences/de.mobilsteg.bordlotse.json";
inline const std::string vpnEinstellungen = "/heim/Library/Preferences/de.mobilsteg.vpnlotse.json";
inline const std::string anwendungsordner = "/heim/Library/Application Support/Mobilsteg Bordlotse/";
inline const std::string standdatei = anwendungsordner + "stand.json";
inline const std::string protokolldatei = "/heim/Library/Logs/MobilstegBordlotse.log";
inline const std::string helfermarke = anwendungsordner + "volltunnel.stopp.laeuft";
inline const std::string tunnellog = "/heim/Library/Logs/MobilstegVolltunnel.log";

inline constexpr const char* vpnLotse = "mobilsteg-vpnlotse";

/// The settings of a user of that edition who has seen all explanations and wants the tunnel.
inline constexpr const char* vpnBenutzer = R"({"b2b.erklaert":true,"volltunnel.erklaert":true,
    "volltunnel":true,"nurVPN":false,"austritt.dienst":"http://austritt.probe/"})";

/// A program started by a test, in a process group of its own; ended with the test if it still runs then.
class Programm {
public:
    /// Its outputs go to `ausgabe`, a file; its standard input is a pipe held open by this object.
    /// `umstand`: what a shell does before it becomes the program, such as setting limits.
    Programm(std::vector<std::string> worte, const std::string& ausgabe, const std::string& umstand = ":");
    ~Programm();

    void sende(int signal) const { ::kill(kind_.nummer, signal); }
    void sendeGruppe(int signal) const { ::kill(-kind_.nummer, signal); } ///< as a terminal does
    void tippe(const std::string& zeile) const;
    /// Waits for its end: exit code, or the signal's number. Absent: it did not end in time.
    std::optional<int> warteAufEnde();
    void toete();

private:
    Deskriptor eingabe_;
    Kindprozess kind_;
    std::optional<int> status_;
};

/// A simulated phone that really runs.
class Probehandy {
public:
    Probehandy(const std::string& ordner, std::vector<std::string> optionen);

    /// Drives it; the test fails when it refuses.
    std::string sage(const std::string& befehl) const;
    [[nodiscard]] std::string serial() const { return "127.0.0.1:" + adbPort_; }

private:
    std::unique_ptr<Programm> programm_;
    std::string adbPort_, steuerport_;
};

/// A trip with the shipped programs: an adb server of its own, a simulated Mac, a fresh home.
class Fahrtbank {
public:
    Fahrtbank();
    ~Fahrtbank();

    /// A phone on the cable unless told otherwise.
    std::unique_ptr<Probehandy> handy(std::vector<std::string> optionen = {"--stecken", "--erlaubt"});
    /// Starts the program; `umstand` happens in the home.
    void starte(const std::string& name = "mobilsteg-bordlotse", const std::string& umstand = ":",
                const std::vector<std::string>& optionen = {"--terminal"});
    /// Runs the program with other options to its end.
    [[nodiscard]] Ergebnis rufe(const std::string& option) const;

    /// The state document's phase, once it begins with `anfang`; the test fails when that takes too long.
    void erwartePhase(const std::string& anfang) const;
    /// The test fails when anything of the program, or of one before it, is left.
    void erwarteNichts() const;
    /// Whether that piece comes to stand in a file, in the printed panel, in the state document.
    [[nodiscard]] bool kommt(const std::string& datei, const std::string& stueck) const;
    [[nodiscard]] bool zeigt(const std::string& stueck) const { return kommt("/ausgabe", stueck); }
    [[nodiscard]] bool imStand(const std::string& s) const { return kommt(standdatei, s); }

    [[nodiscard]] std::string stand() const { return ordner.lies(standdatei); }
    [[nodiscard]] std::string ausgabe() const { return ordner.lies("/ausgabe"); }
    [[nodiscard]] std::string protokoll() const { return ordner.lies(protokolldatei); }
    [[nodiscard]] int zeilenMit(const std::string& stueck) const; ///< of the log
    [[nodiscard]] std::string adb(const std::vector<std::string>& worte) const;
    [[nodiscard]] std::string forwards() const { return adb({"forward", "--list"}); }
    [[nodiscard]] bool proxyAn() const {
        return ordner.lies("/mac/zustand/socks").find("Wi-Fi\ton\t") != std::string::npos;
    }
    [[nodiscard]] bool helferLaeuft() const { return existiert(ordner.pfad() + helfermarke); }

    std::unique_ptr<Programm> programm;
    Ordner ordner;

private:
    [[nodiscard]] std::vector<std::string> aufruf(const std::string& name,
                                                  const std::vector<std::string>& optionen) const;

    int handys_ = 0;
};

/// Where a shipped program of that name lies.
[[nodiscard]] inline std::string programmpfad(const std::string& name) {
    return BIN_ORDNER "/" + name;
}

/// Asks until it holds. False: it did not in a time that is ample on a busy machine, too.
[[nodiscard]] bool warteBis(const std::function<bool()>& bedingung, double sekunden = 45);

/// Whether nobody listens on that loopback port.
[[nodiscard]] inline bool portFrei(int port) {
    return !Klient(port).verbunden;
}

} // namespace mobilsteg
