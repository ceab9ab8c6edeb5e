#include "app/Dienste.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "handy/Adb.hpp"
#include "handy/Ports.hpp"
#include "kabel/Protokoll.hpp"
#include "kabel/Verbindung.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

namespace {

bool istUnserForward(std::string_view lokal, std::string_view amHandy) {
    if (amHandy == tcp(socksPort))
        return lokal == tcp(socksPort);
    return amHandy == tcp(gastPortAmHandy) &&
           std::any_of(gastPorts.begin(), gastPorts.end(), [&](int port) { return lokal == tcp(port); });
}

/// Takes back one thing after the other: each is named before it is tried, and on the same line it is told
/// what came of it.
class Aufraeumer {
public:
    /// Without a log it says nothing. `vonHand`: somebody is there who can give a password.
    Aufraeumer(Umfeld& umfeld, Uhr& uhr, Protokoll* protokoll = nullptr, bool vonHand = false)
        : umfeld_(umfeld), uhr_(uhr), protokoll_(protokoll), vonHand_(vonHand) {}

    /// Not `endgueltig`: the notes stay, because a tool of the dead run may do its work only now.
    void raeume(bool endgueltig = true) {
        nimmProxysWeg(endgueltig); // first: it is what cuts the Mac off
        beendeHelfer();
        entferneForwards();
    }

    [[nodiscard]] bool alles() const { return blieb_.empty(); }

    void urteile() const {
        if (alles())
            return sage(getan_ ? "Aufgeräumt: Vom Bordlotsen ist nichts mehr übrig."
                               : "Nichts zu tun: Vom Bordlotsen ist nichts übrig.");
        sage("Nicht alles ließ sich zurücknehmen: " + verbunden(blieb_, ", ") + ".");
        for (const auto& rat : raete_)
            sage("Von Hand: " + rat + ".");
    }

    void sage(const std::string& text) const {
        drucke(text, "\n");
        merke(text);
    }

private:
    void nimmProxysWeg(bool endgueltig);
    [[nodiscard]] bool nimmWeg(const std::string& dienst, SystemProxy::Ziel ziel);
    void beendeHelfer();
    void entferneForwards();

    void beginne(const std::string& was) {
        was_ = was;
        drucke(was, " … ");
    }
    void ende(const std::string& befund) {
        drucke(befund, "\n");
        merke(was_ + ": " + befund);
    }
    void bleibt(const std::string& was, const std::string& rat) {
        blieb_.push_back(was);
        if (raete_.empty() || raete_.back() != rat)
            raete_.push_back(rat);
    }
    void merke(const std::string& text) const {
        if (protokoll_ != nullptr)
            protokoll_->schreibe("Aufräumen: " + text);
    }

    void drucke(const std::string& text, const char* dahinter) const {
        if (protokoll_ == nullptr)
            return;
        std::fputs((einzeilig(text) + dahinter).c_str(), stdout);
        std::fflush(stdout);
    }

    Umfeld& umfeld_;
    Uhr& uhr_;
    Protokoll* protokoll_;
    std::string was_;
    bool vonHand_, getan_ = false;
    std::vector<std::string> blieb_, raete_;
};

/// False: the service's proxy is ours, or may be, and stays.
bool Aufraeumer::nimmWeg(const std::string& dienst, SystemProxy::Ziel ziel) {
    const bool gemerkt = umfeld_.proxy.gemerkterDienst() == dienst;
    if (ziel != SystemProxy::Ziel::wir && !gemerkt) {
        const bool unbekannt = ziel == SystemProxy::Ziel::unbekannt;
        ende(unbekannt ? "lässt sich nicht befragen" : "zeigt nicht auf " + amMac(socksPort));
        return !unbekannt;
    }
    const auto grund = umfeld_.proxy.entfernen(dienst, SystemProxy::scheitern);
    const bool vergessen = gemerkt && !umfeld_.proxy.gemerkterDienst();
    ende(!grund      ? "ausgeschaltet"
         : vergessen ? "den Netzwerkdienst gibt es nicht mehr, vergessen"
                     : "nicht ausgeschaltet: " + *grund);
    getan_ = getan_ || !grund || vergessen;
    return !grund || vergessen;
}

void Aufraeumer::nimmProxysWeg(bool endgueltig) {
    const std::string rat =
        "Systemeinstellungen → Netzwerk → der Dienst → Details → Proxys → SOCKS-Proxy aus, "
        "mit dem Konto eines Administrators";
    // The settings may be damaged, and another edition keeps its own: so every service is asked itself.
    beginne("Netzwerkdienste");
    std::string grund;
    const auto gefundene = umfeld_.proxy.dienste(grund);
    ende(gefundene ? std::to_string(gefundene->size()) : "lassen sich nicht befragen: " + grund);
    if (!gefundene)
        bleibt("die Netzwerkdienste", rat);
    std::vector<std::string> namen;
    for (const auto& dienst : gefundene.value_or(std::vector<Netzwerkdienst>{}))
        namen.push_back(dienst.name);
    if (const auto gemerkt = umfeld_.proxy.gemerkterDienst();
        gemerkt && std::find(namen.begin(), namen.end(), *gemerkt) == namen.end())
        namen.push_back(*gemerkt);
    for (const auto& name : namen) {
        beginne("System-Proxy „" + name + "“");
        if (!nimmWeg(name, umfeld_.proxy.ziel(name)))
            bleibt("System-Proxy „" + name + "“", rat);
    }
    if (endgueltig && alles()) // a note that stayed would switch off a proxy which the user sets from now on
        umfeld_.proxy.vergissUngewisse();
    if (const auto fehler = umfeld_.ablage.speicher->speicherfehler())
        bleibt("der Merkzettel",
               "Die Einstellungen lassen sich nicht schreiben (" + *fehler + "): " + umfeld_.ablage.ort);
}

void Aufraeumer::beendeHelfer() {
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    const auto skript = adminskriptFuer(umfeld_.orte);
    const Variante variante(umfeld_.buendel, *umfeld_.ablage.speicher);
    Volltunnel volltunnel({haupt, uhr_, *skript, variante, umfeld_.buendel.ressourcen, umfeld_.orte});
    beginne("Volltunnel");
    const auto wie = volltunnel.raeumeWeg();
    ende(wie == Volltunnel::Ende::keinHelfer ? "keiner läuft"
         : wie == Volltunnel::Ende::gegangen ? "beendet, Routen und DNS zurückgebaut"
                                             : "der Helfer antwortet nicht und gilt als tot");
    getan_ = getan_ || wie != Volltunnel::Ende::keinHelfer;
    if (wie == Volltunnel::Ende::verstummt)
        bleibt("der Volltunnel", "gegen Routen eines toten Helfers hilft ein Neustart");
    if (!volltunnel.hinterliess())
        return;
    beginne("DNS und Wege eines getöteten Helfers");
    std::optional<std::string> grund = "dafür fragt --aufraeumen nach dem Passwort";
    if (vonHand_) {
        haupt.async([&] {
            grund = volltunnel.nimmZurueck();
            haupt.halt();
        });
        haupt.laufe();
    }
    ende(grund ? "bleiben: " + *grund : "zurückgenommen");
    getan_ = getan_ || !grund;
    if (grund)
        bleibt("DNS", "Systemeinstellungen → Netzwerk → der Dienst → Details → DNS");
}

void Aufraeumer::entferneForwards() {
    beginne("Weiterleitungen");
    const auto adb = umfeld_.adb.finden();
    if (!adb)
        return ende("adb ist nicht da, also gibt es keine");
    const std::string rat = "„adb kill-server“ nimmt die Weiterleitungen mit";
    const auto liste = umfeld_.laeufer(*adb, {"forward", "--list"}, adbSekunden);
    if (!liste.gelungen()) {
        ende("lassen sich nicht befragen: " + SystemProxy::scheitern(liste, "adb"));
        return bleibt("die Weiterleitungen", rat);
    }
    int entfernte = 0;
    std::vector<std::string> misslungene;
    for (const auto zeile : teile(liste.ausgabe, '\n')) {
        const auto worte = teile(beschnitten(zeile), ' ');
        if (worte.size() != 3 || !istUnserForward(worte[1], worte[2]))
            continue;
        const std::vector<std::string> weg = {"-s", std::string(worte[0]), "forward", "--remove",
                                              std::string(worte[1])};
        if (const auto ergebnis = umfeld_.laeufer(*adb, weg, adbSekunden); ergebnis.gelungen())
            ++entfernte;
        else
            misslungene.push_back(std::string(worte[1]) +
                                  " nicht entfernt: " + SystemProxy::scheitern(ergebnis, "adb"));
    }
    getan_ = getan_ || entfernte > 0;
    const bool keine = entfernte == 0 && misslungene.empty();
    if (entfernte > 0)
        misslungene.insert(misslungene.begin(), std::to_string(entfernte) + " entfernt");
    ende(keine ? "keine gefunden" : verbunden(misslungene, "; "));
    if (misslungene.size() > (entfernte > 0 ? 1U : 0U))
        bleibt("die Weiterleitungen", rat);
}

} // namespace

Umfeld::Umfeld(const Befehlszeile& zeile, const std::string& kennung)
    : Umfeld(orteAus(zeile), eigenesBuendel(kennung), einstellungenFuer(orteAus(zeile), kennung), lauf) {}

bool raeumeNachTodAuf(Umfeld& umfeld, Uhr& uhr) {
    // Nobody ends the dead one's tools at their limits now: one that was switching a proxy on may come up to
    // ten seconds late.
    for (int blicke = umfeld.proxy.hatFruehere() ? 6 : 1; blicke > 0; --blicke) {
        Aufraeumer(umfeld, uhr).raeume(false);
        uhr.schlafe(std::chrono::seconds(2));
    }
    Aufraeumer letzter(umfeld, uhr);
    letzter.raeume();
    return letzter.alles();
}

int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung) {
    Umfeld umfeld(zeile, kennung);
    Systemuhr uhr;
    Protokoll protokoll(umfeld.orte.imHeim(protokollOrt), uhr);
    Aufraeumer aufraeumer(umfeld, uhr, &protokoll, zeile.tat == Befehlszeile::Tat::aufraeumen);
    if (const auto laufender = Laufsperre::inhaber(umfeld.orte.heim)) {
        if (zeile.tat == Befehlszeile::Tat::anmeldung)
            return 0; // it has cleaned up itself, and its own proxy is to stay
        const std::string wer = laufender->laeufer == 0 ? "Ein Wächter räumt gerade auf"
                                                        : "Ein Bordlotse läuft (Prozess " +
                                                              std::to_string(laufender->laeufer) + ")";
        if (!zeile.trotzdem) {
            aufraeumer.sage(wer + ", deshalb bleibt alles, wie es ist: erst beenden, oder --trotzdem.");
            return 1;
        }
        aufraeumer.sage("Achtung: " + wer + " und setzt alles wieder, sobald das Handy freigibt.");
    }
    aufraeumer.raeume();
    aufraeumer.urteile();
    return aufraeumer.alles() ? 0 : 1;
}

} // namespace mobilsteg
