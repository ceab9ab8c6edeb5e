// Writes what is installed beside a program, from the table of its options: the man page, and the completions
// for three shells. Runs while building. Usage: mobilsteg-anleitung PROGRAM VERSION man|bash|zsh|fish

#include "app/Befehlszeile.hpp"
#include "plattform/Text.hpp"

#include <cstdio>
#include <functional>

using namespace mobilsteg;

namespace {

std::string ersetzt(std::string text, const std::string& was, const std::string& durch) {
    for (auto stelle = text.find(was); stelle != std::string::npos;
         stelle = text.find(was, stelle + durch.size()))
        text.replace(stelle, was.size(), durch);
    return text;
}

/// The options that people are shown, each made a text.
std::vector<std::string> fuerAlle(const std::function<std::string(const Option&)>& text) {
    std::vector<std::string> alle;
    for (const auto& option : optionen)
        if (!option.text.empty())
            alle.push_back(text(option));
    std::erase(alle, "");
    return alle;
}

std::string taten() {
    return verbunden(fuerAlle([](const Option& o) { return std::string(o.tat ? o.name : ""); }), " ");
}

std::string worte(const Option& option) {
    return ersetzt(std::string(option.argument), "|", " ");
}

// --- the man page -----------------------------------------------------------------------------------------

std::string roff(const std::string& text) {
    return "\\&" + ersetzt(ersetzt(text, "\\", "\\e"), "-", "\\-");
}

std::string grossTitel(const std::string& titel) {
    return ersetzt(ersetzt(inGrossbuchstaben(titel), "ü", "Ü"), "ä", "Ä");
}

std::string anleitung(const std::string& programm, const std::string& version) {
    std::string text = ".Dd November 22, 2026\n.Dt " + inGrossbuchstaben(programm) + " 1\n.Os Mobilsteg " +
                       version + "\n.Sh NAME\n.Nm " + programm + "\n.Nd " + std::string(zweck) +
                       "\n.Sh ÜBERSICHT\n.Nm " + programm + "\n";
    for (const auto& option : fuerAlle([](const Option& o) {
             return ".Op Fl " + std::string(o.name.substr(1)) +
                    (o.argument.empty() ? "" : " Ar " + std::string(o.argument)) + "\n";
         }))
        text += option;
    text += ".Sh BESCHREIBUNG\nOhne Option erscheint das Programm in der Menüleiste.\n";
    for (const auto& abschnitt : hilfeabschnitte(programm)) {
        text += ".Sh " + grossTitel(abschnitt.titel) + "\n";
        const bool liste = !abschnitt.eintraege.front().first.empty();
        text += liste ? ".Bl -tag -width Ds\n" : "";
        for (const auto& eintrag : abschnitt.eintraege) {
            const bool weiterer = &eintrag != &abschnitt.eintraege.front();
            text += liste ? ".It " + roff(eintrag.first) + "\n" : weiterer ? ".Pp\n" : "";
            text += roff(eintrag.second) + "\n";
        }
        text += liste ? ".El\n" : "";
    }
    return text;
}

// --- the completions --------------------------------------------------------------------------------------

// The bash that macOS has is 3.2: no mapfile, no compopt. A "=" is a word of its own there.
constexpr const char* bashVorlage = R"(_FUNKTION() {
    local IFS=$'\n' taten="TATEN" rest="REST" wort=${COMP_WORDS[COMP_CWORD]} davor=${COMP_WORDS[COMP_CWORD-1]} eines
    if [ "$wort" = = ]; then
        wort=
    elif [ "$davor" = = ]; then
        davor=${COMP_WORDS[COMP_CWORD-2]}
    fi
    case $davor in
WERTE
    esac
    for eines in "${COMP_WORDS[@]}"; do
        case $eines in
NEBEN
        esac
        case " $taten " in *" $eines "*) [ "$eines" = "$wort" ] || taten= ;; esac
    done
    COMPREPLY=($(IFS=' '; compgen -W "$taten $rest" -- "$wort"))
}
complete -o filenames -F _FUNKTION PROGRAMM
)";

std::string fuerBash(const std::string& programm) {
    const auto werte = fuerAlle([](const Option& o) -> std::string {
        if (o.argument.empty())
            return "";
        return "    " + std::string(o.name) + ") COMPREPLY=($(" +
               (o.argument == "DIR" ? "compgen -d" : "IFS=' '; compgen -W '" + worte(o) + "'") +
               R"( -- "$wort")); return ;;)";
    });
    const auto rest =
        fuerAlle([](const Option& o) { return std::string(o.tat || !o.neben.empty() ? "" : o.name); });
    const auto neben = fuerAlle([](const Option& o) {
        return o.neben.empty()
                   ? ""
                   : "        " + std::string(o.neben) + ") rest=\"$rest " + std::string(o.name) + "\" ;;";
    });
    auto text = ersetzt(bashVorlage, "_FUNKTION", "_" + ersetzt(programm, "-", "_"));
    text = ersetzt(ersetzt(text, "TATEN", taten()), "REST", verbunden(rest, " "));
    text = ersetzt(ersetzt(text, "WERTE", verbunden(werte, "\n")), "NEBEN", verbunden(neben, "\n"));
    return ersetzt(text, "PROGRAMM", programm);
}

std::string fuerZsh(const std::string& programm) {
    const auto zeilen = fuerAlle([](const Option& o) {
        const std::string aktion = o.argument == "DIR" ? ":Ordner:_directories" : ":Wahl:(" + worte(o) + ")";
        return "  '" + (o.tat ? "(" + taten() + ")" : "") + std::string(o.name) +
               (o.argument.empty() ? "" : "=") + "[" + std::string(o.text) + "]" +
               (o.argument.empty() ? "" : aktion) + "'";
    });
    return "#compdef " + programm + "\n_arguments \\\n" + verbunden(zeilen, " \\\n") + "\n";
}

std::string fuerFish(const std::string& programm) {
    const auto zeilen = fuerAlle([&](const Option& o) {
        const std::string werte = o.argument == "DIR" ? "(__fish_complete_directories)" : worte(o);
        const std::string neben = o.neben.empty() ? "" : std::string(o.neben.substr(2));
        // Not itself, or its own values would not be offered.
        const auto andere = ersetzt(ersetzt(taten() + " ", std::string(o.name) + " ", ""), "--", "");
        const std::string wann = o.tat           ? " -n 'not __fish_contains_opt " + andere + "'"
                                 : neben.empty() ? ""
                                                 : " -n '__fish_contains_opt " + neben + "'";
        return "complete -c " + programm + wann + " -l " + std::string(o.name.substr(2)) +
               (o.argument.empty() ? "" : " -x -a '" + werte + "'") + " -d '" + std::string(o.text) + "'\n";
    });
    return "complete -c " + programm + " -f\n" + verbunden(zeilen, "");
}

} // namespace

int main(int anzahl, char** argumente) {
    if (anzahl != 4) {
        const bool gefragt = anzahl == 2 && std::string(argumente[1]) == "--hilfe";
        std::fputs("Aufruf: mobilsteg-anleitung PROGRAMM VERSION man|bash|zsh|fish\n",
                   gefragt ? stdout : stderr);
        return gefragt ? 0 : 2;
    }
    const std::string programm = argumente[1];
    const std::string art = argumente[3];
    const auto text = art == "man"    ? anleitung(programm, argumente[2])
                      : art == "bash" ? fuerBash(programm)
                      : art == "zsh"  ? fuerZsh(programm)
                                      : fuerFish(programm);
    return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
