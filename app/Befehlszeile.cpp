#include "app/Befehlszeile.hpp"

#include <cstdlib>

namespace mobilsteg {

Befehlszeile Befehlszeile::lies(const std::vector<std::string>& worte) {
    Befehlszeile zeile;
    for (std::size_t i = 0; i < worte.size(); ++i) {
        const std::string& wort = worte[i];
        const auto ordner = [&](std::optional<std::string>& ziel) {
            if (i + 1 == worte.size() || worte[i + 1].empty())
                zeile.fehler = wort + " braucht einen Ordner";
            else
                ziel = worte[++i];
        };
        if (wort == "--terminal")
            zeile.tat = zeile.tat == Tat::menueleiste ? Tat::terminal : zeile.tat;
        else if (wort == "--aufraeumen")
            zeile.tat = Tat::aufraeumen;
        else if (wort == "--anmeldung")
            zeile.tat = Tat::anmeldung;
        else if (wort == "--waechter" && i + 1 < worte.size()) {
            zeile.tat = Tat::waechter;
            zeile.bewachter = std::atoi(worte[++i].c_str());
        } else if (wort == "--selbsttest")
            zeile.tat = Tat::selbsttest;
        else if (wort == "--hilfe" || wort == "-h" || wort == "--help")
            zeile.tat = Tat::hilfe;
        else if (wort == "--version")
            zeile.tat = Tat::version;
        else if (wort == "--heim")
            ordner(zeile.heim);
        else if (wort == "--wurzel")
            ordner(zeile.wurzel);
        else
            zeile.fehler = "Unbekannte Option: " + wort;
        if (!zeile.fehler.empty())
            break;
    }
    return zeile;
}

std::string hilfetext(const std::string& programm) {
    return "Aufruf: " + programm +
           " [OPTIONEN]\n"
           "\n"
           "Bringt den Mac über das USB-Kabel mit dem Android-Handy ins Netz.\n"
           "\n"
           "  --terminal     das Panel im Terminal statt in der Menüleiste\n"
           "  --heim DIR     DIR statt des eigenen Heimordners\n"
           "  --wurzel DIR   alle Werkzeuge des Systems unterhalb von DIR suchen\n"
           "  --aufraeumen   zurücknehmen, was ein früherer Lauf am Mac hinterlassen hat: hilft, wenn das "
           "Internet weg ist\n"
           "  --anmeldung    dasselbe, aber nichts, solange ein Bordlotse läuft\n"
           "  --selbsttest   zeigen, was das Programm vom System sieht\n"
           "  --hilfe        diese Hilfe\n"
           "  --version      die Version\n";
}

} // namespace mobilsteg
