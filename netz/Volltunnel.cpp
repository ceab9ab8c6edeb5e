#include "netz/Volltunnel.hpp"

#include "netz/ProxySteuerung.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <unistd.h>

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

} // namespace

std::string tunnelbefehl(const std::string& helfer, const std::string& stoppPfad,
                         const std::string& protokoll, int prozess, const Tunnelauftrag& auftrag) {
    const char* art = auftrag.nurVPN ? " -nur-vpn" : auftrag.vpnDurch ? " -vpn-durch" : "";
    return "( '" + helfer + "' -proxy 127.0.0.1:" + std::to_string(socksPort) + " -stopp '" + stoppPfad +
           "' -dienst '" + auftrag.dienst + "' -wache " + std::to_string(prozess) + art + " </dev/null >> '" +
           protokoll + "' 2>&1 & ) ; echo gestartet";
}

std::string skriptquelle(const std::string& befehl, const std::string& grund) {
    // Backslashes first, or those before the quotes would be doubled again.
    const std::string gesichert = ersetzt(ersetzt(befehl, '\\', "\\\\"), '"', "\\\"");
    return "do shell script \"" + gesichert + "\" with prompt \"" + grund +
           "\" with administrator privileges";
}

Volltunnel::Volltunnel(Anschluesse anschluesse)
    : a_(std::move(anschluesse)),
      stoppPfad_(a_.orte.imHeim("/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp")),
      protokollPfad_(a_.orte.imHeim("/Library/Logs/MobilstegVolltunnel.log")) {}

std::optional<std::string> Volltunnel::start(const Tunnelauftrag& auftrag) {
    const std::string helfer = a_.ressourcen.value_or("") + "/mobilsteg-volltunnel";
    if (!a_.ressourcen || !istAusfuehrbar(helfer))
        return "Helfer mobilsteg-volltunnel fehlt im Bundle";
    legeElternordnerAn(stoppPfad_);
    std::remove(stoppPfad_.c_str()); // an old request would stop the new helper at once
    if (aufgegeben_) {
        bitteUmStopp(); // that may just have been the last one
        return "Das Programm endet";
    }
    const auto befehl = tunnelbefehl(helfer, stoppPfad_, protokollPfad_, ::getpid(), auftrag);
    if (auto grund = fuehreSkriptAus(skriptquelle(befehl, a_.variante.adminGrund())))
        return grund;
    return warteAufHelfer();
}

std::optional<std::string> Volltunnel::fuehreSkriptAus(const std::string& quelle) {
    std::optional<Skriptfehler> fehler;
    a_.haupt.sync([&] { fehler = a_.skript.fuehreAus(quelle); });
    if (!fehler)
        return std::nullopt;
    if (fehler->nichtGebaut)
        return "AppleScript nicht gebaut";
    if (fehler->nummer == vomBenutzerAbgebrochen) // the message is in the user's language, the number is not
        return "Abgebrochen";
    return fehler->meldung.value_or("Fehler " + std::to_string(fehler->nummer));
}

std::optional<std::string> Volltunnel::warteAufHelfer() {
    std::remove((stoppPfad_ + ".fehler").c_str());
    for (int blick = 0; blick <= startblicke; ++blick) {
        if (blick > 0)
            a_.uhr.schlafe(blickabstand);
        if (markeLiegt())
            return std::nullopt;
        if (const auto fehler = fehlertext(); !fehler.empty())
            return "zurückgebaut — " + std::string(beschnitten(fehler));
    }
    bitteUmStopp(); // one that comes up after all must not run unseen
    return "Helfer meldet sich nicht (siehe " + protokollPfad_ + ")";
}

void Volltunnel::bitteUmStopp() {
    legeElternordnerAn(stoppPfad_);
    schreibeAtomar(stoppPfad_, "", Haltbarkeit::fluechtig);
}

void Volltunnel::gibAuf() {
    aufgegeben_ = true; // before the request, or a start that removes it would not know
    bitteUmStopp();
}

bool Volltunnel::bestaetige() {
    laeuft_ = markeLiegt();
    return laeuft_;
}

bool Volltunnel::stoppeUebriggebliebenen() {
    stopp();
    if (!markeLiegt())
        return true;
    entferneMarke();
    return false;
}

void Volltunnel::entferneMarke() {
    std::remove((stoppPfad_ + ".laeuft").c_str());
}

bool Volltunnel::stoppGebeten() const {
    return existiert(stoppPfad_);
}

void Volltunnel::stopp() {
    bitteUmStopp();
    for (int blick = 0; blick < stoppblicke && markeLiegt(); ++blick)
        a_.uhr.schlafe(blickabstand);
    laeuft_ = false;
}

bool Volltunnel::markeLiegt() const {
    return existiert(stoppPfad_ + ".laeuft");
}

/// What the helper wrote; what is no text counts as nothing, in the start as well as later.
std::string Volltunnel::fehlertext() const {
    std::string bytes = liesDatei(stoppPfad_ + ".fehler").value_or("");
    return alsUtf8(bytes) == bytes ? bytes : "";
}

std::string Volltunnel::grund() const {
    return std::string(beschnitten(fehlertext()));
}

} // namespace mobilsteg
