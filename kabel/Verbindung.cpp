#include "kabel/Verbindung.hpp"

#include "netz/SystemProxy.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr double forwardSekunden = 10;
constexpr double abbauSekunden = 5;

bool istBelegt(const Ergebnis& ergebnis) {
    return ergebnis.status != 0 && ergebnis.fehler.find("already in use") != std::string::npos;
}

std::string belegungstext(const Ergebnis& socks, const Ergebnis& gastseite) {
    if (istBelegt(socks))
        return "Port " + std::to_string(socksPort) + " ist auf diesem Mac belegt";
    if (!istBelegt(gastseite))
        return "";
    std::string ports;
    for (const int port : gastPorts)
        ports += (port == gastPorts.front()  ? ""
                  : port == gastPorts.back() ? " und "
                                             : ", ") +
                 std::to_string(port);
    return "Ports " + ports + " sind auf diesem Mac belegt";
}

} // namespace

std::string tcp(int port) {
    return "tcp:" + std::to_string(port);
}

Verbindung::Verbindung(Adb adb, Laeufer laeufer, Handy handy, Einstellungen& einstellungen)
    : adb_(std::move(adb)), laeufer_(std::move(laeufer)), handy_(std::move(handy)),
      andereGastPorts_(einstellungen, "kabel.gastport") {}

bool Verbindung::findeAdb() {
    if (!adbPfad_)
        adbPfad_ = adb_.finden();
    return adbPfad_.has_value();
}

Verbindung::Fund Verbindung::sucheHandy() {
    const auto geraete = adb_.geraete(*adbPfad_);
    const auto inZustand = [&](const char* zustand, bool nurAmKabel = false) {
        return std::find_if(geraete.begin(), geraete.end(), [&](const auto& g) {
            return g.zustand == zustand && (g.amKabel || !nurAmKabel);
        });
    };
    auto bereit = inZustand("device", true);
    if (bereit == geraete.end())
        bereit = inZustand("device");
    if (bereit == geraete.end())
        return inZustand("unauthorized") == geraete.end() ? Fund::keins : Fund::unautorisiert;
    if (serial_ == bereit->serial)
        return Fund::dasselbe;
    serial_ = bereit->serial;
    forwards_ = false;
    handyName_ = bereit->modell.empty() ? bereit->serial : bereit->modell;
    return Fund::neues;
}

void Verbindung::vergissHandy() {
    serial_.reset();
    forwards_ = false;
    belegtePorts_.clear();
}

Ergebnis Verbindung::leiteEinenWeiter(int lokal, int amHandy) const {
    return laeufer_(*adbPfad_, {"-s", *serial_, "forward", tcp(lokal), tcp(amHandy)}, forwardSekunden);
}

Ergebnis Verbindung::leiteGastseiteWeiter(std::vector<std::string>& zeilen) {
    // With 8080 still in use it is tried twice; whoever held it may just have let go.
    std::vector<int> ports = {handy_.gastPort};
    ports.insert(ports.end(), gastPorts.begin(), gastPorts.end());
    auto noten = andereGastPorts_.lies();
    std::erase_if(noten, [this](const auto& port) { return fremdeGastPorts_.contains(port); });
    fremdeGastPorts_.clear();
    Ergebnis letztes;
    for (const int port : ports) {
        if (port != gastPortAmHandy)
            merkeAndereGastPorts();
        letztes = leiteEinenWeiter(port, gastPortAmHandy);
        if (letztes.status == 0) {
            if (port != gastPortAmHandy || handy_.gastPort != gastPortAmHandy)
                zeilen.push_back("Gästeseite lokal auf Port " + std::to_string(port) +
                                 (port != gastPortAmHandy ? " (8080 belegt)" : ""));
            handy_.gastPort = port;
            if (port != gastPortAmHandy)
                noten.insert(std::to_string(port));
            andereGastPorts_.schreibe(noten);
        }
        if (!istBelegt(letztes))
            break;
        fremdeGastPorts_.insert(std::to_string(port));
    }
    return letztes;
}

/// Before one of them is tried: a call that is cut off, or a run that dies in the middle of it, may leave it
/// standing. All at once, and without effect while they are noted: all may be taken for days.
void Verbindung::merkeAndereGastPorts() {
    auto noten = andereGastPorts_.lies();
    for (const int port : gastPorts)
        if (port != gastPortAmHandy)
            noten.insert(std::to_string(port));
    andereGastPorts_.schreibe(noten);
}

std::vector<std::string> Verbindung::leiteWeiter() {
    std::vector<std::string> zeilen;
    if (forwards_)
        return zeilen;
    nimmUebriggebliebeneWeg();
    forwardSerial_ = serial_;
    const Ergebnis socks = leiteEinenWeiter(socksPort, socksPort);
    const Ergebnis gastseite = leiteGastseiteWeiter(zeilen);
    forwards_ = socks.status == 0 && gastseite.status == 0;
    belegtePorts_ = belegungstext(socks, gastseite);
    if (!forwards_) {
        const auto& grund = socks.status != 0 ? socks.fehler : gastseite.fehler;
        zeilen.push_back(std::string("adb forward scheitert: ") + (socks.status != 0 ? "1080 " : "") +
                         (gastseite.status != 0 ? "Gästeseite " : "") + "-- " +
                         std::string(beschnitten(grund)));
    }
    return zeilen;
}

bool Verbindung::wegSteht() {
    const auto liste = adb_.forwards(*adbPfad_);
    const std::string unserer = *serial_ + " " + tcp(socksPort) + " " + tcp(socksPort);
    const auto zeilen = teile(liste, '\n');
    const bool steht = std::any_of(zeilen.begin(), zeilen.end(),
                                   [&](auto zeile) { return beschnitten(zeile) == unserer; }) &&
                       handy_.proxyGruesst();
    forwards_ = forwards_ && steht;
    return steht;
}

std::optional<Antwort> Verbindung::meldeAn(const std::string& id, const std::string& name,
                                           const std::vector<std::string>& vpnZiele) {
    auto antwort = handy_.anmelden(id, name, vpnZiele);
    if (!antwort)
        forwards_ = false; // adb loses them silently when its server restarts
    return antwort;
}

std::optional<std::string> Verbindung::beweise() {
    auto adresse = handy_.austrittsIP();
    if (adresse) {
        austrittIntern_ = *adresse;
        zuletztGueltig_ = true;
    }
    return adresse;
}

void Verbindung::verwirfBeweis() {
    zuletztGueltig_ = false;
    austrittIntern_.clear();
}

/// A run that was killed left its forward at a port that this one may not need: adb would keep it for good.
void Verbindung::nimmUebriggebliebeneWeg() {
    for (const auto& port : andereGastPorts_.lies())
        if (port != std::to_string(handy_.gastPort) && !fremdeGastPorts_.contains(port) &&
            entferne(*serial_, "tcp:" + port))
            andereGastPorts_.vergiss(port);
}

bool Verbindung::entferne(const std::string& serial, const std::string& lokal) const {
    const auto ergebnis = laeufer_(*adbPfad_, {"-s", serial, "forward", "--remove", lokal}, abbauSekunden);
    return ergebnis.status == 0 || ergebnis.status == 1; // 1: there is no such forward, or no such phone
}

void Verbindung::baueAb() {
    if (!forwardSerial_)
        return;
    (void)entferne(*forwardSerial_, tcp(socksPort));
    auto noten = andereGastPorts_.lies();
    auto ports = noten;
    ports.insert(std::to_string(handy_.gastPort));
    for (const auto& port : ports)
        if (fremdeGastPorts_.contains(port) || entferne(*forwardSerial_, "tcp:" + port))
            noten.erase(port);
    andereGastPorts_.schreibe(noten);
}

} // namespace mobilsteg
