#include "probe/handy/Optionen.hpp"

#include "probe/handy/Befehle.hpp"
#include "probe/handy/Text.hpp"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace mobilsteg::probehandy {

const char* const hilfe =
    R"(Aufruf: mobilsteg-probehandy [OPTIONEN]
        mobilsteg-probehandy --sage STEUERPORT BEFEHL…

Ein nachgestelltes Handy für das echte adb: nach „adb connect 127.0.0.1:PORT“ bietet es den SOCKS5-Proxy
(tcp:1080) und die Schnittstelle der Handy-App (tcp:8080) an.

  --port N          Port für adb; 0: irgendein freier (sonst der erste freie ab 5600)
  --steuerport N    Port für Befehle; 0: irgendein freier (so auch ohne Angabe)
  --ordner DIR      merkt sich hier Anmeldungen und Berichte
  --modell NAME     Modell des Handys (SM_S911B)
  --austritt ADR    womit http://austritt.probe/ antwortet (203.0.113.7)
  --ohne-debugging  der Rechner ist noch nicht zugelassen
  --weitergabe-aus  die App gibt noch nichts weiter
  --erlaubt         der Mac ist schon erlaubt
  --adb-server PORT meldet sich beim Stecken und Ziehen selbst bei diesem adb-Server
  --stecken         steckt sich gleich beim Start an (mit --adb-server)
  --netz            der Proxy darf auch über diesen Rechner hinaus
  --hilfe           diese Übersicht
  --version         die Version

Die Befehle zeigt „mobilsteg-probehandy --sage STEUERPORT hilfe“.
)";

namespace {

/// adb takes whoever listens in this range for one of its emulators.
constexpr bool istEmulatorport(unsigned port) {
    return port >= 5555 && port <= 5585;
}

class Leser {
public:
    explicit Leser(std::vector<std::string_view> worte) : worte_(std::move(worte)) {}

    Aufruf lies() {
        while (stelle_ < worte_.size()) {
            const std::string_view wort = worte_[stelle_++];
            if (wort == "--hilfe" || wort == "--help" || wort == "-h") {
                return Hilfewunsch{};
            }
            if (wort == "--version") {
                return Versionswunsch{};
            }
            if (wort == "--sage") {
                return liesSage();
            }
            if (!nimmSchalter(wort) && !nimmWert(wort)) {
                return Optionsfehler{"unbekannte Option „" + std::string(wort) + "“, siehe --hilfe"};
            }
            if (!grund_.empty()) {
                return Optionsfehler{grund_};
            }
        }
        if (optionen_.stecken && !optionen_.adbServer) {
            return Optionsfehler{"--stecken braucht --adb-server"};
        }
        return optionen_;
    }

private:
    Aufruf liesSage() {
        Sageauftrag auftrag;
        auftrag.steuerport = port("--sage");
        while (stelle_ < worte_.size()) {
            auftrag.befehl += (auftrag.befehl.empty() ? "" : " ") + std::string(worte_[stelle_++]);
        }
        if (grund_.empty() &&
            (ohneRand(auftrag.befehl).empty() || auftrag.befehl.find('\n') != std::string::npos)) {
            grund_ = "--sage braucht einen Befehl in einer Zeile";
        }
        if (!grund_.empty()) {
            return Optionsfehler{grund_};
        }
        return auftrag;
    }

    bool nimmSchalter(std::string_view wort) {
        if (wort == "--ohne-debugging") {
            optionen_.debugging = false;
        } else if (wort == "--weitergabe-aus") {
            optionen_.weitergabe = false;
        } else if (wort == "--erlaubt") {
            optionen_.erlaubt = true;
        } else if (wort == "--stecken") {
            optionen_.stecken = true;
        } else if (wort == "--netz") {
            optionen_.netz = true;
        } else {
            return false;
        }
        return true;
    }

    bool nimmWert(std::string_view wort) {
        if (wort == "--port") {
            optionen_.port = port(wort);
            if (istEmulatorport(*optionen_.port)) {
                grund_ = "auf den Ports 5555 bis 5585 sucht adb nach Emulatoren";
            }
        } else if (wort == "--steuerport") {
            optionen_.steuerport = port(wort);
        } else if (wort == "--adb-server") {
            optionen_.adbServer = port(wort);
        } else if (wort == "--ordner") {
            optionen_.ordner = wert(wort);
        } else if (wort == "--modell") {
            optionen_.modell = wert(wort);
            if (grund_.empty() && !istModell(optionen_.modell)) {
                grund_ = "--modell erwartet einen Namen ohne die Zeichen ; = :";
            }
        } else if (wort == "--austritt") {
            optionen_.austritt = wert(wort);
            if (grund_.empty() && !istAustritt(optionen_.austritt)) {
                grund_ = "--austritt erwartet eine Adresse in einer Zeile";
            }
        } else {
            return false;
        }
        return true;
    }

    std::string wert(std::string_view option) {
        if (stelle_ == worte_.size() || worte_[stelle_].empty()) {
            grund_ = std::string(option) + " braucht einen Wert";
            return {};
        }
        return std::string(worte_[stelle_++]);
    }

    std::uint16_t port(std::string_view option) {
        const std::string text = wert(option);
        const auto zahl = alsZahl<std::uint16_t>(text);
        if (grund_.empty() && !zahl) {
            grund_ = std::string(option) + " erwartet einen Port von 0 bis 65535";
        }
        return zahl.value_or(0);
    }

    std::vector<std::string_view> worte_;
    std::size_t stelle_ = 0;
    Optionen optionen_;
    std::string grund_;
};

} // namespace

Aufruf liesOptionen(int anzahl, const char* const* worte) {
    return Leser(std::vector<std::string_view>(worte + 1, worte + std::max(1, anzahl))).lies();
}

} // namespace mobilsteg::probehandy
