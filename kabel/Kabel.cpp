#include "kabel/Kabel.hpp"

#include "kabel/Zustand.hpp"
#include "plattform/Dateien.hpp"

#include <utility>

namespace mobilsteg {

namespace {

constexpr Dauer ersterTakt = std::chrono::milliseconds(200);
constexpr Dauer taktPeriode = std::chrono::seconds(3);
constexpr Dauer anzeigePeriode = std::chrono::seconds(4);

constexpr std::int64_t berichtTakte = 100;
constexpr std::int64_t verbindungsTakte = 5;
constexpr std::int64_t vpnTakte = 2;
constexpr std::int64_t browserTakte = 10;

} // namespace

// --- the clock -------------------------------------------------------------------------------------------

void Kabel::start() {
    anzeigetakt_ = a_.haupt.wiederhole(anzeigePeriode, anzeigePeriode, [this] { rotiere(); });
    a_.q.async([this] { raeumeUebriggebliebenesWeg(); });
    a_.standdienst.starte();
    takt_ = a_.q.wiederhole(ersterTakt, taktPeriode, [this] { schritt(); });
}

void Kabel::raeumeUebriggebliebenesWeg() {
    if (aufgeraeumt_)
        return;
    proxy_.nimmUebriggebliebenenWeg();
    tunnel_.nimmUebriggebliebenenWeg();
}

void Kabel::schritt() {
    // Between the clean-up and the end of the process the clock still runs; nothing may be set again then.
    if (aufgeraeumt_)
        return;
    letzteAntwort_.reset();
    schrittInnen();
    schreibeStand(phaseIntern_, letzteAntwort_);
    ++tick_;

    if (tick_ % berichtTakte == 0 && letzteAntwort_)
        berichteSenden();
    volltunnelPruefen();
    if (experteIntern_ && proxy_.gesetzt() && tick_ % verbindungsTakte == 0)
        messeVerbindungen();
    if ((variante_.aktuell() == Variante::Art::vpn || experteIntern_) && tick_ % vpnTakte == 0)
        vpnsLesen();
    if (tick_ % browserTakte == 1)
        browserLesen();
}

void Kabel::schrittInnen() {
    if (!verbindung_.findeAdb())
        return verliere(Phase::Art::keinAdb);

    switch (verbindung_.sucheHandy()) {
    case Verbindung::Fund::keins:
        verbindung_.vergissHandy();
        return verliere(Phase::Art::keinHandy);
    case Verbindung::Fund::unautorisiert:
        verbindung_.vergissHandy();
        return verliere(Phase::Art::nichtAutorisiert);
    case Verbindung::Fund::neues:
        speicher_.veroeffentliche([handy = verbindung_.handyName()](Zustand& z) { z.handy = handy; });
        break;
    case Verbindung::Fund::dasselbe:
        break;
    }

    for (const auto& zeile : verbindung_.leiteWeiter())
        protokoll(zeile);
    letzteAntwort_ = verbindung_.meldeAn(id_, a_.rechnername, erhebung_.ziele());
    if (!letzteAntwort_)
        return verliere(Phase::Art::weitergabeAus);
    zeigeStatus(*letzteAntwort_);

    const auto zustand = letzteAntwort_->zustand.value_or("");
    if (zustand == "abgelehnt")
        return verliere(Phase::Art::abgelehnt);
    if (zustand != "erlaubt")
        return verliere(Phase::Art::wartetAufHandy);

    if (!verbindung_.bewiesen()) {
        setze(Phase::Art::pruefung);
        const auto adresse = verbindung_.beweise();
        if (!adresse) { // no teardown: the forwards stand, and the next tick proves again
            proxyWeg(); // mostly there is none; the tools may have refused when the link was lost
            return setze(
                Phase::proxyFehler("Der Proxy des Handys antwortet nicht — Weitergabe wirklich an?"));
        }
        protokoll("Beweis: draußen als " + *adresse);
        speicher_.veroeffentliche([adresse = *adresse](Zustand& z) { z.austritt = adresse; });
        if (proxyAutomatisch_)
            proxyAn();
        volltunnelNachziehen();
    }
    // An error of the system proxy stays on show while the path itself is fine.
    if (phaseIntern_.art != Phase::Art::proxyFehler)
        setze(Phase::Art::faehrt);
}

void Kabel::setze(const Phase& neu) {
    const bool anders = neu != phaseIntern_;
    phaseIntern_ = neu;
    if (neu.art == Phase::Art::proxyFehler && letzteAntwort_)
        a_.q.async([this] { berichteSenden(); });
    protokoll(neu.text());
    // An idle tick wakes nobody.
    if (anders)
        speicher_.veroeffentliche([neu](Zustand& z) { z.phase = neu; });
}

/// Sets the phase that tells what is missing and takes back what depends on the link.
void Kabel::verliere(const Phase& phase) {
    setze(phase);
    verbindung_.verwirfBeweis();
    volltunnelWeg();
    proxyWeg();
    verloren();
}

void Kabel::verloren() {
    if (!std::exchange(zeigtVerbindung_, false))
        return;
    gezeigteWerte_.vergiss();
    speicher_.veroeffentliche([](Zustand& z) {
        z.austritt.clear();
        z.gleise.clear();
        z.klasse.clear();
        z.rettung.clear();
    });
}

void Kabel::aufraeumen() {
    aufgeraeumt_ = true;
    tunnel_.gibAuf();
    volltunnelWeg();
    proxyWeg();
    verbindung_.baueAb();
}

/// Takes everything back first, so that even a wrong number leaves no proxy behind.
void Kabel::brichAb(const std::string& warum) {
    protokoll("Programmierfehler: " + warum);
    aufraeumen();
    a_.abbruch(warum);
}

// --- what the phone told ---------------------------------------------------------------------------------

void Kabel::zeigeStatus(const Antwort& antwort) {
    const auto werte = anzeige_.zeige(antwort, a_.rechnername, a_.uhr.monoton());
    if (!werte)
        return brichAb("Das Handy meldet unmögliche Zahlen");
    zeigtVerbindung_ = true;
    if (gezeigteWerte_.neu(*werte))
        speicher_.veroeffentliche([werte = *werte](Zustand& z) { werte.trageEin(z); });
}

void Kabel::schreibeStand(const Phase& phase, const std::optional<Antwort>& antwort) {
    Standangaben angaben;
    angaben.app = variante_.bundleB2B() ? "mobilsteg-vpnlotse" : "mobilsteg-bordlotse";
    angaben.zeit = a_.uhr.wand();
    angaben.phase = phase;
    angaben.austritt = verbindung_.austritt();
    angaben.handy = verbindung_.serial().value_or("");
    angaben.id = id_;
    angaben.name = a_.rechnername;
    angaben.proxyGesetzt = proxy_.gesetzt();
    angaben.volltunnel = tunnel_.laeuft();
    angaben.vpnDurch = tunnel_.wunsch.vpnDurch;
    angaben.nurVPN = tunnel_.wunsch.nurVPN;
    angaben.proxyAutomatisch = proxyAutomatisch_;
    angaben.dienst = proxy_.dienst().value_or("");
    angaben.adb = verbindung_.adbPfad().value_or("");

    auto dokument = standDokument(angaben, antwort);
    legeElternordnerAn(standPfad_);
    schreibeAtomar(standPfad_, dokument, Haltbarkeit::fluechtig);
    a_.standdienst.setzeDokument(std::move(dokument));
}

// --- the system proxy ------------------------------------------------------------------------------------

void Kabel::proxyAn() {
    const auto setzung = proxy_.setze();
    switch (setzung.ausgang) {
    case ProxySteuerung::Ausgang::keinDienst:
        return setze(Phase::proxyFehler("Keinen Netzwerkdienst gefunden — Proxy von Hand setzen"));
    case ProxySteuerung::Ausgang::misslungen:
        return setze(Phase::proxyFehler("System-Proxy nicht gesetzt: " + setzung.text));
    case ProxySteuerung::Ausgang::gesetzt:
        break;
    }
    protokoll("System-Proxy gesetzt auf " + setzung.text + ": 127.0.0.1:" + std::to_string(socksPort));
    speicher_.veroeffentliche([](Zustand& z) {
        z.proxyGesetzt = true;
        z.meldung.clear();
    });
}

void Kabel::proxyWeg() {
    const auto dienst = proxy_.nimmWeg();
    if (!dienst)
        return;
    protokoll("System-Proxy entfernt von " + *dienst);
    speicher_.veroeffentliche([](Zustand& z) { z.proxyGesetzt = false; });
}

void Kabel::proxyUmschalten() {
    a_.q.async([this] {
        if (aufgeraeumt_)
            return;
        if (proxy_.gesetzt())
            proxyWeg();
        else if (verbindung_.bewiesen())
            proxyAn();
        else
            speicher_.veroeffentliche([](Zustand& z) { z.meldung = "Erst muss das Handy freigeben."; });
    });
}

// --- the menu bar ----------------------------------------------------------------------------------------

void Kabel::rotiere() {
    ++rotation_;
    auto leiste = menueleiste(speicher_.zustand(), rotation_);
    speicher_.aendere([&](Zustand& z) {
        z.symbol = std::move(leiste.symbol);
        z.kurz = std::move(leiste.kurz);
    });
}

} // namespace mobilsteg
