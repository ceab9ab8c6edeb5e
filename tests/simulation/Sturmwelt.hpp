#pragma once

#include "tests/hilfe/KabelWelt.hpp"

#include <array>
#include <cstdint>
#include <deque>
#include <random>
#include <string>

namespace mobilsteg {

/// A deliberate lie of the world, by which one promise is broken: the proof that its check can fail.
enum class Luege {
    keine,
    proxyGehtNichtAus, ///< networksetup says it did
    forwardBleibt,     ///< adb says it removed it
    helferTaub,        ///< lives on whatever it is told
    zweiHelfer,        ///< the script starts two
    beweisOhneHandy,   ///< somebody answers as the phone would
    vergesslich,       ///< a stored setting is gone
    doppelteZeile,     ///< the log repeats itself
    altesDokument,     ///< somebody else writes the state document
    verklemmt,         ///< the password dialog waits for the start that waits for it
    niemandDraussen,   ///< no address of the outside ever comes through the phone
    alteAnzeige,       ///< a value of the phone's is shown again after it was taken back
};

/// The controller's world under stress: everything in it may fail, hang, lie or come late, things come and
/// go, the user clicks, and the process dies at any call and starts again on what it left. All of it, the
/// order of the queues included, follows from the seed. The first broken promise ends it.
class Sturmwelt final : public KabelWelt {
public:
    explicit Sturmwelt(std::uint64_t samen, Luege luege = Luege::keine);

    /// Lives for that many ticks, over as many lives of the process as it takes, and ends in order.
    void lebe(int ticks);

    struct Zaehler {
        int ticks = 0, tode = 0, starts = 0, tunnel = 0, fahrten = 0, stoerungen = 0;
    };
    [[nodiscard]] const Zaehler& zaehler() const { return zaehler_; }
    [[nodiscard]] const std::string& verstoss() const { return verstoss_; } ///< empty: every promise was kept
    [[nodiscard]] std::string geschichte() const; ///< the end of the story, a line each

    /// No faults, no fate, no clicks from now on.
    void beruhige();

private:
    // The ports, with their faults (Sturmwelt.cpp).
    Ergebnis werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                      double sekunden) override;
    std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override;
    std::optional<Skriptfehler> fuehreSkriptAus(const std::string& quelle) override;
    int beantworte(const Frage& frage) override;
    void brichAb(const std::string& warum) override;
    Ergebnis stoere(const std::string& programm, const std::vector<std::string>& argumente, double sekunden);
    void portaufruf(const std::string& was);

    // What happens in the world, and what the user does (Schicksal.cpp).
    void schlageZu();
    void aendereDieWelt();
    void stecke(std::vector<Modellhandy> neue);
    void vergissForwards();
    void klicke();
    void setzt(const std::string& schluessel, SpeicherEinstellungen::Wert wert);
    [[nodiscard]] Modellhandy neuesHandy();

    // The process's lives (Sturmwelt.cpp).
    void starteProzess();
    void beendeProzess(bool inOrdnung);
    void laufe(Dauer dauer);

    // The promises (Versprechen.cpp). Each says what is broken.
    void verletzt(const std::string& versprechen);
    void amTickende();
    void nachAuftrag();
    void amEndeEinesLebens();
    void andereWegeSindAufgeschrieben();
    void nachUngestoertemAufraeumen();
    void nachDemSturm();
    void amEnde();
    void ohneVerbindungKeineWerte();
    void tunnelNieLaengerAlsZweiTicksOhneWeg();
    void faehrtNurAufBewiesenemWeg(const std::string& phase, const std::string& austritt);
    void proxyNieLaengerAlsZweiTicksOhneWeg();
    void standGleichtZustand();
    void gespeichertIstWasGesetztWurde();
    void keineZweiGleichenZeilen();
    [[nodiscard]] bool wegGueltig() const;

    [[nodiscard]] bool wuerfel(double wahrscheinlichkeit);
    [[nodiscard]] std::size_t waehle(std::size_t aus) { return zufall_() % aus; }
    [[nodiscard]] Dauer dauer(double hoechstensSekunden);
    void erzaehle(const std::string& was);

    std::mt19937_64 zufall_;
    Luege luege_;
    double rauheit_; ///< how likely a port call is disturbed
    bool ruhig_ = false;
    int bisTod_ = 0;                         ///< port calls until the process dies; 0: it does not
    std::size_t lebensbeginn_ = 0;           ///< where this life's log begins
    std::map<int, std::string> vorgefunden_; ///< the forwards that stood when this life began

    Zaehler zaehler_;
    std::string verstoss_;
    std::deque<std::string> geschichte_;
    Zeitgeber schicksal_;

    int ticksOhneWeg_ = -1;     ///< since the way was last good; -1: it is
    int ticksOhneBeweis_ = 0;   ///< without an exit address, though a phone may share and allow
    int ticksOhneStoerung_ = 0; ///< of networksetup
    bool marke_ = false;        ///< the helper's lay there when the last tick ended
    bool nachTick_ = false;     ///< the document is this tick's and nothing happened since
    bool endet_ = false;        ///< the clean-up is under way
    int unmoeglich_ = -1;  ///< the faults so far, when the phone's last answer was impossible; -1: it was not
    int offeneKlicks_ = 0; ///< whose work on the work queue is still to come
    std::string dokumentPhase_, dokumentAustritt_;
    bool dokumentProxy_ = false;
    Dauer bewiesenBis_{-1}; ///< an exit address came through the phone, and no tick lost the way until then
    std::map<std::string, SpeicherEinstellungen::Wert> gesetzt_;
};

} // namespace mobilsteg
