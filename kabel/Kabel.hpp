#pragma once

#include "handy/Antwort.hpp"
#include "kabel/Anzeige.hpp"
#include "kabel/Berichte.hpp"
#include "kabel/Protokoll.hpp"
#include "kabel/Verbindung.hpp"
#include "kabel/Zustand.hpp"
#include "netz/Erhebung.hpp"
#include "netz/SystemProxy.hpp"
#include "netz/Variante.hpp"
#include "netz/Volltunnel.hpp"
#include "plattform/Anschluesse.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Schlange.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mobilsteg {

class Einstellungen;
class Http;
class Standausgabe;
class Uhr;

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
        /// Told at each step that the adb server runs: who listens to it then calls `siehNach`. May be empty.
        std::function<void()> haltGeraetewache = {};
        /// Asked at the start and at each step, before anything is changed: sees to it that somebody takes
        /// everything back if the process dies; and, once everything is taken back, told that nobody needs
        /// to. May be empty.
        std::function<void()> halteWaechter{}, entlasseWaechter{};
        Adb::Forwardliste forwardliste{}; ///< on q; may be empty
    };

    /// Reads the settings; starts nothing.
    explicit Kabel(Anschluesse anschluesse);

    /// The process's one instance: the one that the application has set.
    static Kabel& gemeinsam();
    static void setzeGemeinsames(Kabel* kabel);

    // --- the clock ---------------------------------------------------------------------------------------

    /// Begins the clock, the status service and the clean-up after an earlier run. Main queue, once.
    void start();

    /// Takes back everything that the program changed on the Mac, and lets no later tick or action change
    /// anything again; a second call does nothing. On `q()`, called synchronously from outside it; blocks for
    /// the tools' time.
    void aufraeumen();

    /// The clean-up is about to be queued: of what stands before it only the step under way is still taken,
    /// no reports, surveys or clicks. Any queue.
    void kuendigeEndeAn() { endet_ = true; }

    /// Switches off the system proxy alone, beside a work queue that does not come to the clean-up; only
    /// right before the process ends. Any other queue; blocks for the tools' time.
    void nimmProxyNotfallsWeg();

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

    /// Opens the log in the system's own program for it.
    void protokollZeigen();

    // --- what others read --------------------------------------------------------------------------------

    [[nodiscard]] Schlange& q() { return anschluesse_.q; }
    [[nodiscard]] Zustandsspeicher& speicher() { return speicher_; }
    [[nodiscard]] const Variante& variante() const { return variante_; }
    [[nodiscard]] const std::string& id() const { return id_; }
    [[nodiscard]] const std::string& name() const { return anschluesse_.rechnername; }
    [[nodiscard]] const std::string& protokollPfad() const { return protokoll_.pfad(); }

    /// Looks at the cable at once instead of with the next tick; several wishes that wait become one look.
    /// Any queue; returns at once.
    void siehNach();

    /// One log line. Any queue.
    void protokoll(const std::string& text) { protokoll_.schreibe(text); }

private:
    // On the main queue.
    void rotiere();
    void zeigeInDerMenueleiste(Zustand& zustand) const;
    void volltunnelAnGeaendert(bool alt, bool speichern);
    void schalteVolltunnelAus(bool speichern);
    void stelle(bool Schalterstellungen::*schalter, bool an, const char* schluessel,
                void (Kabel::*folge)() = nullptr);
    void uebergibSchalter(void (Kabel::*folge)());

    /// Runs `was` on q, unless the clean-up has been there, and hands over what it changed. Any queue.
    void aufQ(std::function<void()> was);

    // On q.
    void uebergib();
    void raeumeUebriggebliebenesWeg();
    void takt();
    void schritt();
    void schrittInnen();
    void setze(const Phase& neu);
    void verliere(const Phase& phase);
    void beginneNeu();
    void gibWegAuf();
    void zeigeBelegtePorts();
    void verloren();
    void brichAb(const std::string& warum);
    void zeigeStatus(const Antwort& antwort);
    void schreibeStand(const Phase& phase, const std::optional<Antwort>& antwort);
    void proxyAn();
    void proxyVonHandAn();
    void proxyWeg();
    [[nodiscard]] std::optional<std::string> nimmProxyWeg();
    [[nodiscard]] std::set<std::string> meldeMisslungene(const std::vector<SystemProxy::Wegnahme>& wegnahmen);

    void volltunnelNachziehen();
    void volltunnelNeuStarten();
    void volltunnelGestartet(const Tunnelauftrag& auftrag, const std::optional<std::string>& grund);
    void volltunnelWeg();
    void meldeTunnelende(Volltunnel::Ende ende);
    void volltunnelPruefen();
    void volltunnelZurueckgebaut(const std::string& grund);

    void messeVerbindungen();
    void vpnsLesen();
    void browserLesen();
    void berichteSenden();

    [[nodiscard]] static Zustand anfangszustand(const Einstellungen& einstellungen, const Variante& variante);

    Anschluesse anschluesse_;
    Variante variante_;
    std::string id_;
    std::string standPfad_;
    Protokoll protokoll_;
    Zustandsspeicher speicher_;

    // On q only.
    Verbindung verbindung_;
    SystemProxy proxy_;
    Volltunnel tunnel_;
    Erhebung erhebung_;
    Berichte berichte_;
    Anzeige anzeige_;
    Lage lageIntern_;
    Lage uebergebeneLage_;
    Schalterstellungen schalterIntern_;
    std::optional<Antwort> letzteAntwort_; // valid only in the tick that fetched it
    bool beweisMisslang_ = false;          // and nothing has changed since
    std::string gezeigteBelegung_;
    std::set<std::string> letzteProxyfehler_; // told once, although each tick tries again
    /// Up to this one, 12 s after the start, tools that an earlier run had begun may do their work: their
    /// limit is 10 s.
    static constexpr std::int64_t fruehereTakte = 5;
    std::int64_t tick_ = 0;
    bool aufgeraeumt_ = false;

    std::atomic<bool> blickWartet_ = false; // any queue
    std::atomic<bool> endet_ = false;       // any queue

    std::uint64_t rotation_ = 0; // main queue

    Zeitgeber anzeigetakt_;
    Zeitgeber takt_;
};

} // namespace mobilsteg
