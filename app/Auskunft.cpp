#include "app/Dienste.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "kabel/Stand.hpp"
#include "netz/Variante.hpp"
#include "plattform/Autostart.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace mobilsteg {

namespace {

using Alter = std::filesystem::file_time_type;

constexpr auto frisch = std::chrono::seconds(30); // a step may wait for tools

Alter geaendert(const std::string& pfad) {
    std::error_code fehler;
    const auto zeit = std::filesystem::last_write_time(pfad, fehler);
    return fehler ? Alter::min() : zeit;
}

} // namespace

int standauskunft(const Befehlszeile& zeile) {
    const Orte orte = orteAus(zeile);
    const auto laufender = Laufsperre::inhaber(orte.heim);
    if (!laufender || laufender->laeufer == 0) {
        std::fputs(laufender ? "Läuft nicht: Ein Wächter räumt gerade auf\n" : "Läuft nicht\n",
                   zeile.json ? stderr : stdout);
        return 1;
    }
    const std::string pfad = orte.imHeim(standOrt);
    const auto bytes = liesDatei(pfad, megabyte).value_or("");
    const auto geschrieben = geaendert(pfad);
    auto text = standzeile(bytes);
    // An earlier run's document lies there until the first step is over.
    if (text.empty() || geschrieben < geaendert(Laufsperre::pfad(orte.heim)))
        text = "Startet";
    else if (const auto alter = Alter::clock::now() - geschrieben; alter > frisch)
        text += " · seit " + std::to_string(std::chrono::duration_cast<std::chrono::seconds>(alter).count()) +
                " Sekunden nichts Neues";
    std::printf("%s\n", zeile.json ? bytes.c_str() : text.c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

Autostart autostartFuer(const Umfeld& umfeld) {
    return autostart(umfeld.orte, umfeld.buendel.kennung,
                     Variante(umfeld.buendel, *umfeld.ablage.speicher).anzeigename(), eigenesProgramm());
}

int anmeldestart(const Befehlszeile& zeile, const std::string& kennung) {
    const Umfeld umfeld(zeile, kennung);
    const auto datei = autostartFuer(umfeld);
    const bool an = zeile.anmelden == "an";
    errno = 0;
    const bool getan = an ? legeElternordnerAn(datei.pfad) &&
                                schreibeAtomar(datei.pfad, datei.inhalt, Haltbarkeit::dauerhaft)
                          : std::remove(datei.pfad.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
    if (!getan) {
        std::printf("%s lässt sich nicht %s: %s\n", datei.pfad.c_str(), an ? "schreiben" : "entfernen",
                    fehlerbeschreibung(errno).c_str());
        return 1;
    }
    if (an)
        std::printf("Startet von jetzt an beim Anmelden: %s\n", datei.pfad.c_str());
    else
        std::printf("Startet nicht mehr beim Anmelden\n");
    return 0;
}

} // namespace mobilsteg
