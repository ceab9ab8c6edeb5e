#include "tests/simulation/Sturmwelt.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

namespace {

constexpr std::array rauheiten{0.0, 0.01, 0.05, 0.25};
constexpr int laengsterNachlauf = 400; // seconds until whatever still runs or hangs has ended

/// What no honest phone tells: of the wrong type, no JSON, out of any bounds, or merely odd.
constexpr std::array unmoeglicheStatus{
    R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":NaN}]})",
    R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":"12"}]})",
    R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":1e400}]})",
    R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":-1e300}]})",
    R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":-7,"rtt_ruhe_ms":1e308}]})",
    R"({"guests":[{"IP":"kabel:Testmac","BytesUp":9223372036854775807,"BytesDown":1}]})",
    R"({"guests":[{"IP":"kabel:Testmac","BytesUp":-9223372036854775808,"BytesDown":1.0}]})",
    R"({"guests":[{"IP":"kabel:Testmac","BytesUp":1.5,"BytesDown":0}]})",
    R"({"funkloecher":-3,"gerettet":18446744073709551615})",
};

} // namespace

Sturmwelt::Sturmwelt(std::uint64_t samen, Luege luege)
    : KabelWelt(samen), zufall_(samen * 0x9E3779B97F4A7C15U + 1), luege_(luege),
      rauheit_(rauheiten[samen % 4]) {
    buendelkennung = wuerfel(0.5) ? "de.mobilsteg.bordlotse" : "de.mobilsteg.vpnlotse";
    einstellungen.werte["volltunnel.erklaert"] = true;
    einstellungen.vorAenderung = [this] { portaufruf("Einstellung"); };
    standdienst.nachDokument = [this] { amTickende(); };
    welt.beobachte([this] { nachAuftrag(); });
    if (wuerfel(0.8))
        handys = {neuesHandy()};
}

bool Sturmwelt::wuerfel(double wahrscheinlichkeit) {
    return static_cast<double>(zufall_() % 1'000'000) < wahrscheinlichkeit * 1e6;
}

Dauer Sturmwelt::dauer(double hoechstensSekunden) {
    return std::chrono::milliseconds(waehle(static_cast<std::size_t>(hoechstensSekunden * 1000) + 1));
}

void Sturmwelt::erzaehle(const std::string& was) {
    constexpr std::size_t laengste = 60;
    char zeit[32];
    std::snprintf(zeit, sizeof zeit, "%9.3f s  ", std::chrono::duration<double>(welt.jetzt()).count());
    geschichte_.push_back(zeit + was);
    if (geschichte_.size() > laengste)
        geschichte_.pop_front();
}

std::string Sturmwelt::geschichte() const {
    std::string text;
    for (const auto& zeile : geschichte_)
        text += zeile + "\n";
    return text;
}

// --- the process's lives ---------------------------------------------------------------------------------

void Sturmwelt::starteProzess() {
    ++zaehler_.starts;
    erzaehle("das Programm startet");
    lebensbeginn_ = ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log").size();
    vorgefunden_ = forwards;
    nachTick_ = false;
    ticksOhneBeweis_ = 0;
    bewiesenBis_ = Dauer{-1};
    haupt.async([this] {
        baue();
        kabel->start();
    });
    laufe({});
}

/// The process is gone: by itself or in the middle of whatever it did. Its helper notices, or does not.
void Sturmwelt::beendeProzess(bool inOrdnung) {
    if (inOrdnung) {
        erzaehle("das Programm endet");
        endet_ = true;
        const int stoerungen = zaehler_.stoerungen;
        ++offeneKlicks_; // what it takes back is in no document
        // A dialog may stand open, and every tool may hang to its limit.
        bool fertig = false;
        Schlange& signal = welt.schlange("signal");
        if (kabel)
            signal.async([&] {
                q->sync([this] { kabel->aufraeumen(); });
                fertig = true;
            });
        const bool zuEnde = !kabel || welt.laufeBis([&] { return fertig || bisTod_ == -1; },
                                                    std::chrono::seconds(laengsterNachlauf));
        if (!zuEnde)
            verletzt("das Aufräumen endet");
        if (fertig && zaehler_.stoerungen == stoerungen)
            nachUngestoertemAufraeumen();
    }
    welt.begrabe();
    amEndeEinesLebens();
    kabel.reset();
    bisTod_ = 0;
    offeneKlicks_ = 0;
    endet_ = false;
    // One that is only just coming up sees at once that nobody waits for it.
    const bool merktEs = !existiert(stoppPfad() + ".laeuft") || wuerfel(0.7);
    if (helfer > 0 && luege_ != Luege::helferTaub && merktEs) {
        erzaehle("der Helfer merkt, dass sein Programm fort ist");
        helferBautZurueck("");
    }
}

void Sturmwelt::laufe(Dauer d) {
    welt.laufe(d);
    if (bisTod_ == -1)
        return beendeProzess(false);
    if (welt.verklemmte() > 0)
        verletzt("keine Schlange wartet im Kreis");
    if (!abgebrochen.empty())
        verletzt("kein Programmierfehler: " + abgebrochen);
}

void Sturmwelt::lebe(int ticks) {
    schicksal_ = welt.schlange("schicksal")
                     .wiederhole(std::chrono::milliseconds(350), std::chrono::milliseconds(700),
                                 [this] { schlageZu(); });
    while (zaehler_.ticks < ticks && verstoss_.empty()) {
        bisTod_ = wuerfel(0.7) ? 1 + static_cast<int>(waehle(600)) : 0;
        starteProzess();
        const int bis = zaehler_.ticks + 1 + static_cast<int>(waehle(60));
        for (int stueck = 0;
             kabel && zaehler_.ticks < std::min(bis, ticks) && verstoss_.empty() && stueck < 2000; ++stueck)
            laufe(std::chrono::seconds(3));
        if (kabel)
            beendeProzess(true);
        laufe(dauer(20));
    }
    if (!verstoss_.empty())
        return;
    // The last life begins in the storm and goes on in the calm. Of what it met it may keep nothing: with the
    // next phone it drives, and in the end, its phone there or gone, nothing is left.
    bisTod_ = 0;
    starteProzess();
    laufe(dauer(60));
    beruhige();
    if (!kabel) // it met a wrong number
        starteProzess();
    stecke({});
    laufe(std::chrono::seconds(150));
    stecke({Modellhandy{}});
    laufe(std::chrono::seconds(60));
    if (verstoss_.empty())
        nachDemSturm();
    if (wuerfel(0.5))
        stecke({});
    laufe(std::chrono::seconds(60));
    beendeProzess(true);
    laufe(std::chrono::seconds(5));
    if (verstoss_.empty())
        amEnde();
}

void Sturmwelt::beruhige() {
    ruhig_ = true;
    bisTod_ = 0;
    schicksal_.reset();
    networksetupFehler.clear();
    forwardFehler.clear();
    dauerWerkzeug = dauerHttp = {};
    belegtePorts.clear();
    tunnel = {};
}

// --- the ports -------------------------------------------------------------------------------------------

/// Counts down to the process's death, and takes a little time, so that the other queues get between.
void Sturmwelt::portaufruf(const std::string& was) {
    if (bisTod_ > 0 && --bisTod_ == 0) {
        erzaehle("das Programm stirbt bei: " + was);
        ++zaehler_.tode;
        bisTod_ = -1;
        welt.stirb();
    }
}

Ergebnis Sturmwelt::werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                             double sekunden) {
    aufrufe.clear();
    const auto name = programm.substr(programm.rfind('/') + 1); // its folder has another name in each run
    const std::string was = argumente.empty() ? name : name + " " + argumente.front();
    portaufruf(was);
    welt.uhr().schlafe(dauer(0.03));
    const bool proxyAus = argumente.size() > 2 && argumente.back() == "off";
    if (luege_ == Luege::proxyGehtNichtAus && proxyAus)
        return {0, "", ""};
    if (luege_ == Luege::forwardBleibt && argumente.size() > 3 && argumente[3] == "--remove")
        return {0, "", ""};
    if (!networksetupFehler.empty() && argumente.front().starts_with("-set")) {
        ++zaehler_.stoerungen;
        ticksOhneStoerung_ = 0;
    }
    auto ergebnis = !ruhig_ && wuerfel(rauheit_) ? stoere(programm, argumente, sekunden)
                                                 : KabelWelt::werkzeug(programm, argumente, sekunden);
    portaufruf(was + " (getan)");
    return ergebnis;
}

Ergebnis Sturmwelt::stoere(const std::string& programm, const std::vector<std::string>& argumente,
                           double sekunden) {
    ++zaehler_.stoerungen;
    const auto limit = std::chrono::duration_cast<Dauer>(std::chrono::duration<double>(sekunden));
    if (programm.ends_with("networksetup"))
        ticksOhneStoerung_ = 0;
    const auto art = waehle(6);
    erzaehle("Störung " + std::to_string(art) + ": " + programm.substr(programm.rfind('/') + 1) + " " +
             (argumente.empty() ? "" : argumente.back()));
    if (art == 0 || art == 1) { // it cannot be started, or hangs to its limit, and does nothing
        if (art == 1)
            welt.uhr().schlafe(limit);
        return {art == 0 ? -1 : 15, "", art == 0 ? "kein Start" : ""};
    }
    auto ergebnis = KabelWelt::werkzeug(programm, argumente, sekunden);
    switch (art) {
    case 2: // cut off at its limit, after it has done its work
        welt.uhr().schlafe(limit);
        ergebnis = {15, ergebnis.ausgabe.substr(0, ergebnis.ausgabe.size() / 2), ""};
        break;
    case 3:
        ergebnis.ausgabe.resize(ergebnis.ausgabe.size() / 2);
        break;
    case 4:
        ergebnis.ausgabe =
            alsUtf8("\xff\xfe(1) \n(Hardware Port: , Device: )\tdevice\n\"\0"); // as `lauf` does
        break;
    default:
        welt.uhr().schlafe(limit - std::chrono::milliseconds(1));
    }
    return ergebnis;
}

std::optional<HttpErgebnis> Sturmwelt::hole(const HttpAnfrage& anfrage) {
    portaufruf("Anfrage");
    welt.uhr().schlafe(dauer(0.05));
    const bool durchProxy = anfrage.weg == HttpAnfrage::Weg::durchProxy;
    unmoeglich_ = -1;
    std::optional<HttpErgebnis> ergebnis;
    if (luege_ == Luege::beweisOhneHandy)
        return durchProxy ? HttpErgebnis{200, "203.0.113.9"}
                          : HttpErgebnis{
                                200, R"({"app":"mobilsteg","proxy_port":1,"kabel":{},"zustand":"erlaubt"})"};
    if (!ruhig_ && wuerfel(rauheit_)) {
        ++zaehler_.stoerungen;
        erzaehle("Störung: Anfrage an " + anfrage.url);
        switch (waehle(6)) {
        case 0:
            return std::nullopt;
        case 1:
            welt.uhr().schlafe(std::chrono::seconds(durchProxy ? 10 : 3));
            return std::nullopt;
        case 2:
            return HttpErgebnis{500, "kaputt"};
        case 3:
            ergebnis = {200, "{\"app\":\"mobilsteg\",\"zustand\":[[[[\xff"};
            break;
        case 4:
            unmoeglich_ = durchProxy ? -1 : zaehler_.stoerungen;
            break;
        default:
            welt.uhr().schlafe(std::chrono::seconds(3));
        }
    }
    if (!ergebnis)
        ergebnis = KabelWelt::hole(anfrage);
    if (unmoeglich_ >= 0 && ergebnis && ergebnis->koerper.ends_with('}')) {
        ergebnis->koerper.back() = ',';
        ergebnis->koerper +=
            std::string("\"status\":") + unmoeglicheStatus[waehle(unmoeglicheStatus.size())] + "}";
    }
    if (durchProxy && luege_ == Luege::niemandDraussen)
        return std::nullopt;
    if (durchProxy && ergebnis)
        bewiesenBis_ = Dauer::max();
    return ergebnis;
}

std::optional<Skriptfehler> Sturmwelt::fuehreSkriptAus(const std::string& quelle) {
    portaufruf("Passwortdialog");
    if (welt.jetzt() >
        bewiesenBis_) // decided in the tick before, it may come at the moment when the next one ends
        verletzt("kein Start ohne bewiesenen Weg");
    if (existiert(stoppPfad()) &&
        !endet_) // at the end the request comes before the dialog that it makes needless
        verletzt("beim Start liegt keine alte Bitte um Stopp");
    if (luege_ == Luege::verklemmt)
        welt.schlange("ewig").sync([this] { haupt.sync([] {}); });
    ++zaehler_.tunnel;
    erzaehle("Passwortdialog");
    tunnel.taub = luege_ == Luege::helferTaub;
    auto fehler = KabelWelt::fuehreSkriptAus(quelle);
    if (luege_ == Luege::zweiHelfer && !fehler)
        meisteHelfer = std::max(meisteHelfer, ++helfer);
    return fehler;
}

/// In the middle of a tick, everything taken back.
void Sturmwelt::brichAb(const std::string& warum) {
    erzaehle("das Programm bricht ab: " + warum);
    if (unmoeglich_ < 0)
        KabelWelt::brichAb(warum);
    if (unmoeglich_ == zaehler_.stoerungen)
        nachUngestoertemAufraeumen();
    bisTod_ = -1;
    welt.stirb();
}

int Sturmwelt::beantworte(const Frage& frage) {
    erzaehle("Frage: " + frage.nachricht);
    welt.uhr().schlafe(dauer(10));
    return static_cast<int>(waehle(3)) - 1;
}

} // namespace mobilsteg
