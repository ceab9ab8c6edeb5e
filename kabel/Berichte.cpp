#include "kabel/Berichte.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

constexpr std::int64_t groessterAbschnitt = 1'500'000;
// Enough for 25 lines; the log itself may be far larger.
constexpr std::int64_t logEnde = 256 * 1024;
const std::string standschluessel = "bericht.stand";

bool enthaelt(std::string_view text, std::string_view stueck) {
    return text.find(stueck) != std::string_view::npos;
}

using Zeilenfilter = bool (*)(std::string_view zeile);

/// The first `anzahl` of the lines that pass; of all lines without a filter.
std::string auszug(std::string_view text, std::size_t anzahl, Zeilenfilter passt = nullptr) {
    std::vector<std::string> liste;
    for (const auto zeile : teile(text, '\n'))
        if (liste.size() < anzahl && (passt == nullptr || passt(zeile)))
            liste.emplace_back(zeile);
    return verbunden(liste, "\n");
}

std::string letzte(std::string_view text, std::size_t anzahl) {
    const auto alle = teile(text, '\n');
    return verbunden({alle.end() - static_cast<std::ptrdiff_t>(std::min(alle.size(), anzahl)), alle.end()},
                     "\n");
}

bool istWichtigeRoute(std::string_view zeile) {
    return zeile.starts_with("default") || zeile.starts_with("0/1") || zeile.starts_with("128.0/1") ||
           zeile.starts_with("100.64") || enthaelt(zeile, "utun");
}

} // namespace

Berichte::Berichte(Laeufer laeufer, Orte orte, Einstellungen& einstellungen,
                   std::vector<Protokolldatei> dateien)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), einstellungen_(einstellungen),
      dateien_(std::move(dateien)) {}

void Berichte::sende(Handy& handy, const Angaben& a) {
    const std::string absender = a.rechner + " (" + std::string(ersteZeichen(a.id, 8)) + "), " + a.ausgabe +
                                 " " + a.version.value_or("?") + " (" + a.bauversion.value_or("?") + ")\n";
    auto stand = einstellungen_.tabelle(standschluessel).value_or(Einstellungen::Tabelle{});
    for (const auto& datei : dateien_) {
        // The table lies in a file that anybody may edit.
        const auto gesendet = std::max<std::int64_t>(0, stand.contains(datei.name) ? stand[datei.name] : 0);
        const auto abschnitt = liesEnde(datei.pfad, gesendet, groessterAbschnitt);
        if (!abschnitt || abschnitt->bytes.empty())
            continue;
        // What the cap cuts off is never sent: a phone that hears late wants the newest lines.
        const auto kopf = "# " + datei.name + " ab Byte " + std::to_string(gesendet) + ", " + absender;
        if (handy.bericht(datei.name, kopf + abschnitt->bytes))
            stand[datei.name] = abschnitt->laenge;
    }
    einstellungen_.setzeTabelle(standschluessel, stand);
    (void)handy.bericht("mac-diagnose.txt", diagnose(a)); // made anew each time, so nothing is lost
}

std::string Berichte::ausgabe(const std::string& werkzeug, const std::vector<std::string>& argumente,
                              double sekunden) const {
    return laeufer_(orte_.imSystem(werkzeug), argumente, sekunden).ausgabe;
}

std::string Berichte::diagnose(const Angaben& a) const {
    const auto jaNein = [](bool wert) { return wert ? "true" : "false"; };
    const auto istDns = [](std::string_view zeile) {
        return enthaelt(zeile, "nameserver") || enthaelt(zeile, "resolver #");
    };
    std::string text = "# mac-diagnose " + isoZeit(a.zeit) + " · Phase: " + a.phase +
                       " · Volltunnel: " + jaNein(a.volltunnel) + " · Proxy: " + jaNein(a.proxy) + "\n";
    text += "## route default\n" + ausgabe("/sbin/route", {"-n", "get", "default"}, 5);
    text += "## routen (Auszug)\n" +
            auszug(ausgabe("/usr/sbin/netstat", {"-rn", "-f", "inet"}, 5), 20, istWichtigeRoute);
    text += "\n## dns\n" + auszug(ausgabe("/usr/sbin/scutil", {"--dns"}, 5), 12, istDns);
    text += "\n## schnittstellen\n" + auszug(ausgabe("/usr/sbin/scutil", {"--nwi"}, 5), 16) + "\n";
    return text + tailscaleDiagnose();
}

std::optional<std::string> Berichte::tailscale() const {
    std::vector<std::string> kandidaten = {
        orte_.imSystem("/Applications/Tailscale.app/Contents/MacOS/Tailscale"),
        orte_.imSystem("/usr/local/bin/tailscale"), orte_.imSystem("/opt/homebrew/bin/tailscale")};
    const std::string gefunden =
        ausgabe("/usr/bin/mdfind",
                {"kMDItemCFBundleIdentifier == 'io.tailscale.ipn.macsys' || kMDItemCFBundleIdentifier == "
                 "'io.tailscale.ipn.macos'"},
                8);
    // What lies elsewhere may be a download that only calls itself so.
    for (const auto zeile : teile(gefunden, '\n')) {
        const std::string pfad(zeile);
        const bool imHeim = pfad.starts_with(orte_.imHeim("/Applications/"));
        if (absoluterPfad(pfad) != pfad || !(imHeim || pfad.starts_with("/Applications/")))
            continue;
        kandidaten.insert(kandidaten.begin(),
                          (imHeim ? pfad : orte_.imSystem(pfad)) + "/Contents/MacOS/Tailscale");
        break;
    }
    const auto programm = std::find_if(kandidaten.begin(), kandidaten.end(), istAusfuehrbar);
    return programm == kandidaten.end() ? std::nullopt : std::optional(*programm);
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
