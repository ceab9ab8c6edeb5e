#include "ansicht/Browser.hpp"
#include "app/Dienste.hpp"
#include "handy/Adbserver.hpp"
#include "handy/Ports.hpp"
#include "kabel/Protokoll.hpp"
#include "kabel/Verbindung.hpp"
#include "netz/Variante.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Lauf.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace mobilsteg {

namespace {

constexpr const char* helfername = "/mobilsteg-volltunnel";

bool lauscht(int port) {
    const Deskriptor socket(::socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in adresse{};
    adresse.sin_family = AF_INET;
    adresse.sin_port = htons(static_cast<std::uint16_t>(port));
    adresse.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(socket.nummer(), reinterpret_cast<const sockaddr*>(&adresse), sizeof adresse) == 0;
}

/// Whether the file could be written or, if it is not there, created with the folders that lead to it.
bool beschreibbar(std::filesystem::path pfad) {
    const bool datei = existiert(pfad.string());
    while (!datei && !existiert(pfad.string()) && pfad.has_relative_path())
        pfad = pfad.parent_path();
    std::error_code fehler;
    return ::access(pfad.c_str(), W_OK) == 0 && std::filesystem::is_directory(pfad, fehler) != datei;
}

/// Who listens at the port, by the list of `lsof`.
std::string halter(std::string_view lsof, int port) {
    for (const auto zeile : teile(lsof, '\n')) {
        const auto worte = teile(zeile, ' ');
        if (worte.size() > 3 && worte.back() == "(LISTEN)" &&
            worte[worte.size() - 2].ends_with(":" + std::to_string(port)))
            return std::string(worte[0]) + " (Prozess " + std::string(worte[1]) + ")";
    }
    return "einem anderen Programm";
}

class Selbsttest {
public:
    Selbsttest(const Befehlszeile& zeile, const std::string& kennung)
        : u_(zeile, kennung), laufender_(Laufsperre::inhaber(u_.orte.heim)) {}

    int pruefe() {
        zeigeProgramm();
        pruefeDateien();
        pruefeAdb();
        for (const int port : {socksPort, gastPortAmHandy, standPort})
            pruefePort(port);
        pruefeProxys();
        pruefeHelfer();
        pruefeWerkzeuge();
        std::printf("\n%s\n", stoerungen_ == 0 ? "Nichts steht im Weg."
                              : stoerungen_ == 1
                                  ? "Eines steht im Weg: siehe ✗."
                                  : (std::to_string(stoerungen_) + " Dinge stehen im Weg: siehe ✗.").c_str());
        return stoerungen_ == 0 ? 0 : 1;
    }

private:
    void zeigeProgramm();
    void pruefeDateien();
    void pruefeAdb();
    void pruefeHandys(const std::string& liste);
    void pruefePort(int port);
    void pruefeProxys();
    void pruefeHelfer();
    void pruefeWerkzeuge();

    static void zeile(const char* zeichen, const std::string& name, const std::string& wert) {
        constexpr std::size_t spalte = 17;
        const auto laenge = zeichenzahl(name);
        std::printf("%s %s%s%s\n", zeichen, name.c_str(),
                    std::string(laenge < spalte ? spalte - laenge : 1, ' ').c_str(), einzeilig(wert).c_str());
        std::fflush(stdout);
    }
    static void gut(const std::string& name, const std::string& wert) { zeile("✓", name, wert); }
    void schlecht(const std::string& name, const std::string& befund, const std::string& rat) {
        ++stoerungen_;
        zeile("✗", name, befund + " — " + rat);
    }
    void entweder(bool geht, const std::string& name, const std::string& wert, const std::string& rat) {
        geht ? gut(name, wert) : schlecht(name, wert, rat);
    }

    Umfeld u_;
    std::optional<Laufsperre::Inhaber> laufender_;
    std::string weiterleitungen_; ///< adb's list
    int stoerungen_ = 0;
};

void Selbsttest::zeigeProgramm() {
    const auto& b = u_.buendel;
    gut("Programm", Variante(b, *u_.ablage.speicher).anzeigename() + " " + b.version.value_or("?") + " (" +
                        b.bauversion.value_or("?") + ") · " + b.kennung);
    gut("Rechnername", rechnername());
    gut("Bordlotse", !laufender_                ? "läuft nicht"
                     : laufender_->laeufer == 0 ? "ein Wächter räumt gerade auf"
                                                : "läuft: Prozess " + std::to_string(laufender_->laeufer) +
                                                      " · Wächter " + std::to_string(laufender_->waechter));
    const auto datei = autostartFuer(u_);
    const auto jetzige = liesDatei(datei.pfad, megabyte);
    entweder(!jetzige || *jetzige == datei.inhalt, "Beim Anmelden",
             !jetzige                   ? "startet nichts"
             : *jetzige == datei.inhalt ? "startet dieses Programm: " + datei.pfad
                                        : "startet ein anderes Programm: " + datei.pfad,
             "--anmelden an setzt dieses ein, --anmelden aus keines");
}

void Selbsttest::pruefeDateien() {
    const std::string rat = "nicht zu schreiben: Besitzer und Rechte der Ordner prüfen";
    const auto id = u_.ablage.speicher->text("kabel.id");
    const bool vorgaben = !u_.ablage.ort.starts_with('/'); // the system keeps them
    entweder(vorgaben || beschreibbar(u_.ablage.ort), "Einstellungen",
             u_.ablage.ort + (id ? " · kabel.id " + *id : ""), rat);
    const auto protokoll = u_.orte.imHeim(protokollOrt);
    entweder(beschreibbar(protokoll), "Protokoll", protokoll, rat);
    entweder(beschreibbar(Laufsperre::pfad(u_.orte.heim)), "Ordner",
             std::filesystem::path(Laufsperre::pfad(u_.orte.heim)).parent_path().string(), rat);
}

void Selbsttest::pruefeAdb() {
    const auto adb = u_.adb.finden();
    if (!adb)
        return schlecht("adb", "fehlt", "brew install --cask android-platform-tools");
    const auto serverport = adbServerport();
    const bool serverLief = !serverport || lauscht(*serverport);
    const auto liste = lauf(*adb, {"devices", "-l"}, adbSekunden);
    if (!liste.gelungen())
        return schlecht("adb", *adb + " antwortet nicht", "„" + *adb + " kill-server“, dann noch einmal");
    gut("adb", *adb);
    pruefeHandys(liste.ausgabe);
    weiterleitungen_ = lauf(*adb, {"forward", "--list"}, adbSekunden).ausgabe;
    if (!serverLief && !laufender_)
        (void)lauf(*adb, {"kill-server"}, adbSekunden); // it was ours alone
}

void Selbsttest::pruefeHandys(const std::string& liste) {
    const auto geraete = Adb::lies(liste);
    if (geraete.empty())
        schlecht("Handy", "keines", "Kabel einstecken und am Handy USB-Debugging einschalten");
    for (const auto& g : geraete)
        entweder(g.zustand == "device", "Handy", g.serial + " · " + g.modell + " · " + g.zustand,
                 g.zustand == "unauthorized" ? "am Handy „USB-Debugging zulassen“ bestätigen"
                                             : "Kabel ab- und wieder anstecken");
}

void Selbsttest::pruefePort(int port) {
    const std::string name = "Port " + std::to_string(port);
    if (!lauscht(port))
        return gut(name, "frei");
    if (port == standPort && laufender_)
        return gut(name, "der Bordlotse selbst");
    if (weiterleitungen_.find(" " + tcp(port) + " " + tcp(port)) != std::string::npos)
        return gut(name, "Weiterleitung zum Handy");
    const auto lsof = lauf(u_.orte.imSystem("/usr/sbin/lsof"), {"-i", "-nP"}, adbSekunden);
    const std::string wer = "belegt von " + halter(lsof.ausgabe, port);
    if (port == gastPortAmHandy) {
        for (const int anderer : gastPorts)
            if (!lauscht(anderer))
                return gut(name, wer + "; der Bordlotse nimmt " + std::to_string(anderer));
    }
    schlecht(name, wer, "dieses Programm beenden");
}

void Selbsttest::pruefeProxys() {
    std::string grund;
    const auto dienste = u_.proxy.dienste(grund);
    const auto dienst = dienste ? u_.proxy.dienst() : std::nullopt;
    if (!dienst)
        return schlecht("Netzwerkdienst", dienste ? "keiner gefunden" : grund,
                        "Systemeinstellungen → Netzwerk ansehen");
    gut("Netzwerkdienst", *dienst);
    for (const auto& einer : *dienste) {
        const std::string name = "System-Proxy";
        const std::string an = "„" + einer.name + "“: ";
        const auto ziel = u_.proxy.adresse(einer.name);
        if (!ziel)
            schlecht(name, an + "lässt sich nicht befragen", "Systemeinstellungen → Netzwerk ansehen");
        else if (*ziel == amMac(socksPort))
            entweder(laufender_.has_value(), name, an + *ziel, "das war ein früherer Lauf: --aufraeumen");
        else if (einer.name == *dienst)
            entweder(ziel->empty(), name, an + (ziel->empty() ? "aus" : *ziel),
                     "der Bordlotse ersetzt ihn und schaltet ihn am Ende aus");
    }
    if (const auto gemerkt = u_.proxy.gemerkterDienst())
        gut("Gemerkt", "Netzwerkdienst „" + *gemerkt + "“");
}

void Selbsttest::pruefeHelfer() {
    const auto helfer = u_.buendel.ressourcen.value_or("") + helfername;
    const bool noetig =
        u_.ablage.speicher->flagge("volltunnel")
            .value_or(Variante(u_.buendel, *u_.ablage.speicher).aktuell() == Variante::Art::vpn);
    if (!u_.buendel.ressourcen || !istAusfuehrbar(helfer))
        entweder(!noetig, "Volltunnel", "der Helfer fehlt", "das Programm neu installieren");
    else
        entweder(!vertrauteDatei(helfer).empty(), "Volltunnel", helfer,
                 "andere könnten ihn verändern: Rechte prüfen");
    const auto marke =
        u_.orte.imHeim("/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp.laeuft");
    if (existiert(marke))
        entweder(laufender_.has_value(), "Volltunnel", "läuft", "das war ein früherer Lauf: --aufraeumen");
}

void Selbsttest::pruefeWerkzeuge() {
    std::string da;
    for (const std::string werkzeug :
         {"/sbin/route", "/usr/sbin/networksetup", "/usr/sbin/scutil", "/usr/sbin/lsof", "/usr/sbin/netstat",
          "/usr/bin/pgrep", "/usr/bin/mdfind", "/usr/bin/open", "/usr/bin/osascript"})
        if (istAusfuehrbar(u_.orte.imSystem(werkzeug)))
            da += " " + werkzeug;
        else
            schlecht("Werkzeug", u_.orte.imSystem(werkzeug) + " fehlt", "es gehört zu macOS");
    if (!da.empty())
        gut("Werkzeuge", da.substr(1));
    for (const auto& fund : Browser(lauf, u_.orte, *u_.ablage.speicher).finden())
        gut("Browser",
            fund.name + (fund.fahrtwind ? " mit fahrtwind · " : " ohne fahrtwind · ") + fund.appPfad);
}

} // namespace

int selbsttest(const Befehlszeile& zeile, const std::string& kennung) {
    return Selbsttest(zeile, kennung).pruefe();
}

} // namespace mobilsteg
