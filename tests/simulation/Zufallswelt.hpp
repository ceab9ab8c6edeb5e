#pragma once

#include "tests/hilfe/KabelWelt.hpp"

#include <random>

namespace mobilsteg {

/// The controller's world with faults: every call of a port may fail, hang, be cut off or come late; phones
/// and forwards come and go, the user clicks, and the process is killed at any call and starts again on what
/// it left. All of it, the order of the queues included, follows from the seed.
class Zufallswelt final : public KabelWelt {
public:
    explicit Zufallswelt(std::uint64_t samen);

    /// Runs for that many ticks, over as many lives of the process as it takes, then without faults to the
    /// end. The first broken invariant ends it at once.
    void lebe(int ticks);

    std::map<std::string, int> zaehler; ///< what happened how often
    std::string verstoss;               ///< the broken invariant; empty: none
    bool erzaehlt = false;              ///< prints what happens
    /// Changes the answers that come through the phone's proxy, or from the phone itself; may be empty.
    std::function<void(bool durchProxy, std::optional<HttpErgebnis>&)> verfaelsche;

private:
    // The ports, with their faults.
    Ergebnis werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                      double sekunden) override;
    std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override;
    bool proxyGruesst() override;
    std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override;
    void portaufruf(const std::string& was);

    // What happens in the world, and what the user does.
    void ereignis();
    void klicke();
    void stecke(std::vector<Modellhandy> neue);
    void setzeEigenenProxy(const std::string& dienst);
    [[nodiscard]] Modellhandy neuesHandy(const std::string& serial);

    // The process's lives.
    void starteProzess();
    void beendeProzess(bool inOrdnung);
    void laufe(Dauer dauer);

    // The invariants.
    void pruefe(bool haelt, const std::string& invariante);
    void pruefeTick();
    void pruefeNachAuftrag();
    void pruefeEnde();
    [[nodiscard]] bool wegGueltig() const;
    [[nodiscard]] bool unser(const std::string& dienst) const;
    [[nodiscard]] bool proxyAn() const { return unser("Wi-Fi") || unser("USB LAN"); }

    [[nodiscard]] std::size_t waehle(std::size_t aus) { return zufall_() % aus; }
    [[nodiscard]] bool wuerfel(std::size_t prozent) { return waehle(100) < prozent; }
    [[nodiscard]] Dauer dauer(std::size_t bisMs) { return std::chrono::milliseconds(waehle(bisMs)); }
    void erzaehle(const std::string& was);

    std::mt19937_64 zufall_;
    std::size_t stoerungsrate_; ///< in per cent of the port calls
    int bisTod_ = 0;            ///< port calls until the process dies; 0: it does not; -1: it is dead
    Zeitgeber ereignisse_;
    bool endet_ = false; ///< the clean-up is under way

    int ticksOhneWeg_ = 0, ticksOhneBeweis_ = 0, ticksOhneStoerung_ = 0, ticksOhneProxy_ = 0;
    bool marke_ = false;     ///< the helper's lay there when the last tick ended
    std::string phase_;      ///< of the last document
    bool nachTick_ = false;  ///< the document is this tick's and nothing happened since
    int offeneKlicks_ = 0;   ///< whose work on the work queue is still to come
    Dauer bewiesenBis_{-1};  ///< an exit address came through the phone, and no tick lost the way until then
    std::int64_t bytes_ = 0; ///< what the phone has moved for us
    std::optional<std::int64_t> gemeldet_; ///< and has told in this tick
};

} // namespace mobilsteg
