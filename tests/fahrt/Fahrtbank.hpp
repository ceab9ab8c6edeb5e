#pragma once

#include "handy/Lauf.hpp"
#include "plattform/Dateien.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// A program started by a test; killed with the test if it still runs then.
class Programm {
public:
    /// Its outputs go to `ausgabe`, a file; its standard input is a pipe held open by this object.
    Programm(const std::vector<std::string>& worte, const std::string& ausgabe);
    ~Programm();
    Programm(const Programm&) = delete;
    Programm& operator=(const Programm&) = delete;

    void sende(int signal) const;
    /// To the whole process group, as a terminal does.
    void sendeGruppe(int signal) const;
    void tippe(const std::string& zeile) const;
    /// Waits for its end: exit code, or 128 and the signal's number. Absent: it did not end in time.
    std::optional<int> warteAufEnde(double sekunden = 30);
    [[nodiscard]] pid_t nummer() const { return nummer_; }

private:
    pid_t nummer_ = -1;
    int eingabe_ = -1;
    std::optional<int> status_;
};

/// A simulated phone that really runs.
class Probehandy {
public:
    Probehandy(const std::string& ordner, const std::vector<std::string>& optionen);

    /// Drives it; the test fails when it refuses.
    std::string sage(const std::string& befehl) const;
    [[nodiscard]] std::string serial() const { return "127.0.0.1:" + adbPort_; }

private:
    std::unique_ptr<Programm> programm_;
    std::string adbPort_;
    std::string steuerport_;
};

/// A trip with the shipped programs: an adb server of its own, a simulated Mac, a fresh home.
class Fahrtbank {
public:
    Fahrtbank();
    ~Fahrtbank();
    Fahrtbank(const Fahrtbank&) = delete;
    Fahrtbank& operator=(const Fahrtbank&) = delete;

    /// A phone on the cable unless told otherwise.
    std::unique_ptr<Probehandy> handy(std::vector<std::string> optionen = {"--stecken", "--erlaubt"});
    /// `umstand`: what the shell does before it becomes the program, such as setting limits.
    void starte(const std::string& name = "mobilsteg-bordlotse", const std::string& umstand = "");
    /// In the menu bar instead of the terminal, on the display that the environment names.
    void starteFenster();

    /// Makes the VPN edition's user one who has seen all explanations and wants the tunnel.
    void alsVpnBenutzer() const;

    /// Runs the program with other options to its end.
    [[nodiscard]] Ergebnis rufe(const std::vector<std::string>& optionen) const;

    /// The state document's phase, once it begins with `anfang`; the test fails when that takes too long.
    void erwartePhase(const std::string& anfang, double sekunden = 20) const;
    [[nodiscard]] std::string stand() const; ///< the document as bytes
    [[nodiscard]] std::string protokoll() const;
    [[nodiscard]] int zeilenMit(const std::string& stueck) const; ///< of the log
    [[nodiscard]] std::string adb(const std::vector<std::string>& worte) const;
    [[nodiscard]] bool proxyAn(const std::string& dienst = "Wi-Fi") const;
    [[nodiscard]] std::string ausgabe() const; ///< what the program printed

    /// Whether that piece comes to stand in the printed panel; or in the state document.
    [[nodiscard]] bool zeigt(const std::string& stueck) const;
    [[nodiscard]] bool imStand(const std::string& stueck) const;

    std::unique_ptr<Programm> programm;
    Ordner ordner;

private:
    [[nodiscard]] std::vector<std::string> aufruf(const std::string& name,
                                                  const std::vector<std::string>& optionen) const;

    std::string adbPfad_;
    int handys_ = 0;
};

/// Where a shipped program of that name lies.
[[nodiscard]] std::string programmpfad(const std::string& name);

/// Asks until it holds. False: it did not in time.
[[nodiscard]] bool warteBis(const std::function<bool()>& bedingung, double sekunden = 20);

/// Whether nobody listens on that loopback port.
[[nodiscard]] bool portFrei(int port);

/// Takes that loopback port as long as it lives; empty: somebody else has it.
[[nodiscard]] Deskriptor besetze(int port);

/// What a server on a loopback port answers to these bytes, to its end.
[[nodiscard]] std::string frage(int port, const std::string& bytes);

} // namespace mobilsteg
