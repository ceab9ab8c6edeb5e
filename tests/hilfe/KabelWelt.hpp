#pragma once

#include "handy/Http.hpp"
#include "kabel/Kabel.hpp"
#include "kabel/Standausgabe.hpp"
#include "plattform/Anschluesse.hpp"
#include "probe/welt/VirtuelleWelt.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mobilsteg {

/// A phone as the cable sees it.
struct Modellhandy {
    std::string serial = "R5CT1";
    std::string zustand = "device"; ///< as adb lists it
    std::string modell = "SM_S911B";
    bool amKabel = true;
    bool teilt = true; ///< the phone app listens
    std::string entscheid = "erlaubt";
    std::optional<std::string> austritt = "203.0.113.7\n"; ///< nothing: its proxy is broken
    std::string status{};                                  ///< JSON of the answer's status; empty: none
    bool gruesst = true;                                   ///< its proxy speaks SOCKS5
};

/// What the user at the password dialog and the helper behind it do.
struct Modelltunnel {
    Dauer passwort{};                          ///< how long the dialog stands open
    std::optional<Skriptfehler> skriptfehler;  ///< what the script ends with instead
    Dauer bisLaeuft = std::chrono::seconds(1); ///< how long the helper needs to come up
    std::optional<std::string> zurueckgebaut;  ///< it gives up with that reason instead of coming up
    bool stumm = false;                        ///< it never reports
    bool taub = false;                         ///< it does not look for the request to stop
    Dauer bisWeg{};                            ///< how long it needs to take everything down
};

/// The real controller over a small model of adb, phones and the Mac's tools, all in virtual time.
class KabelWelt : public Http, public Adminskript, public Dialog {
public:
    explicit KabelWelt(std::uint64_t samen = 1);
    ~KabelWelt() override { welt.beende(); }

    /// Makes the controller (again: as after a restart of the program) without starting its clock.
    Kabel& baue();
    /// Makes it and starts its clock; and lets the world go on until that second.
    void starte();
    void starteBis(double sekunden);
    /// Makes one that has come to `faehrt` with its first tick.
    void fahreLos();
    /// The process is killed; what it left stays.
    void stuerzeAb();
    /// Lets the world go on until the tick at `sekunden` after the clock's start is over.
    const Phase& laufeBisSekunde(double sekunden);
    /// The same, for what the panel says then.
    [[nodiscard]] const Phase& phaseBei(double sekunden) { return laufeBisSekunde(sekunden); }
    /// What the user does at a control, with all that follows at once.
    void bediene(const std::function<void(Kabel&)>& was);
    /// The clean-up as the program's end does it.
    void raeumeAuf();

    [[nodiscard]] const Zustand& zustand() const { return kabel->speicher().zustand(); }
    [[nodiscard]] std::vector<std::string> protokoll() const; ///< the log's messages, without their times

    // The world, for the test to change at any time.
    std::vector<Modellhandy> handys;
    std::set<int> belegtePorts;                    ///< held by other programs
    bool fremdesHandy = false;                     ///< these answer as a phone would
    std::string forwardFehler, networksetupFehler; ///< not empty: adb forward, a change fails with it
    std::string schnittstelle = "en0";             ///< of the default route; empty: none
    std::string dienste = "(1) USB LAN\n(Hardware Port: USB LAN, Device: en7)\n\n"
                          "(2) Wi-Fi\n(Hardware Port: Wi-Fi, Device: en0)\n";
    Dauer dauerWerkzeug{}; ///< how long each tool takes
    std::string buendelkennung = "de.mobilsteg.bordlotse";
    std::optional<std::string> version = "1.0", bauversion = "1";
    /// What a call ends with instead; absent: as always.
    std::function<std::optional<Ergebnis>(const std::string&)> stattWerkzeug;
    Modelltunnel tunnel;
    std::map<std::string, std::string> ausgaben; ///< what other tools print; those missing here are missing
    std::vector<BrowserFund> browser;            ///< as they are found
    bool nimmtBerichte = true;
    std::function<void()> haltGeraetewache;
    std::vector<int> antworten; ///< to the coming questions; one more question fails the test

    // What the world looks like.
    std::map<int, std::string> forwards;                          ///< local port → serial
    std::map<std::string, bool> socksAn;                          ///< network service → proxy on
    std::map<std::string, std::pair<std::string, int>> socksZiel; ///< service → address and port
    std::vector<std::string> aufrufe;                             ///< every tool call, its name and arguments
    std::map<std::string, double> fristen; ///< the seconds that each such call was given
    std::vector<std::string> anmeldungen;  ///< bodies of the registrations
    std::vector<std::string> skripte;      ///< every AppleScript source that was run
    std::vector<std::string> fragen;       ///< every question's first line
    int helfer = 0, meisteHelfer = 0;      ///< that live now; that lived at the same time, ever
    std::vector<std::string> geoeffnet;    ///< browsers opened at the extension's page
    std::vector<std::pair<std::string, std::string>> berichte; ///< uploads: encoded name and body
    bool bewacht = false;    ///< somebody takes everything back if the process dies
    std::string abgebrochen; ///< the programming error that ended the program

    Ordner ordner;
    VirtuelleWelt welt;
    SpeicherEinstellungen einstellungen;
    Schlange& haupt = welt.schlange("haupt");
    Schlange* q = nullptr;
    std::vector<Zeitgeber> helferleben;
    std::unique_ptr<Kabel> kabel;

    struct Ausgabe final : Standausgabe {
        void starte() override { ++starts; }
        void setzeDokument(std::string bytes) override {
            dokument = std::move(bytes);
            if (nachDokument)
                nachDokument();
        }
        int starts = 0;
        std::function<void()> nachDokument; ///< on the work queue, once per tick
        std::string dokument = "{}";
    } standdienst;

    /// The helper goes by itself and leaves that reason; empty: none.
    void helferBautZurueck(const std::string& grund) { beendeHelfer(helferleben.size() - 1, grund); }
    [[nodiscard]] std::string stoppPfad() const;

    // The controller's ports: the phone, the password dialog, the questions, the tools.
    [[nodiscard]] std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override;
    [[nodiscard]] bool proxyGruesst() override;
    std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override;
    int frage(const Frage& frage) override;
    virtual Ergebnis werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                              double sekunden);

protected:
    [[nodiscard]] const Modellhandy* bereites(const std::string& serial) const; ///< null: adb cannot use it
    [[nodiscard]] const Modellhandy* anPort(int port) const; ///< whose app answers there; null: nobody's

private:
    Ergebnis adb(const std::vector<std::string>& worte);
    Ergebnis networksetup(const std::vector<std::string>& worte);
    void beendeHelfer(std::size_t platz, const std::string& grund);
};

/// The same, with a willing phone on its cable.
struct HandyWelt : KabelWelt {
    HandyWelt() { handys = {Modellhandy{}}; }
};

} // namespace mobilsteg
