#include "app/Befehlszeile.hpp"

#include "ansicht/terminal/Befehle.hpp"
#include "handy/Ports.hpp"
#include "plattform/Text.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

const Option* finde(std::string_view name) {
    if (name == "-h" || name == "--help")
        name = "--hilfe";
    const auto* stelle = std::find_if(optionen.begin(), optionen.end(),
                                      [&](const Option& option) { return option.name == name; });
    return stelle == optionen.end() ? nullptr : stelle;
}

/// Empty: the value may stand behind the option; else what is wrong with it.
std::string einwand(const Option& option, const std::optional<std::string>& wert) {
    const std::string name(option.name);
    if (option.argument.empty())
        return wert ? name + " nimmt keinen Wert" : "";
    if (option.argument == "DIR")
        return wert.value_or("").empty() ? name + " braucht einen Ordner" : "";
    const auto erlaubt = teile(option.argument, '|');
    const bool passt =
        erlaubt.size() == 1 || std::find(erlaubt.begin(), erlaubt.end(), wert.value_or("")) != erlaubt.end();
    return wert && passt ? "" : "So geht die Option: " + name + " " + std::string(option.argument);
}

constexpr std::size_t breite = 80;
constexpr std::size_t einzug = 2;

/// Adds the text, broken between words, from the column `spalte` on; `text` already stands at `jetzt`.
void umbrich(std::string& ziel, std::size_t jetzt, std::size_t spalte, std::string_view text) {
    for (const auto wort : teile(text, ' ')) {
        const auto laenge = zeichenzahl(wort);
        if (jetzt > spalte && jetzt + 1 + laenge > breite) {
            ziel += "\n";
            jetzt = 0;
        }
        const std::size_t luecke = jetzt < spalte ? spalte - jetzt : jetzt == spalte ? 0 : 1;
        ziel += std::string(luecke, ' ') + std::string(wort);
        jetzt += luecke + laenge;
    }
    ziel += "\n";
}

} // namespace

Befehlszeile Befehlszeile::lies(const std::vector<std::string>& worte) {
    Befehlszeile zeile;
    std::string gewaehlt; // the option that told what is to be done
    const Option* beiwerk = nullptr;
    for (std::size_t i = 0; i < worte.size() && zeile.fehler.empty(); ++i) {
        const auto gleich = worte[i].find('=');
        const Option* option = finde(std::string_view(worte[i]).substr(0, gleich));
        if (option == nullptr) {
            zeile.fehler = "Unbekannte Option: " + worte[i];
            break;
        }
        std::optional<std::string> wert;
        if (gleich != std::string::npos)
            wert = worte[i].substr(gleich + 1);
        else if (!option->argument.empty() && i + 1 < worte.size() && !worte[i + 1].starts_with('-'))
            wert = worte[++i];
        const std::string name(option->name);
        zeile.fehler = einwand(*option, wert);
        if (option->tat && !gewaehlt.empty() && gewaehlt != name)
            zeile.fehler = gewaehlt + " und " + name + " schließen sich aus";
        if (option->tat) {
            zeile.tat = *option->tat;
            gewaehlt = name;
        }
        if (option->wert != nullptr)
            zeile.*option->wert = wert.value_or("");
        if (!option->neben.empty())
            beiwerk = option;
    }
    if (zeile.fehler.empty() && beiwerk != nullptr && beiwerk->neben != gewaehlt)
        zeile.fehler = std::string(beiwerk->name) + " gilt nur neben " + std::string(beiwerk->neben);
    return zeile;
}

std::vector<Hilfeabschnitt> hilfeabschnitte(const std::string& programm) {
    Hilfeabschnitt angaben{"Optionen", {}};
    for (const auto& option : optionen)
        if (!option.text.empty())
            angaben.eintraege.emplace_back(
                std::string(option.name) +
                    (option.argument.empty() ? "" : " " + std::string(option.argument)),
                option.text);
    std::vector<std::string> ausweich;
    for (const int port : gastPorts)
        if (port != gastPortAmHandy)
            ausweich.push_back(std::to_string(port));
    return {std::move(angaben),
            {"Internet weg?",
             {{"", "„" + programm +
                       " --aufraeumen“ nimmt zurück, was ein früherer Lauf am Mac hinterlassen hat; auch "
                       "jeder neue Start tut das."},
              {"", "Ohne das Programm: Systemeinstellungen → Netzwerk → der Dienst → Details → Proxys → "
                   "SOCKS-Proxy aus."}}},
            {"Im Terminal", {{"", verstehe(hilfebefehl, {}).antwort + "."}}},
            {"Dateien",
             {{"~/Library/Logs/MobilstegBordlotse.log", "das Protokoll, eine Zeile je Ereignis"},
              {"~/Library/Logs/MobilstegVolltunnel.log", "das Protokoll des Volltunnels"},
              {"~/Library/Application Support/Mobilsteg Bordlotse/stand.json", "der Stand als JSON"},
              {"~/Library/Preferences/", "die Einstellungen"}}},
            {"Ports auf 127.0.0.1",
             {{std::to_string(socksPort), "der SOCKS-Proxy des Handys; hierher zeigt der System-Proxy"},
              {std::to_string(gastPortAmHandy),
               "die Mobilsteg-App; ist er belegt, einer von " + verbunden(ausweich, ", ")},
              {std::to_string(standPort), "der Stand: http://" + amMac(standPort) + "/stand"}}},
            {"Rückgabe",
             {{"0", "in Ordnung"},
              {"1", "etwas ging nicht, blieb übrig oder steht im Weg; --stand: läuft nicht"},
              {"2", "die Befehlszeile ist nicht zu verstehen"}}}};
}

std::string hilfetext(const std::string& programm) {
    std::string text = "Aufruf: " + programm + " [OPTION …]\n\n";
    umbrich(text, 0, 0, programm + " " + std::string(zweck) + ".");
    for (const auto& abschnitt : hilfeabschnitte(programm)) {
        text += "\n" + abschnitt.titel + "\n";
        std::size_t spalte = 0;
        for (const auto& [marke, inhalt] : abschnitt.eintraege)
            spalte = std::max(spalte, zeichenzahl(marke));
        spalte = spalte == 0 ? einzug : std::min(2 * einzug + spalte, 11 * einzug);
        for (const auto& [marke, inhalt] : abschnitt.eintraege) {
            const bool lang = !marke.empty() && einzug + zeichenzahl(marke) >= spalte;
            if (!marke.empty())
                text += std::string(einzug, ' ') + marke + (lang ? "\n" : "");
            umbrich(text, lang || marke.empty() ? 0 : einzug + zeichenzahl(marke), spalte, inhalt);
        }
    }
    return text;
}

} // namespace mobilsteg
