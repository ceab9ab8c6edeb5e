#include "netz/Volltunnel.hpp"

#include "handy/Ports.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace mobilsteg {

namespace {

constexpr Dauer blickabstand = std::chrono::milliseconds(250);
constexpr int startblicke = 160; // 40 s
constexpr int stoppblicke = 40;  // 10 s
constexpr int vomBenutzerAbgebrochen = -128;

std::string ersetzt(const std::string& text, char was, const std::string& durch) {
    std::string neu;
    for (const char c : text)
        neu += c == was ? durch : std::string(1, c);
    return neu;
}

/// What the helper wrote; what is no text counts as nothing, in the start as well as later.
std::string fehlertext(const std::string& stoppPfad) {
    std::string bytes = liesDatei(stoppPfad + ".fehler", megabyte).value_or("");
    return alsUtf8(bytes) == bytes ? bytes : "";
}

} // namespace

std::string tunnelbefehl(const std::string& helfer, const std::string& stoppPfad,
                         const std::string& protokoll, int prozess, const Tunnelauftrag& auftrag) {
    const char* art = auftrag.nurVPN ? " -nur-vpn" : auftrag.vpnDurch ? " -vpn-durch" : "";
    return "( '" + helfer + "' -proxy " + amMac(socksPort) + " -stopp '" + stoppPfad + "' -dienst '" +
           auftrag.dienst + "' -wache " + std::to_string(prozess) + art + " </dev/null >> '" + protokoll +
           "' 2>&1 & ) ; echo gestartet";
}

std::string skriptquelle(const std::string& befehl, const std::string& grund) {
    // Backslashes first, or those before the quotes would be doubled again.
    const std::string gesichert = ersetzt(ersetzt(befehl, '\\', "\\\\"), '"', "\\\"");
    return "do shell script \"" + gesichert + "\" with prompt \"" + grund +
           "\" with administrator privileges";
}

Volltunnel::Volltunnel(Anschluesse anschluesse)
    : anschluesse_(std::move(anschluesse)),
      stoppPfad_(
          anschluesse_.orte.imHeim("/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp")),
      protokollPfad_(anschluesse_.orte.imHeim("/Library/Logs/MobilstegVolltunnel.log")),
      helfer_(anschluesse_.ressourcen.value_or("") + "/mobilsteg-volltunnel") {}

void Volltunnel::beginne() {
    (void)raeumeWeg();
    stand_ = Stand::startet;
}

std::optional<std::string> Volltunnel::start(const Tunnelauftrag& auftrag) {
    if (auto grund = einwand(auftrag))
        return grund;
    if (!bereiteStoppVor())
        return "Die Bitte um Stopp lässt sich nicht vorbereiten (" + fehlerbeschreibung(errno) + ")";
    if (stand_ == Stand::beendet) {
        bitteUmStopp(); // the request just removed may have been the clean-up's
        return "Das Programm endet";
    }
    if (auto grund = rufeHelfer(auftrag))
        return grund;
    return warteAufHelfer();
}

bool Volltunnel::hinterliess() const {
    return existiert(rueckbaunotiz(anschluesse_.orte.wurzel));
}

std::optional<std::string> Volltunnel::nimmZurueck() {
    const Tunnelauftrag auftrag{"Wi-Fi"}; // it sets none: the request to stop is there first
    auto grund = einwand(auftrag);
    if (!grund) {
        bitteUmStopp();
        grund = stoppGebeten() ? rufeHelfer(auftrag) : "Die Bitte um Stopp lässt sich nicht ablegen";
    }
    for (int blick = 0; !grund && hinterliess(); ++blick) {
        anschluesse_.uhr.schlafe(blickabstand);
        if (const auto fehler = fehlertext(stoppPfad_); !fehler.empty())
            grund = beschnitten(fehler);
        else if (blick == stoppblicke)
            grund = "siehe " + protokollPfad_;
    }
    return grund;
}

/// Why no helper may be started: it is missing, or its command, which runs with all rights, would hold what
/// it must not. Absent: it may.
std::optional<std::string> Volltunnel::einwand(const Tunnelauftrag& auftrag) const {
    if (!anschluesse_.ressourcen || !istAusfuehrbar(helfer_))
        return "Helfer mobilsteg-volltunnel fehlt im Bundle";
    for (const auto& name : {helfer_, stoppPfad_, protokollPfad_, auftrag.dienst})
        if (name.find('\'') != std::string::npos)
            return "Namen mit Apostroph kann der Volltunnel nicht nehmen: " + name;
    for (const auto& pfad : {protokollPfad_, stoppPfad_ + ".laeuft", stoppPfad_ + ".vpns.json"})
        if (istVerknuepfung(pfad)) // it would be written through, wherever it leads
            return "Eine Verknüpfung nimmt der Volltunnel nicht: " + pfad;
    return std::nullopt;
}

std::optional<std::string> Volltunnel::rufeHelfer(const Tunnelauftrag& auftrag) {
    const std::string vorher = vertrauteDatei(helfer_);
    if (vorher.empty())
        return "Den Helfer mobilsteg-volltunnel könnten andere verändern: " + helfer_;
    // Before the script and not behind it: a helper that fails at once leaves its reason by then.
    std::remove((stoppPfad_ + ".fehler").c_str());
    const auto befehl = tunnelbefehl(helfer_, stoppPfad_, protokollPfad_, ::getpid(), auftrag);
    if (auto grund = fuehreSkriptAus(skriptquelle(befehl, anschluesse_.variante.adminGrund())))
        return grund;
    if (vertrauteDatei(helfer_) == vorher)
        return std::nullopt;
    bitteUmStopp();
    return "Der Helfer mobilsteg-volltunnel wurde während des Passwortdialogs ausgetauscht";
}

std::optional<std::string> Volltunnel::fuehreSkriptAus(const std::string& quelle) {
    std::optional<Skriptfehler> fehler;
    const auto aufgabe = [&] { fehler = anschluesse_.skript.fuehreAus(quelle); };
    anschluesse_.haupt.istHier() ? aufgabe() : anschluesse_.haupt.sync(aufgabe);
    if (!fehler)
        return std::nullopt;
    if (fehler->nichtGebaut)
        return "AppleScript nicht gebaut";
    if (fehler->nummer == vomBenutzerAbgebrochen) // the message is in the user's language, the number is not
        return "Abgebrochen";
    return fehler->meldung.value_or("Fehler " + std::to_string(fehler->nummer));
}

std::optional<std::string> Volltunnel::warteAufHelfer() {
    for (int blick = 0; blick <= startblicke; ++blick) {
        if (blick > 0)
            anschluesse_.uhr.schlafe(blickabstand);
        if (markeLiegt())
            return std::nullopt;
        if (const auto fehler = fehlertext(stoppPfad_); !fehler.empty())
            return "zurückgebaut — " + std::string(beschnitten(fehler));
        if (stoppGebeten()) // it came up and went by our request, between two looks
            return std::nullopt;
    }
    bitteUmStopp(); // one that comes up after all must not run unseen
    return "Helfer meldet sich nicht (siehe " + protokollPfad_ + ")";
}

void Volltunnel::beendeStart(bool gelungen) {
    if (stand_ == Stand::startet)
        stand_ = gelungen && markeLiegt() ? Stand::laeuft : Stand::ruht;
}

Volltunnel::Ende Volltunnel::stopp(bool entferneMarke) {
    bitteUmStopp();
    for (int blick = 0; blick < stoppblicke && markeLiegt(); ++blick)
        anschluesse_.uhr.schlafe(blickabstand);
    const Ende ende = markeLiegt() ? Ende::verstummt : Ende::gegangen;
    // A request that could not be stored asked nobody.
    if (entferneMarke && stoppGebeten())
        std::remove((stoppPfad_ + ".laeuft").c_str());
    if (stand_ == Stand::laeuft)
        stand_ = Stand::ruht;
    return ende;
}

Volltunnel::Ende Volltunnel::nimmWeg() {
    // Asked before and still there: dead. Each later tick would wait for it again, the proxy behind it.
    return laeuft() || markeLiegt() ? stopp(stoppGebeten()) : Ende::keinHelfer;
}

Volltunnel::Ende Volltunnel::raeumeWeg() {
    return markeLiegt() ? stopp(true) : Ende::keinHelfer;
}

Volltunnel::Ende Volltunnel::beendeFuerImmer() {
    // The state first: a start that removes the request looks at the state behind that.
    const Stand vorher = stand_.exchange(Stand::beendet);
    if (vorher == Stand::startet)
        bitteUmStopp();
    return vorher == Stand::laeuft || markeLiegt() ? stopp(false) : Ende::keinHelfer;
}

std::optional<std::string> Volltunnel::zurueckgebaut() {
    if (!laeuft() || markeLiegt())
        return std::nullopt;
    (void)stopp(false);
    return grund();
}

bool Volltunnel::stoppGebeten() const {
    return existiert(stoppPfad_);
}

bool Volltunnel::markeLiegt() const {
    return existiert(stoppPfad_ + ".laeuft");
}

std::string Volltunnel::grund() const {
    return std::string(beschnitten(fehlertext(stoppPfad_)));
}

/// The request is made beforehand and only gets its name when it is due: that works on a full disk, too. An
/// old one would stop the new helper at once, so it becomes the new one.
bool Volltunnel::bereiteStoppVor() const {
    legeElternordnerAn(stoppPfad_);
    return std::rename(stoppPfad_.c_str(), bereitPfad().c_str()) == 0 || existiert(bereitPfad()) ||
           schreibeAtomar(bereitPfad(), "", Haltbarkeit::fluechtig);
}

void Volltunnel::bitteUmStopp() const {
    if (stoppGebeten() || std::rename(bereitPfad().c_str(), stoppPfad_.c_str()) == 0)
        return;
    legeElternordnerAn(stoppPfad_); // nothing was prepared: the helper is an earlier run's
    schreibeAtomar(stoppPfad_, "", Haltbarkeit::fluechtig);
}

} // namespace mobilsteg
