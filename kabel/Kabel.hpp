#pragma once

#include "handy/Http.hpp"
#include "handy/Lauf.hpp"
#include "kabel/Anzeige.hpp"
#include "kabel/Berichte.hpp"
#include "kabel/Protokoll.hpp"
#include "kabel/Stand.hpp"
#include "kabel/Verbindung.hpp"
#include "kabel/Zustand.hpp"
#include "kabel/Zustandsspeicher.hpp"
#include "netz/Erhebung.hpp"
#include "netz/ProxySteuerung.hpp"
#include "netz/Variante.hpp"
#include "netz/VolltunnelSteuerung.hpp"
#include "plattform/Anschluesse.hpp"
#include "plattform/Einstellungen.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Schlange.hpp"
#include "plattform/Uhr.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mobilsteg {

/// What is asked before the full tunnel's first activation.
[[nodiscard]] Frage tunnelerklaerung();

/// The one controller: owns the parts of the link, fixes their order, and turns what they find into phase,
/// log line and published state.
class Kabel {
public:
    using Phase = mobilsteg::Phase;

    /// What the controller is handed. All references outlive it.
    struct Anschluesse {
        Schlange& haupt;
        Schlange& q;           ///< "kabel.takt"
        Schlange& volltunnelQ; ///< "volltunnel.start": only the full tunnel's blocking start
        Uhr& uhr;
        Laeufer laeufer;
        Http& http;
        Einstellungen& einstellungen;
        Standausgabe& standdienst;
        Adminskript& skript;
        Dialog& dialog;
        std::function<std::vector<BrowserFund>()> browserFinden; ///< every installed one
        std::function<void(const BrowserFund&)> browserOeffnen;  ///< at the extension's page; blocks
        Buendel buendel;
        Orte orte;
        std::string rechnername;
        /// Ends the program after a programming error, everything taken back; does not return.
        std::function<void(const std::string&)> abbruch;
    };

    /// Reads the settings; starts nothing.
    explicit Kabel(Anschluesse anschluesse);

    /// The process's one instance, made at the first call by what `richteEin` was given.
    static Kabel& gemeinsam();
    static void richteEin(std::function<std::unique_ptr<Kabel>()> erzeuger);

    // --- the clock ---------------------------------------------------------------------------------------

    /// Begins the clock, the status service and the clean-up after an earlier run. Main queue, once.
    void start();

    /// Takes back everything that the program changed on the Mac, and lets no later tick or action change
    /// anything again. On `q()`, called synchronously from outside it; blocks for the tools' time.
    void aufraeumen();

    // --- what the user does: main queue, returns at once -------------------------------------------------

    /// Sets the system proxy, or takes it away when it is set.
    void proxyUmschalten();
    void setzeProxyAutomatisch(bool an);
    void setzeExperte(bool an);
    void setzeProfil(const std::string& profil);

    /// The first activation asks back and blocks until that is answered.
    void setzeVolltunnelAn(bool an);
    void setzeVpnDurch(bool an);
    void setzeNurVPN(bool an);

    /// Takes profile and tunnel switches over as they are stored; a switch that is not stored counts as off.
    void profilUebernehmen();
    void setzeBrowserHinweisWeg(bool weg);

    /// Opens the extension's page in that browser.
    void fahrtwindHinzufuegen(const BrowserFund& fund);

    // --- what others read --------------------------------------------------------------------------------

    [[nodiscard]] Schlange& q() { return a_.q; }
    [[nodiscard]] Zustandsspeicher& speicher() { return speicher_; }
    [[nodiscard]] const Variante& variante() const { return variante_; }
    [[nodiscard]] const std::string& id() const { return id_; }
    [[nodiscard]] const std::string& name() const { return a_.rechnername; }
    [[nodiscard]] const std::string& protokollPfad() const { return protokoll_.pfad(); }
    [[nodiscard]] const std::string& standPfad() const { return standPfad_; }

    /// One log line. Any queue.
    void protokoll(const std::string& text) { protokoll_.schreibe(text); }

private:
    // On q.
    void raeumeUebriggebliebenesWeg();
    void schritt();
    void schrittInnen();
    void setze(const Phase& neu);
    void verliere(const Phase& phase);
    void verloren();
    void brichAb(const std::string& warum);
    void zeigeStatus(const Antwort& antwort);
    void schreibeStand(const Phase& phase, const std::optional<Antwort>& antwort);
    void proxyAn();
    void proxyWeg();

    void volltunnelNachziehen();
    void volltunnelNeuStarten();
    void volltunnelGestartet(const Tunnelauftrag& auftrag, const std::optional<std::string>& grund);
    void volltunnelWeg();
    void volltunnelPruefen();
    void volltunnelZurueckgebaut(const std::string& grund);

    void messeVerbindungen();
    void vpnsLesen();
    void browserLesen();
    void berichteSenden();

    // On the main queue.
    void rotiere();
    void volltunnelAnGeaendert(bool alt);
    void schalteVolltunnelAus(bool speichern);

    [[nodiscard]] static Zustand anfangszustand(const Einstellungen& einstellungen, const Variante& variante);

    Anschluesse a_;
    Variante variante_;
    std::string id_;
    std::string standPfad_;
    Protokoll protokoll_;
    Zustandsspeicher speicher_;

    // On q only.
    Verbindung verbindung_;
    ProxySteuerung proxy_;
    VolltunnelSteuerung tunnel_;
    Erhebung erhebung_;
    Berichte berichte_;
    Anzeige anzeige_;
    Phase phaseIntern_;
    bool zeigtVerbindung_ = false; ///< what the phone told is published, and has to be taken back
    Zuletzt<Anzeigewerte> gezeigteWerte_;
    Zuletzt<Erhebung::Verbindungen> gezeigteVerbindungen_;
    Zuletzt<Erhebung::Vpns> gezeigteVpns_;
    Zuletzt<std::vector<BrowserFund>> gezeigteBrowser_;
    std::optional<Antwort> letzteAntwort_; // valid only in the tick that fetched it
    bool experteIntern_;
    std::int64_t tick_ = 0;
    bool aufgeraeumt_ = false;

    std::atomic<bool> proxyAutomatisch_; // read on q, written on the main queue

    // On the main queue only.
    std::uint64_t rotation_ = 0;
    bool volltunnelOhneSpeichern_ = false;

    Zeitgeber anzeigetakt_;
    Zeitgeber takt_;
};

} // namespace mobilsteg
