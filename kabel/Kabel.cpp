#include "kabel/Kabel.hpp"

#include "kabel/Stand.hpp"
#include "kabel/Standausgabe.hpp"
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
    // The clean-up after a dead run may take long, and this run may die in it.
    if (anschluesse_.halteWaechter)
        anschluesse_.halteWaechter();
    const auto& buendel = anschluesse_.buendel;
    protokoll(variante_.anzeigename() + " " + buendel.version.value_or("?") + " (" +
              buendel.bauversion.value_or("?") + ")");
    if (const auto ort = anschluesse_.einstellungen.beiseitegelegt()) {
        const auto text = "Die Einstellungen waren beschädigt und gelten nicht mehr; sie liegen in " + *ort;
        protokoll(text);
        aufQ([this, text] { lageIntern_.meldung = text; });
    }
    anzeigetakt_ = anschluesse_.haupt.wiederhole(anzeigePeriode, anzeigePeriode, [this] { rotiere(); });
    aufQ([this] { raeumeUebriggebliebenesWeg(); });
    anschluesse_.standdienst.starte();
    takt_ = anschluesse_.q.wiederhole(ersterTakt, taktPeriode, [this] { takt(); });
}

void Kabel::aufQ(std::function<void()> was) {
    anschluesse_.q.async([this, was = std::move(was)] {
        if (endet_)
            return;
        was();
        uebergib();
    });
}

/// Hands what this queue knows to the main queue, in one piece and only when it changed.
void Kabel::uebergib() {
    // What speaks of the tunnel or of the proxy goes with it, not with the next survey.
    if (!lageIntern_.volltunnelLaeuft)
        lageIntern_.vpnsGesichert.clear();
    if (!lageIntern_.proxyGesetzt) {
        lageIntern_.durch.clear();
        lageIntern_.vorbei.clear();
    }
    if (lageIntern_ == uebergebeneLage_)
        return;
    uebergebeneLage_ = lageIntern_;
    speicher_.veroeffentliche([this, lage = zeigbar(lageIntern_)](Zustand& z) {
        const bool anderePhase = z.phase != lage.phase;
        static_cast<Lage&>(z) = lage;
        if (anderePhase) // not only at the next beat: a struck-through plug would stand beside the new phase
            zeigeInDerMenueleiste(z);
    });
}

void Kabel::raeumeUebriggebliebenesWeg() {
    (void)nimmProxyWeg();
    (void)tunnel_.raeumeWeg();
    for (const auto& pfad : {standPfad_, protokoll_.pfad(), tunnel_.stoppPfad()})
        fegeReste(pfad);
}

void Kabel::siehNach() {
    if (blickWartet_.exchange(true))
        return;
    anschluesse_.q.async([this] {
        blickWartet_ = false;
        if (!endet_)
            schritt();
    });
}

void Kabel::schritt() {
    if (anschluesse_.halteWaechter)
        anschluesse_.halteWaechter();
    letzteAntwort_.reset();
    schrittInnen();
    zeigeBelegtePorts();
    schreibeStand(lageIntern_.phase, letzteAntwort_);
    uebergib();
}

void Kabel::takt() {
    // Between the clean-up and the end of the process the clock still runs; nothing may be set again then.
    if (endet_)
        return;
    schritt(); // what follows may take a minute
    if (endet_)
        return;
    if (++tick_ <= fruehereTakte)
        letzteProxyfehler_.merge(meldeMisslungene(proxy_.klaereUngewisse(tick_ == fruehereTakte)));

    if (tick_ % berichtTakte == 0 && letzteAntwort_)
        berichteSenden();
    volltunnelPruefen();
    if (schalterIntern_.experte && proxy_.gesetzt() && tick_ % verbindungsTakte == 0)
        messeVerbindungen();
    if ((variante_.aktuell() == Variante::Art::vpn || schalterIntern_.experte) && tick_ % vpnTakte == 0)
        vpnsLesen();
    if (tick_ % browserTakte == 1)
        browserLesen();
    uebergib();
}

void Kabel::schrittInnen() {
    if (!verbindung_.findeAdb())
        return verliere(Phase::Art::keinAdb);

    const auto fund = verbindung_.sucheHandy();
    if (anschluesse_.haltGeraetewache)
        anschluesse_.haltGeraetewache();
    switch (fund) {
    case Verbindung::Fund::keins:
        verbindung_.vergissHandy();
        return verliere(Phase::Art::keinHandy);
    case Verbindung::Fund::unautorisiert:
        verbindung_.vergissHandy();
        return verliere(Phase::Art::nichtAutorisiert);
    case Verbindung::Fund::neues:
        lageIntern_.handy = verbindung_.handyName();
        beginneNeu();
        break;
    case Verbindung::Fund::dasselbe:
        if (verbindung_.zuletztGueltig() && !verbindung_.wegSteht())
            beginneNeu();
        break;
    }

    for (const auto& zeile : verbindung_.leiteWeiter())
        protokoll(zeile);
    // Whatever else listens at our ports is not the phone: it must neither hear our id nor be proven.
    if (!verbindung_.forwards())
        return verliere(Phase::Art::weitergabeAus);
    letzteAntwort_ = verbindung_.meldeAn(id_, anschluesse_.rechnername, erhebung_.vpnZieleIntern());
    if (!letzteAntwort_)
        return verliere(Phase::Art::weitergabeAus);
    zeigeStatus(*letzteAntwort_);

    const auto zustand = letzteAntwort_->zustand.value_or("");
    if (zustand == "abgelehnt")
        return verliere(Phase::Art::abgelehnt);
    if (zustand != "erlaubt")
        return verliere(Phase::Art::wartetAufHandy);

    if (!verbindung_.zuletztGueltig()) {
        // In a row of failing proofs the error stays: else panel and log went back and forth every tick.
        if (!beweisMisslang_) {
            setze(Phase::Art::pruefung);
            uebergib(); // the proof may take twelve seconds
        }
        const auto adresse = verbindung_.beweise();
        beweisMisslang_ = !adresse;
        if (!adresse) { // no teardown: the forwards stand, and the next tick proves again
            proxyWeg(); // mostly there is none; the tools may have refused when the link was lost
            return setze(
                Phase::proxyFehler("Der Proxy des Handys antwortet nicht — Weitergabe wirklich an?"));
        }
        protokoll("Beweis: draußen als " + *adresse);
        lageIntern_.austritt = *adresse;
        // The failed proof's error ends here; one of the system proxy would stay.
        lageIntern_.phase = Phase::Art::pruefung;
        if (schalterIntern_.proxyAutomatisch)
            proxyAn();
        volltunnelNachziehen();
    }
    // An error of the system proxy stays on show while the path itself is fine.
    if (lageIntern_.phase.art != Phase::Art::proxyFehler)
        setze(Phase::Art::faehrt);
}

void Kabel::setze(const Phase& neu) {
    lageIntern_.phase = neu;
    if (neu.art == Phase::Art::proxyFehler && letzteAntwort_)
        aufQ([this] { berichteSenden(); });
    protokoll(neu.text());
}

/// Sets the phase that tells what is missing and takes back what depends on the link.
void Kabel::verliere(const Phase& phase) {
    setze(phase);
    gibWegAuf();
}

/// Another phone, or a path that no longer leads to it: the same tick proves anew.
void Kabel::beginneNeu() {
    beweisMisslang_ = false;
    if (!verbindung_.zuletztGueltig())
        return;
    lageIntern_.phase = Phase::Art::pruefung;
    gibWegAuf();
}

void Kabel::gibWegAuf() {
    beweisMisslang_ = false;
    verbindung_.verwirfBeweis();
    verloren();
    uebergib(); // a helper and the tools may take half a minute to go
    volltunnelWeg();
    proxyWeg();
}

/// Says it once, so that what the user does meanwhile can be answered in the same place.
void Kabel::zeigeBelegtePorts() {
    const auto& belegte = verbindung_.belegtePorts();
    if (belegte == gezeigteBelegung_)
        return;
    if (!belegte.empty())
        lageIntern_.meldung = belegte;
    else if (lageIntern_.meldung == gezeigteBelegung_)
        lageIntern_.meldung.clear();
    gezeigteBelegung_ = belegte;
}

void Kabel::verloren() {
    lageIntern_.austritt.clear();
    lageIntern_.gleise.clear();
    lageIntern_.klasse.clear();
    lageIntern_.rettung.clear();
}

void Kabel::aufraeumen() {
    if (std::exchange(aufgeraeumt_, true))
        return;
    endet_ = true;
    meldeTunnelende(tunnel_.beendeFuerImmer());
    proxyWeg();
    verbindung_.baueAb();
    verbindung_.verwirfBeweis();
    verloren();
    setze(Phase::Art::beendet);
    schreibeStand(lageIntern_.phase, std::nullopt); // or it would say for ever that we are on our way
    uebergib();
    if (anschluesse_.entlasseWaechter)
        anschluesse_.entlasseWaechter();
}

/// Takes everything back first, so that even a wrong number leaves no proxy behind.
void Kabel::brichAb(const std::string& warum) {
    protokoll("Programmierfehler: " + warum);
    aufraeumen();
    anschluesse_.abbruch(warum);
}

// --- what the phone told ---------------------------------------------------------------------------------

void Kabel::zeigeStatus(const Antwort& antwort) {
    const auto werte = anzeige_.zeige(antwort, anschluesse_.rechnername, anschluesse_.uhr.monoton());
    if (!werte)
        return brichAb("Das Handy meldet unmögliche Zahlen");
    werte->trageEin(lageIntern_);
}

void Kabel::schreibeStand(const Phase& phase, const std::optional<Antwort>& antwort) {
    Standangaben angaben;
    angaben.app = variante_.bundleB2B() ? "mobilsteg-vpnlotse" : "mobilsteg-bordlotse";
    angaben.zeit = anschluesse_.uhr.wand();
    angaben.phase = phase;
    angaben.austritt = verbindung_.austrittIntern();
    angaben.handy = verbindung_.serial().value_or("");
    angaben.id = id_;
    angaben.name = anschluesse_.rechnername;
    angaben.proxyGesetzt = proxy_.gesetzt();
    angaben.volltunnel = tunnel_.laeuft();
    angaben.vpnDurch = schalterIntern_.vpnDurch;
    angaben.nurVPN = schalterIntern_.nurVPN;
    angaben.proxyAutomatisch = schalterIntern_.proxyAutomatisch;
    angaben.dienst = proxy_.gesetzterDienst().value_or("");
    angaben.adb = verbindung_.adbPfad().value_or("");

    auto dokument = standDokument(angaben, antwort);
    legeElternordnerAn(standPfad_);
    schreibeAuchWennVoll(standPfad_, dokument, Haltbarkeit::fluechtig);
    anschluesse_.standdienst.setzeDokument(std::move(dokument));
}

// --- what is done every n-th tick ------------------------------------------------------------------------

void Kabel::messeVerbindungen() {
    const auto verbindungen = erhebung_.verbindungen();
    lageIntern_.vorbei = verbindungen.vorbei;
    lageIntern_.durch = verbindungen.durch;
}

void Kabel::vpnsLesen() {
    const auto vpns = erhebung_.vpns(tunnel_.laeuft());
    lageIntern_.vpnsGesichert = vpns.gesichert;
    lageIntern_.vpnsOffen = vpns.offen;
}

void Kabel::browserLesen() {
    lageIntern_.browserOhne = anschluesse_.browserFinden();
    std::erase_if(lageIntern_.browserOhne, [](const BrowserFund& fund) { return fund.fahrtwind; });
}

void Kabel::fahrtwindHinzufuegen(const BrowserFund& fund) {
    protokoll("fahrtwind: Store/Download in " + fund.name);
    aufQ([this, fund] { anschluesse_.browserOeffnen(fund); });
}

void Kabel::protokollZeigen() {
    aufQ([this] {
        constexpr double frist = 10;
        const auto oeffner = anschluesse_.orte.imSystem("/usr/bin/open");
        (void)anschluesse_.laeufer(oeffner, {protokoll_.pfad()}, frist);
    });
}

void Kabel::berichteSenden() {
    Berichte::Angaben angaben;
    angaben.rechner = anschluesse_.rechnername;
    angaben.id = id_;
    angaben.ausgabe = variante_.anzeigename();
    angaben.version = anschluesse_.buendel.version;
    angaben.bauversion = anschluesse_.buendel.bauversion;
    angaben.zeit = anschluesse_.uhr.wand();
    angaben.phase = lageIntern_.phase.text();
    angaben.volltunnel = tunnel_.laeuft();
    angaben.proxy = proxy_.gesetzt();
    berichte_.sende(verbindung_.handy(), angaben);
}

// --- the menu bar ----------------------------------------------------------------------------------------

void Kabel::rotiere() {
    ++rotation_;
    Zustand neu = speicher_.zustand();
    zeigeInDerMenueleiste(neu);
    if (neu != speicher_.zustand())
        speicher_.aendere([&](Zustand& z) { z = neu; });
}

void Kabel::zeigeInDerMenueleiste(Zustand& zustand) const {
    auto leiste = menueleiste(zustand, rotation_);
    zustand.symbol = std::move(leiste.symbol);
    zustand.kurz = std::move(leiste.kurz);
}

} // namespace mobilsteg
