#include "kabel/Berichte.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <array>
#include <functional>

namespace mobilsteg {

namespace {

constexpr std::int64_t groessterAbschnitt = 1'500'000;
// More than twenty-five lines of any daemon's log, and less than any daemon's log grows to.
constexpr std::int64_t logEnde = 256 * 1024;
const std::string standschluessel = "bericht.stand";

std::vector<std::string> zeilen(std::string_view text) {
    std::vector<std::string> liste;
    for (const auto zeile : teile(text, '\n'))
        liste.emplace_back(zeile);
    return liste;
}

/// The first `anzahl` of the lines that please.
std::string auszug(std::string_view text, std::size_t anzahl,
                   const std::function<bool(std::string_view)>& gefaellt = {}) {
    auto liste = zeilen(text);
    if (gefaellt)
        std::erase_if(liste, [&](const std::string& zeile) { return !gefaellt(zeile); });
    liste.resize(std::min(liste.size(), anzahl));
    return verbunden(liste, "\n");
}

std::string letzte(std::string_view text, std::size_t anzahl) {
    auto liste = zeilen(text);
    if (liste.size() > anzahl)
        liste.erase(liste.begin(), liste.end() - static_cast<std::ptrdiff_t>(anzahl));
    return verbunden(liste, "\n");
}

bool enthaelt(std::string_view text, std::string_view stueck) {
    return text.find(stueck) != std::string_view::npos;
}

bool istWichtigeRoute(std::string_view zeile) {
    return zeile.starts_with("default") || zeile.starts_with("0/1") || zeile.starts_with("128.0/1") ||
           zeile.starts_with("100.64") || enthaelt(zeile, "utun");
}

std::string kopfzeile(const std::string& name, std::int64_t gesendet, const Berichte::Angaben& a) {
    return "# " + name + " ab Byte " + std::to_string(gesendet) + ", " + a.rechner + " (" +
           std::string(ersteZeichen(a.id, 8)) + "), " + a.ausgabe + " " + a.version.value_or("?") + " (" +
           a.bauversion.value_or("?") + ")\n";
}

} // namespace

Berichte::Berichte(Laeufer laeufer, Orte orte, Einstellungen& einstellungen,
                   std::vector<Protokolldatei> dateien)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), einstellungen_(einstellungen),
      dateien_(std::move(dateien)) {}

void Berichte::sende(Handy& handy, const Angaben& angaben) {
    sendeProtokolle(handy, angaben);
    (void)handy.bericht("mac-diagnose.txt", diagnose(angaben)); // made anew each time, so nothing is lost
}

void Berichte::sendeProtokolle(Handy& handy, const Angaben& angaben) {
    auto stand = einstellungen_.tabelle(standschluessel).value_or(Einstellungen::Tabelle{});
    for (const auto& datei : dateien_) {
        // The table lies in a file that anybody may edit.
        const std::int64_t gesendet =
            std::max<std::int64_t>(0, stand.contains(datei.name) ? stand[datei.name] : 0);
        const auto abschnitt = liesEnde(datei.pfad, gesendet, groessterAbschnitt);
        if (!abschnitt || abschnitt->bytes.empty())
            continue;
        // What the cap cuts off is never sent: a phone that hears late wants the newest lines.
        if (handy.bericht(datei.name, kopfzeile(datei.name, gesendet, angaben) + abschnitt->bytes))
            stand[datei.name] = abschnitt->laenge;
    }
    einstellungen_.setzeTabelle(standschluessel, stand);
}

std::string Berichte::ausgabe(const std::string& werkzeug, const std::vector<std::string>& argumente,
                              double sekunden) const {
    return laeufer_(orte_.imSystem(werkzeug), argumente, sekunden).ausgabe;
}

std::string Berichte::diagnose(const Angaben& a) const {
    const auto jaNein = [](bool wert) { return wert ? "true" : "false"; };
    std::string text = "# mac-diagnose " + isoZeit(a.zeit) + " · Phase: " + a.phase +
                       " · Volltunnel: " + jaNein(a.volltunnel) + " · Proxy: " + jaNein(a.proxy) + "\n";
    text += "## route default\n" + ausgabe("/sbin/route", {"-n", "get", "default"}, 5);
    text += "## routen (Auszug)\n" +
            auszug(ausgabe("/usr/sbin/netstat", {"-rn", "-f", "inet"}, 5), 20, istWichtigeRoute) + "\n";
    text +=
        "## dns\n" +
        auszug(ausgabe("/usr/sbin/scutil", {"--dns"}, 5), 12,
               [](auto zeile) { return enthaelt(zeile, "nameserver") || enthaelt(zeile, "resolver #"); }) +
        "\n";
    text += "## schnittstellen\n" + auszug(ausgabe("/usr/sbin/scutil", {"--nwi"}, 5), 16) + "\n";
    return text + tailscaleDiagnose();
}

std::optional<std::string> Berichte::tailscale() const {
    std::vector<std::string> kandidaten;
    const std::string gefunden =
        ausgabe("/usr/bin/mdfind",
                {"kMDItemCFBundleIdentifier == 'io.tailscale.ipn.macsys' || kMDItemCFBundleIdentifier == "
                 "'io.tailscale.ipn.macos'"},
                8);
    if (const auto liste = zeilen(gefunden); !liste.empty())
        kandidaten.push_back(orte_.imSystem(liste.front() + "/Contents/MacOS/Tailscale"));
    for (const char* pfad : {"/Applications/Tailscale.app/Contents/MacOS/Tailscale",
                             "/usr/local/bin/tailscale", "/opt/homebrew/bin/tailscale"})
        kandidaten.push_back(orte_.imSystem(pfad));
    const auto treffer = std::find_if(kandidaten.begin(), kandidaten.end(), istAusfuehrbar);
    return treffer == kandidaten.end() ? std::nullopt : std::optional(*treffer);
}

std::string Berichte::tailscaleDiagnose() const {
    std::string text;
    if (const auto programm = tailscale()) {
        text += "## tailscale status\n" + auszug(laeufer_(*programm, {"status"}, 10).ausgabe, 8) + "\n";
        text += "## tailscale netcheck\n" + auszug(laeufer_(*programm, {"netcheck"}, 25).ausgabe, 14) + "\n";
    }
    for (const char* pfad : {"/opt/homebrew/var/log/tailscaled.log", "/usr/local/var/log/tailscaled.log"}) {
        if (const auto log = liesEnde(orte_.imSystem(pfad), 0, logEnde)) {
            text += "## tailscaled.log (letzte 25)\n" + letzte(alsUtf8(log->bytes), 25) + "\n";
            break;
        }
    }
    return text;
}

} // namespace mobilsteg
