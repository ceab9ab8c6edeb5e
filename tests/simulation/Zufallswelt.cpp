// What happens in the world: faults, events, clicks, and the lives of the process.

#include "tests/simulation/Zufallswelt.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace mobilsteg {

using namespace std::chrono_literals;

Zufallswelt::Zufallswelt(std::uint64_t samen)
    : KabelWelt(samen), zufall_(samen * 0x9E3779B97F4A7C15U + 1),
      stoerungsrate_(std::array{0U, 1U, 5U, 25U}[samen % 4]) {
    buendelkennung = wuerfel(50) ? "de.mobilsteg.bordlotse" : "de.mobilsteg.vpnlotse";
    einstellungen.werte["volltunnel.erklaert"] = true;
    einstellungen.vorAenderung = [this] { portaufruf("Einstellung"); };
    standdienst.nachDokument = [this] { pruefeTick(); };
    welt.beobachte([this] { pruefeNachAuftrag(); });
    handys = {neuesHandy("R5CT1")};
}

void Zufallswelt::erzaehle(const std::string& was) {
    if (erzaehlt)
        std::printf("%9.3f s  %s\n", std::chrono::duration<double>(welt.jetzt()).count(), was.c_str());
}

// --- the process's lives ---------------------------------------------------------------------------------

void Zufallswelt::lebe(int ticks) {
    ereignisse_ = welt.schlange("ereignisse").wiederhole(350ms, 700ms, [this] { ereignis(); });
    while (zaehler["Ticks"] < ticks && verstoss.empty()) {
        bisTod_ = wuerfel(70) ? 1 + static_cast<int>(waehle(600)) : 0;
        starteProzess();
        const int bis = std::min(zaehler["Ticks"] + 1 + static_cast<int>(waehle(60)), ticks);
        while (kabel && zaehler["Ticks"] < bis && verstoss.empty())
            laufe(3s);
        if (kabel)
            beendeProzess(true);
        laufe(dauer(20000));
    }
    if (!verstoss.empty())
        return;
    // The last life begins with faults and goes on without. Of what it met it may keep nothing: with the next
    // phone it drives, and in the end, its phone there or gone, nothing is left.
    starteProzess();
    laufe(dauer(60000));
    ereignisse_.reset();
    stoerungsrate_ = 0;
    networksetupFehler.clear();
    forwardFehler.clear();
    belegtePorts.clear();
    fremdesHandy = false;
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
    beendeProzess(true);
    laufe(5s);
    pruefeEnde();
}

void Zufallswelt::starteProzess() {
    ++zaehler["Starts"];
    erzaehle("das Programm startet");
    nachTick_ = false;
    ticksOhneBeweis_ = 0;
    gemeldet_.reset();
    bewiesenBis_ = Dauer{-1};
    haupt.async([this] {
        baue();
        kabel->start();
    });
    laufe({});
}

void Zufallswelt::beendeProzess(bool inOrdnung) {
    if (inOrdnung) {
        erzaehle("das Programm endet");
        endet_ = true;
        const int stoerungen = zaehler["Störungen"];
        bool fertig = false;
        welt.schlange("signal").async([&] {
            q->sync([this] { kabel->aufraeumen(); });
            fertig = true;
        });
        // A dialog may stand open, and every tool may hang to its limit.
        pruefe(welt.laufeBis([&] { return fertig || bisTod_ == -1; }, 400s), "das Aufräumen endet");
        pruefe(!fertig || zaehler["Störungen"] > stoerungen || !proxyAn(), "am Ende ist kein Proxy gesetzt");
    }
    stuerzeAb();
    bisTod_ = offeneKlicks_ = 0;
    endet_ = false;
    // The helper notices that its program is gone, or does not; one that is only coming up always does.
    if (helfer > 0 && !tunnel.taub && (!existiert(stoppPfad() + ".laeuft") || wuerfel(70))) {
        erzaehle("der Helfer geht");
        helferBautZurueck("");
    }
}

void Zufallswelt::laufe(Dauer d) {
    if (!verstoss.empty())
        return;
    welt.laufe(d);
    if (bisTod_ == -1)
        return beendeProzess(false);
    pruefe(welt.verklemmte() == 0, "keine Schlange wartet im Kreis");
    pruefe(abgebrochen.empty(), "kein Programmierfehler");
}

// --- the ports -------------------------------------------------------------------------------------------

/// Counts down to the process's death.
void Zufallswelt::portaufruf(const std::string& was) {
    if (bisTod_ <= 0 || --bisTod_ > 0)
        return;
    erzaehle("das Programm stirbt bei: " + was);
    ++zaehler["Tode"];
    bisTod_ = -1;
    welt.stirb();
}

Ergebnis Zufallswelt::werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                               double sekunden) {
    aufrufe.clear();
    const auto name = programm.substr(programm.rfind('/') + 1); // its folder has another name in each run
    const auto aufruf = name + " " + verbunden(argumente, " ");
    portaufruf(aufruf);
    welt.uhr().schlafe(dauer(30)); // so that the other queues get between
    if (aufruf.ends_with(" off"))
        pruefe(!socksAn[argumente[1]] || unser(argumente[1]), "der Proxy des Benutzers bleibt an");
    const bool gestoert = wuerfel(stoerungsrate_);
    const bool verweigert = !networksetupFehler.empty() && aufruf.starts_with("networksetup -set");
    zaehler["Störungen"] += gestoert || verweigert;
    if (verweigert || (gestoert && name == "networksetup"))
        ticksOhneStoerung_ = 0;
    const auto art = gestoert ? waehle(6) : 6;
    if (gestoert)
        erzaehle("Störung " + std::to_string(art) + ": " + aufruf);
    if (art == 0)
        return {-1, "", "kein Start"};
    if (art <= 2) // it hangs to its limit, and does nothing or its work
        welt.uhr().schlafe(std::chrono::duration_cast<Dauer>(std::chrono::duration<double>(sekunden)));
    auto ergebnis = art == 1 ? Ergebnis{15, "", ""} : KabelWelt::werkzeug(programm, argumente, sekunden);
    if (art == 2)
        ergebnis.status = 15;
    if (art == 2 || art == 3)
        ergebnis.ausgabe.resize(ergebnis.ausgabe.size() / 2);
    if (art == 4) // as `lauf` repairs it
        ergebnis.ausgabe = alsUtf8("\xff\xfe(1) \n(Hardware Port: , Device: )\tdevice\n\"\0");
    if (art == 5)
        welt.uhr().schlafe(4900ms);
    portaufruf(aufruf + " (getan)");
    return ergebnis;
}

std::optional<HttpErgebnis> Zufallswelt::hole(const HttpAnfrage& anfrage) {
    portaufruf("Anfrage");
    welt.uhr().schlafe(dauer(50));
    const bool durchProxy = anfrage.weg == HttpAnfrage::Weg::durchProxy;
    gemeldet_.reset();
    const auto art = wuerfel(stoerungsrate_) ? waehle(5) : 5;
    if (art < 5) {
        ++zaehler["Störungen"];
        erzaehle("Störung " + std::to_string(art) + ": Anfrage an " + anfrage.url);
    }
    if (art <= 1)
        welt.uhr().schlafe(3s);
    bytes_ += static_cast<std::int64_t>(waehle(2'000'000));
    for (auto& handy : handys)
        handy.status = R"({"paths":[{"iface":"wlan0","healthy":false,"rtt_ms":90}],"guests":[{"IP":)"
                       R"("kabel:Testmac","BytesUp":100,"BytesDown":)" +
                       std::to_string(bytes_) + "}]}";
    auto ergebnis = KabelWelt::hole(anfrage);
    if (art == 0 || art == 4)
        ergebnis.reset();
    if (art == 2)
        ergebnis = {500, "kaputt"};
    if (art == 3)
        ergebnis = {200, "{\"app\":\"mobilsteg\",\"zustand\":[[[[\xff"};
    if (verfaelsche)
        verfaelsche(durchProxy, ergebnis);
    if (durchProxy && ergebnis && ergebnis->status == 200)
        bewiesenBis_ = Dauer::max();
    if (!durchProxy && ergebnis && ergebnis->koerper.find("guests") != std::string::npos)
        gemeldet_ = bytes_ + 100;
    return ergebnis;
}

bool Zufallswelt::proxyGruesst() {
    portaufruf("Gruß");
    welt.uhr().schlafe(dauer(50));
    const bool gestoert = wuerfel(stoerungsrate_);
    zaehler["Störungen"] += gestoert;
    return !gestoert && KabelWelt::proxyGruesst();
}

std::optional<Skriptfehler> Zufallswelt::fuehreAus(const std::string& quelle) {
    portaufruf("Passwortdialog");
    // Decided in the tick before, it may come at the moment when the next one ends.
    pruefe(welt.jetzt() <= bewiesenBis_, "kein Start ohne bewiesenen Weg");
    pruefe(endet_ || !existiert(stoppPfad()), "beim Start liegt keine alte Bitte um Stopp");
    ++zaehler["Tunnelstarts"];
    erzaehle("Passwortdialog");
    return KabelWelt::fuehreAus(quelle);
}

// --- what happens in the world, and what the user does ---------------------------------------------------

Modellhandy Zufallswelt::neuesHandy(const std::string& serial) {
    Modellhandy handy;
    handy.serial = serial;
    handy.zustand = wuerfel(80) ? "device" : wuerfel(50) ? "unauthorized" : "offline";
    handy.teilt = wuerfel(80);
    handy.entscheid = wuerfel(70) ? "erlaubt" : wuerfel(50) ? "wartet" : "abgelehnt";
    if (wuerfel(10))
        handy.austritt.reset();
    return handy;
}

void Zufallswelt::ereignis() {
    if (wuerfel(6) && kabel)
        haupt.async([this] { klicke(); });
    if (!wuerfel(15))
        return;
    auto neue = handys;
    if (neue.empty())
        neue.push_back(neuesHandy("R5CT1"));

    const std::function<void()> moegliche[] = {
        [&] { neue.clear(); },
        [&] {
            neue = {neue.front(), neuesHandy("ZWEITES")};
        },
        [&] { neue.front().zustand = wuerfel(70) ? "device" : "unauthorized"; },
        [&] { neue.front().entscheid = neuesHandy("").entscheid; },
        [&] { neue.front().teilt = !neue.front().teilt; },
        [&] { forwards.clear(); }, // the adb server was started anew
        [&] {
            belegtePorts = {std::array{1080, 8080, 18080, 18081}[waehle(4)]};
        },
        [&] { belegtePorts.clear(); },
        [&] { // another program's proxy in the place of a forward that was removed
            fremdesHandy = true;
            forwards.erase(socksPort);
            belegtePorts = {socksPort};
        },
        [&] { neue.front().gruesst = !neue.front().gruesst; },
        [&] {
            schnittstelle = std::array{"", "en0", "en7"}[waehle(3)];
        },
        [&] { helfer > 0 && helferleben.back() ? helferBautZurueck("kein Netz") : void(); },
        [&] { welt.stelleWanduhr(dauer(20'000'000) - 10000s); },
        [&] { forwardFehler = wuerfel(30) ? "adb: error: closed" : ""; },
        [&] { networksetupFehler = wuerfel(30) ? "** Error: Command requires admin privileges." : ""; },
        [&] { tunnel = {dauer(20000), {}, dauer(50000), {}, wuerfel(10), false, dauer(9000)}; },
        [&] { tunnel.zurueckgebaut = "kein Netz"; },
        [&] {
            tunnel.skriptfehler = Skriptfehler{false, -128, "Abgebrochen."};
        },
    };
    const auto was = waehle(std::size(moegliche) + 4);
    if (was < std::size(moegliche))
        moegliche[was]();
    else
        neue = {neuesHandy(wuerfel(70) ? "R5CT1" : "ZY22")};
    stecke(neue);
    std::string lage = "Ereignis " + std::to_string(was);
    for (const auto& h : handys)
        lage += " " + h.serial + " " + h.zustand + " " + h.entscheid + (h.teilt ? "" : " (teilt nicht)");
    erzaehle(lage);
}

void Zufallswelt::stecke(std::vector<Modellhandy> neue) {
    handys = std::move(neue);
    std::erase_if(forwards, [this](const auto& forward) { return bereites(forward.second) == nullptr; });
    std::erase_if(belegtePorts, [this](int port) { return forwards.contains(port); });
    if (wegGueltig())
        ticksOhneWeg_ = 0;
}

/// On services where the program has none and may have none: on its own the user leaves the proxy alone.
void Zufallswelt::setzeEigenenProxy(const std::string& dienst) {
    const auto ungewiss = einstellungen.text("proxy.ungewiss").value_or("");
    if (unser(dienst) || einstellungen.text("proxy.dienst") == dienst ||
        ungewiss.find(dienst) != ungewiss.npos)
        return;
    socksAn[dienst] = true;
    socksZiel[dienst] = {"192.0.2.9", 1080};
}

void Zufallswelt::klicke() {
    if (!kabel)
        return;
    const bool an = wuerfel(60);
    const auto knopf = waehle(7);
    erzaehle("Klick " + std::to_string(knopf) + (an ? " an" : " aus"));
    ++offeneKlicks_;
    constexpr void (Kabel::*schalter[])(bool) = {&Kabel::setzeProxyAutomatisch, &Kabel::setzeExperte,
                                                 &Kabel::setzeVolltunnelAn, &Kabel::setzeVpnDurch,
                                                 &Kabel::setzeNurVPN};
    if (knopf < std::size(schalter))
        (kabel.get()->*schalter[knopf])(an);
    else if (knopf == 5)
        kabel->proxyUmschalten();
    else
        kabel->profilUebernehmen();
    q->async([this] {
        --offeneKlicks_;
        nachTick_ = false;
    });
}

} // namespace mobilsteg
