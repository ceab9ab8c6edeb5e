#pragma once

#include "app/Dienste.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"
#include "tests/simulation/Invarianten.hpp"

#include <array>
#include <random>

namespace mobilsteg {

using namespace std::chrono_literals;

/// The controller's world with faults: every call of a port may fail, hang, be cut off or come late; phones
/// and forwards come and go, the user clicks, and the process is killed at any call. Its watchman, who may be
/// killed, too, or its next start, or both at once meet what it left, and tools that it had begun. All of it,
/// the order of the queues included, follows from the seed.
class Zufallswelt final : public Invarianten {
public:
    explicit Zufallswelt(std::uint64_t samen)
        : Invarianten(samen), zufall_(samen * 0x9E3779B97F4A7C15U + 1),
          stoerungsrate_(std::array{0U, 1U, 5U, 25U}[samen % 4]) {
        buendelkennung = wuerfel(50) ? "de.mobilsteg.bordlotse" : "de.mobilsteg.vpnlotse";
        einstellungen.werte["volltunnel.erklaert"] = true;
        einstellungen.vorAenderung = [this] { portaufruf("Einstellung"); };
        meldetGeraete_ = wuerfel(75);
        handys = {neuesHandy("R5CT1")};
    }
    ~Zufallswelt() override { welt.beende(); }

    /// Runs for a hundred ticks, over as many lives of the process as it takes, then without faults to the
    /// end. The first broken invariant ends it at once.
    void lebe() {
        constexpr int ticks = 100;
        ereignisse_ = welt.schlange("ereignisse").wiederhole(350ms, 700ms, [this] { ereignis(); });
        while (zaehler["Ticks"] < ticks && verstoss.empty()) {
            bisTod_ = wuerfel(70) ? 1 + static_cast<int>(waehle(1 + waehle(600))) : 0;
            starteProzess();
            const int bis = std::min(zaehler["Ticks"] + 1 + static_cast<int>(waehle(60)), ticks);
            while (kabel && zaehler["Ticks"] < bis && verstoss.empty())
                laufe(3s);
            if (kabel)
                beendeInOrdnung();
            laufe(dauer(wuerfel(50) ? 1000 : 20000));
        }
        if (verstoss.empty())
            lebeInRuheZuEnde();
    }

private:
    // --- the process's lives -----------------------------------------------------------------------------

    /// The last life begins with faults and goes on without. Of what it met it may keep nothing: with the
    /// next phone it drives, and in the end, its phone there or gone, nothing is left.
    void lebeInRuheZuEnde() {
        bisTod_ = 0;
        starteProzess();
        laufe(dauer(60000));
        ereignisse_.reset();
        stoerungsrate_ = 0;
        networksetupFehler.clear();
        forwardFehler.clear();
        belegtePorts.clear();
        fremdesHandy = false;
        einstellungen.aufDerPlatte.reset();
        tunnel = {};
        stecke({});
        laufe(150s);
        stecke({Modellhandy{}});
        laufe(60s);
        const auto& z = zustand();
        pruefe(z.phase == Phase::Art::faehrt && proxyAn() == z.proxyAutomatisch &&
                   z.volltunnelAn == z.volltunnelLaeuft && helfer == (z.volltunnelAn ? 1 : 0),
               "nach den Störungen fährt es wieder: " + z.phase.text());
        if (wuerfel(50))
            stecke({});
        laufe(60s);
        beendeInOrdnung();
        laufe(5s);
        const auto& werte = einstellungen.werte;
        pruefe(!werte.contains("proxy.dienst") && !werte.contains("proxy.ungewiss"),
               "am Ende ist kein Proxy gemerkt");
        pruefeNichtsUebrig("am Ende");
    }

    void starteProzess() {
        geschieht("Starts");
        leben_ = {};
        haupt.async([this] {
            while (Laufsperre::inhaber(heim_)) // a watchman cleans up
                welt.uhr().schlafe(50ms);
            (void)sperre_.emplace(heim_).nimm();
            baue();
            kabel->start();
        });
        pruefe(welt.laufeBis([this] { return kabel || tot_; }, 400s), "kein Wächter hält den Start auf");
        laufe({});
    }

    void beendeInOrdnung() {
        geschieht("Enden in Ordnung");
        endet_ = true;
        const int stoerungen = zaehler["Störungen"];
        bool fertig = false;
        welt.schlange("signal").async([&] {
            q->sync([this] { kabel->aufraeumen(); });
            fertig = true;
        });
        // A dialog may stand open, and every tool may hang to its limit.
        pruefe(welt.laufeBis([&] { return fertig || tot_; }, 400s), "das Aufräumen endet");
        pruefe(!fertig || zaehler["Störungen"] > stoerungen || !proxyAn(), "am Ende ist kein Proxy gesetzt");
        begrabeProzess();
    }

    void begrabeProzess() {
        const bool ohneAbschied = tot_ && kabel; // else in order, or it was the watchman
        stuerzeAb();
        sperre_.reset();
        pruefeMerkzettel();
        bisTod_ = ohneAbschied && wuerfel(30) ? 1 + static_cast<int>(waehle(60)) : 0;
        tot_ = endet_ = false;
        // The helper notices that its program is gone, or does not; one that is only coming up always does.
        if (helfer > 0 && !tunnel.taub && (!existiert(stoppPfad() + ".laeuft") || wuerfel(40)))
            helferBautZurueck("");
        if (ohneAbschied && wuerfel(70))
            waechter_.async([this, tod = welt.jetzt()] { raeumeAlsWaechterAuf(tod); });
    }

    void raeumeAlsWaechterAuf(Dauer tod) {
        welt.uhr().schlafe(dauer(300));
        Laufsperre sperre(heim_);
        if (!sperre.nimmNach(0))
            return geschieht("Wächter", "der nächste Start war schneller");
        const int stoerungen = zaehler["Störungen"];
        Umfeld umfeld({heim_, ordner.pfad() + "/wurzel"},
                      {buendelkennung, ordner.pfad() + "/Resources", {}, {}},
                      {{std::shared_ptr<void>(), &einstellungen}, ""},
                      [this](const auto&... worte) { return werkzeug(worte...); });
        const bool alles = raeumeNachTodAuf(umfeld, welt.uhr());
        geschieht("Wächter", alles ? "alles" : "nicht alles");
        if (zaehler["Störungen"] > stoerungen || (!alles && (helfer > 0 || einstellungen.aufDerPlatte)))
            return;
        welt.uhr().schlafe(tod + 1500ms - welt.jetzt()); // until all tools have ended
        pruefe(alles, "ohne Störung bringt der Wächter alles fort");
        pruefeNichtsUebrig("nach dem Wächter");
    }

    void laufe(Dauer d) {
        if (!verstoss.empty())
            return;
        welt.laufe(d);
        if (tot_)
            return begrabeProzess();
        pruefe(welt.verklemmte() == 0, "keine Schlange wartet im Kreis");
        pruefe(abgebrochen.empty(), "kein Programmierfehler");
    }

    // --- the ports, with their faults --------------------------------------------------------------------

    struct Stoerung {
        const char* name = ""; ///< empty: none
        bool wirkt = true;     ///< the work is done, whatever the answer
        double wartet = 0;     ///< with the answer, in parts of the call's time limit
        int status = 0;        ///< of the tool, instead of its own; a request gets no answer
        std::string (*antwort)(const std::string&) = [](const std::string& ganze) { return ganze; };
    };

    /// Counts down to the process's death.
    void portaufruf(const std::string& was) {
        if (bisTod_ == 0 || --bisTod_ > 0)
            return;
        geschieht("Tode", was);
        tot_ = true;
        welt.stirb();
    }

    Stoerung stoere(const std::string& aufruf) {
        const auto halb = [](const std::string& ganze) { return ganze.substr(0, ganze.size() / 2); };
        const auto unsinn = [](const std::string&) {
            return std::string("\uFFFD(1) \n(Hardware Port: , Device: )\tdevice\n{[\"");
        };
        const Stoerung stoerungen[] = {
            {"beginnt nicht", false, 0, -1, halb},
            {"hängt", false, 1, 15, halb},
            {"hängt nach getaner Arbeit", true, 1, 15, halb},
            {"bricht ab", true, 0, 0, halb},
            {"antwortet Unsinn", true, 0, 0, unsinn},
            {"kommt spät", true, 0.98},
            {"wird getötet", false, 0, 9, halb},
            {"wird nach getaner Arbeit getötet", true, 0, 9, halb},
        };
        portaufruf(aufruf);
        welt.uhr().schlafe(dauer(40)); // so that the other queues get between
        if (!wuerfel(stoerungsrate_))
            return {};
        const auto& stoerung = stoerungen[waehle(std::size(stoerungen))];
        geschieht("Störungen", aufruf + " " + stoerung.name);
        return stoerung;
    }

    Ergebnis werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                      double sekunden) override {
        aufrufe.clear();
        const auto name = programm.substr(programm.rfind('/') + 1); // its folder is another one in each run
        const auto aufruf = name + " " + verbunden(argumente, " ");
        const auto stoerung = [&] {
            try {
                return stoere(aufruf);
            } catch (...) {
                // The process was killed, and the tool may go on without it. One that switches a proxy off
                // leaves nothing; if it is the next run's, so be it: that one does not look again either when
                // the user does it.
                if (wuerfel(50) && !aufruf.ends_with(" off"))
                    waisen_.push_back(
                        waisenhaus_.wiederhole(dauer(name == "networksetup" ? 10000 : 1500), 24h, [=, this] {
                            geschieht("Waisen", aufruf);
                            (void)KabelWelt::werkzeug(programm, argumente, sekunden);
                        }));
                throw;
            }
        }();
        if (aufruf.ends_with(" off"))
            pruefe(!socksAn[argumente[1]] || unser(argumente[1]), "der Proxy des Benutzers bleibt an");
        const bool verweigert = !networksetupFehler.empty() && aufruf.starts_with("networksetup -set");
        zaehler["Störungen"] += verweigert;
        if (verweigert || (*stoerung.name != 0 && name == "networksetup"))
            ticksOhneStoerung_ = 0;
        auto ergebnis = stoerung.wirkt ? KabelWelt::werkzeug(programm, argumente, sekunden) : Ergebnis{};
        welt.uhr().schlafe(std::chrono::milliseconds(static_cast<int>(1000 * stoerung.wartet * sekunden)));
        if (stoerung.status != 0)
            ergebnis.status = stoerung.status;
        ergebnis.ausgabe = stoerung.antwort(ergebnis.ausgabe);
        portaufruf(aufruf + " (getan)");
        return ergebnis;
    }

    std::optional<HttpErgebnis> hole(const HttpAnfrage& anfrage) override {
        const auto stoerung = stoere("Anfrage an " + anfrage.url);
        leben_.gemeldet.reset();
        bytes_ += static_cast<std::int64_t>(waehle(2'000'000));
        for (auto& handy : handys)
            handy.status = R"({"paths":[{"iface":"wlan0","healthy":false,"rtt_ms":90}],"guests":[{"IP":)"
                           R"("kabel:Testmac","BytesUp":100,"BytesDown":)" +
                           std::to_string(bytes_) + "}]}";
        auto ergebnis = stoerung.wirkt ? KabelWelt::hole(anfrage) : std::nullopt;
        welt.uhr().schlafe(std::chrono::milliseconds(static_cast<int>(3000 * stoerung.wartet)));
        if (!ergebnis || stoerung.status != 0)
            return std::nullopt;
        ergebnis->koerper = stoerung.antwort(ergebnis->koerper);
        if (anfrage.weg == HttpAnfrage::Weg::durchProxy)
            leben_.bewiesenBis = Dauer::max();
        else if (ergebnis->koerper.ends_with("]}}")) // whole, and with a status
            leben_.gemeldet = bytes_ + 100;
        return ergebnis;
    }

    bool proxyGruesst() override {
        const bool gestoert = *stoere("Gruß").name != 0;
        return !gestoert && KabelWelt::proxyGruesst();
    }

    std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override {
        portaufruf("Passwortdialog");
        // Decided in the tick before, it may come at the moment when the next one ends.
        pruefe(welt.jetzt() <= leben_.bewiesenBis, "kein Start ohne bewiesenen Weg");
        pruefe(endet_ || !existiert(stoppPfad()), "beim Start liegt keine alte Bitte um Stopp");
        geschieht("Tunnelstarts");
        return KabelWelt::fuehreAus(quelle);
    }

    // --- what happens in the world, and what the user does -----------------------------------------------

    Modellhandy neuesHandy(const std::string& serial) {
        return {.serial = serial,
                .zustand = wuerfel(80) ? "device" : eines({"unauthorized", "offline"}),
                .teilt = wuerfel(80),
                .entscheid = wuerfel(70) ? "erlaubt" : eines({"wartet", "abgelehnt"}),
                .austritt = wuerfel(10) ? std::nullopt : Modellhandy{}.austritt};
    }

    void ereignis() {
        if (!wuerfel(20))
            return;
        const bool an = wuerfel(60);
        const Skriptfehler abbruch{false, -128, "Abgebrochen."};
        const std::function<void()> moegliche[] = {
            [&] { stecke(std::vector(1, neuesHandy(wuerfel(70) ? "R5CT1" : "ZY22"))); },
            [&] { stecke({}); },
            [&] { handys.size() == 1 ? handys.push_back(neuesHandy("ZWEITES")) : void(); },
            [&] { // whoever works on this machine adds one
                handys.insert(handys.begin(), neuesHandy("192.0.2.5:5555"));
                handys[0].amKabel = false;
            },
            [&] { forwards.clear(); }, // the adb server was started anew
            [&] {
                belegtePorts = {eines({0, 1080, 8080, 18080, 18081})};
            },
            [&] { fremdesHandy = true, forwards.erase(socksPort), belegtePorts = std::set{socksPort}; },
            [&] { handys.empty() || (handys[0].gruesst = !handys[0].gruesst); },
            [&] { schnittstelle = "en" + std::to_string(waehle(8)); },
            [&] { schnittstelle.clear(); },
            [&] { // the disk is full, or no longer
                auto& platte = einstellungen.aufDerPlatte;
                platte = platte ? std::nullopt : std::optional(einstellungen.werte);
            },
            [&] { helfer > 0 && helferleben.back() ? helferBautZurueck("kein Netz") : void(); },
            [&] { welt.stelleWanduhr(dauer(20'000'000) - 10000s); },
            [&] { forwardFehler = wuerfel(30) ? "adb: error: closed" : ""; },
            [&] { networksetupFehler = wuerfel(30) ? "** Error: Command requires admin privileges." : ""; },
            [&] { tunnel = {dauer(20000), {}, dauer(50000), {}, wuerfel(10), false, dauer(9000)}; },
            [&] { tunnel.zurueckgebaut = "kein Netz"; },
            [&] { tunnel.skriptfehler = abbruch; },
            [&] { setzeEigenenProxy(wuerfel(70) ? "Wi-Fi" : "USB LAN"); },
            [&] { klicke([an](Kabel& k) { k.setzeProxyAutomatisch(an); }); },
            [&] { klicke([an](Kabel& k) { k.setzeExperte(an); }); },
            [&] { klicke([an](Kabel& k) { k.setzeVolltunnelAn(an); }); },
            [&] { klicke([an](Kabel& k) { k.setzeVpnDurch(an); }); },
            [&] { klicke([an](Kabel& k) { k.setzeNurVPN(an); }); },
            [&] { klicke([](Kabel& k) { k.proxyUmschalten(); }); },
            [&] { klicke([](Kabel& k) { k.profilUebernehmen(); }); },
            [&] { meldeGeraete(1); }, // also one of a change that was long ago, or of none
            [&] { meldeGeraete(200); },
        };
        // Another phone comes as often as eight of the others.
        const auto was = std::max<std::size_t>(waehle(std::size(moegliche) + 7), 7) - 7;
        geschieht("Ereignisse", std::to_string(was));
        moegliche[was]();
        if (wegGueltig()) // between two ticks, too
            ticksOhneWeg_ = 0;
        std::erase_if(belegtePorts, [this](int port) { return forwards.contains(port); });
    }

    void stecke(std::vector<Modellhandy> neue) {
        handys = std::move(neue);
        std::erase_if(forwards, [this](const auto& forward) { return bereites(forward.second) == nullptr; });
        if (wegGueltig())
            ticksOhneWeg_ = 0;
        if (wuerfel(60))
            meldeGeraete(1);
    }

    /// As adb's server reports them, where the program has a connection to it.
    void meldeGeraete(int wieOft) {
        geschieht("Meldungen von adb");
        for (int i = 0; i < wieOft && kabel && meldetGeraete_; ++i)
            kabel->siehNach();
    }

    /// On services where the program has none and may have none: on its own the user leaves the proxy alone.
    void setzeEigenenProxy(const std::string& dienst) {
        const auto ungewiss = einstellungen.text("proxy.ungewiss").value_or("");
        if (einstellungen.aufDerPlatte || unser(dienst) || einstellungen.text("proxy.dienst") == dienst ||
            ungewiss.find(dienst) != ungewiss.npos)
            return;
        geschieht("Eigene Proxys", dienst);
        socksAn[dienst] = true;
        socksZiel[dienst] = {"192.0.2.9", 1080};
    }

    void klicke(const std::function<void(Kabel&)>& knopf) {
        haupt.async([this, knopf] {
            if (!kabel)
                return;
            ++leben_.offeneKlicks;
            knopf(*kabel);
            q->async([this] {
                --leben_.offeneKlicks;
                leben_.nachTick = false;
            });
        });
    }

    std::mt19937_64 zufall_;
    std::size_t stoerungsrate_; ///< in per cent of the port calls
    int bisTod_ = 0;            ///< port calls until the process dies; 0: it does not
    bool tot_ = false;          ///< it has died, and is not buried yet
    bool meldetGeraete_;        ///< else the clock alone has to do
    Zeitgeber ereignisse_;
    const std::string heim_ = ordner.pfad() + "/heim";
    std::optional<Laufsperre> sperre_; ///< the process's
    Schlange& waechter_ = welt.schlange("waechter");
    Schlange& waisenhaus_ = welt.schlange("waisenhaus");
    std::vector<Zeitgeber> waisen_; ///< tools that have outlived their process
    std::int64_t bytes_ = 0;        ///< what the phone has moved for us

    [[nodiscard]] std::size_t waehle(std::size_t aus) { return zufall_() % aus; }
    [[nodiscard]] bool wuerfel(std::size_t prozent) { return waehle(100) < prozent; }
    template <typename Wert>
    [[nodiscard]] Wert eines(std::initializer_list<Wert> aus) {
        return aus.begin()[waehle(aus.size())];
    }
    [[nodiscard]] Dauer dauer(std::size_t bisMs) { return std::chrono::milliseconds(waehle(bisMs)); }
};

} // namespace mobilsteg
