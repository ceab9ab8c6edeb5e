#pragma once

#include "plattform/Einstellungen.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// One entry of the Mac's list of network services.
struct Netzwerkdienst {
    std::string name;
    bool eingeschaltet = false;
    std::string anschluss; ///< the list's lines about its hardware port
};

/// The SOCKS proxy of one of the Mac's network services, switched through the Mac's own tools. What was
/// switched on is kept in the settings, so that a later run can take it back after a crash. Work queue only;
/// every operation runs tools and blocks for their time, except where it says otherwise.
class SystemProxy {
public:
    SystemProxy(Laeufer laeufer, Orte orte, Einstellungen& einstellungen);

    /// The network service through which the Mac reaches the internet now; absent when none can be told.
    [[nodiscard]] std::optional<std::string> dienst() const;

    enum class Ausgang { gesetzt, keinDienst, misslungen };
    struct Setzung {
        Ausgang ausgang;
        std::string text; ///< the service when set, the tool's reason when failed
    };

    /// Finds the service of the default route and switches its proxy to the phone's forward, once it is noted
    /// what has to be taken back.
    [[nodiscard]] Setzung setze();

    struct Wegnahme {
        std::string dienst;               ///< on which it was tried
        std::optional<std::string> grund; ///< why it failed; absent: the proxy is off
    };

    /// Takes the proxy away if this run set it or an earlier one left it. After a failure the next call tries
    /// again. Absent: there was nothing to take away.
    [[nodiscard]] std::optional<Wegnahme> nimmWeg();

    /// Settles the services whose proxy may be on without being remembered as set, because a switch was cut
    /// short by the tool's failure or by this program's death: one that points at us is switched off, others
    /// are forgotten. Returns those that failed, a vanished service included. Runs no tool when nothing is
    /// uncertain. Not `endgueltig`: they stay uncertain, because a tool that an earlier run had begun may
    /// end its work only now.
    [[nodiscard]] std::vector<Wegnahme> klaereUngewisse(bool endgueltig = true);

    /// Whether an earlier run left such services that are not settled.
    [[nodiscard]] bool hatFruehere() const { return !fruehere_.empty(); }

    /// Why a tool failed: `fehlertext` or `scheitern`.
    using Fehlerworte = std::string (*)(const Ergebnis&, const char* werkzeug);

    /// Switches the service's proxy off and forgets that it was set; the address stays configured.
    /// Absent: done; else the reason for the failure.
    [[nodiscard]] std::optional<std::string> entfernen(const std::string& dienst,
                                                       Fehlerworte worte = fehlertext);

    enum class Ziel { wir, andere, unbekannt, keinDienst };

    /// Where the service's SOCKS proxy points. `unbekannt`: the tool does not tell; `keinDienst`: there is no
    /// such service any more.
    [[nodiscard]] Ziel ziel(const std::string& dienst) const;

    /// Where it points, for people: "10.0.0.5:1080"; empty: nowhere, it is off. Absent: the tool does not
    /// tell.
    [[nodiscard]] std::optional<std::string> adresse(const std::string& dienst) const;

    /// All services of the Mac, the disabled ones too. Absent: the tool does not tell; then `grund` says why.
    [[nodiscard]] std::optional<std::vector<Netzwerkdienst>> dienste(std::string& grund) const;

    /// Forgets every uncertain service, after each was looked at. Does not block.
    void vergissUngewisse() { ungewisse_.schreibe({}); }

    /// Whether this run has set the proxy. Does not block.
    [[nodiscard]] bool gesetzt() const { return proxyGesetztIntern_; }

    /// The service on which this run last set the proxy; stays after it was taken away. Does not block.
    [[nodiscard]] const std::optional<std::string>& gesetzterDienst() const { return dienst_; }

    /// The service on which an earlier run (or this one) left the proxy on. Does not block.
    [[nodiscard]] std::optional<std::string> gemerkterDienst() const;

    // The reading of the tools' texts. Pure.

    /// The interface in the answer of `route -n get default`; absent without a default route.
    [[nodiscard]] static std::optional<std::string> schnittstelle(std::string_view routeAusgabe);
    [[nodiscard]] static std::vector<Netzwerkdienst> liesDienste(std::string_view reihenfolge);
    /// The service on that interface, else the first enabled one.
    [[nodiscard]] static std::optional<std::string>
    dienstFuer(const std::optional<std::string>& schnittstelle, const std::vector<Netzwerkdienst>& dienste);
    /// The address in an answer of `-getsocksfirewallproxy`; empty: switched off. Absent: half an answer.
    [[nodiscard]] static std::optional<std::string> liesAdresse(std::string_view ausgabe);
    /// Why a tool failed, in its own words.
    [[nodiscard]] static std::string fehlertext(const Ergebnis& ergebnis,
                                                const char* werkzeug = "networksetup");
    /// The same, but of one that missed its limit only that: whatever it said was cut off.
    [[nodiscard]] static std::string scheitern(const Ergebnis& ergebnis,
                                               const char* werkzeug = "networksetup");

private:
    [[nodiscard]] Ergebnis networksetup(const std::vector<std::string>& argumente, double sekunden) const;
    [[nodiscard]] std::optional<std::string> setzen(const std::string& dienst);
    [[nodiscard]] Ergebnis schalteAus(const std::string& dienst);
    [[nodiscard]] std::optional<std::string> klaere(const std::string& dienst, Ziel wohin, bool endgueltig);
    void vergiss(const std::string& dienst);
    void schalteUmbenanntenAus();

    Laeufer laeufer_;
    Orte orte_;
    Einstellungen& einstellungen_;
    Ruecknahmen ungewisse_; ///< services whose proxy may be on beside the remembered one's
    /// Noted by an earlier run, of which a tool may do its work only now: they stay so until they are
    /// settled.
    std::set<std::string> fruehere_ = ungewisse_.lies();
    bool proxyGesetztIntern_ = false;
    std::optional<std::string> dienst_;
};

} // namespace mobilsteg
