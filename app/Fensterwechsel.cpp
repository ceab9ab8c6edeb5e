// The program without Qt: the menu bar's is a file beside it, and takes over the whole process. Who stays in
// the terminal all day need not carry the toolkit's libraries.

#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Buendel.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace mobilsteg {

bool anzeigeVorhanden() {
    return true; // the other one looks for it
}

int fensterbetrieb(const Befehlszeile&, const std::string&, int&, char** worte) {
    const std::string programm = eigenesProgramm() + "-fenster";
    ::execv(programm.c_str(), worte);
    std::fprintf(stderr, "%s lässt sich nicht starten (%s). Im Terminal läuft das Programm mit --terminal.\n",
                 programm.c_str(), std::strerror(errno));
    return 1;
}

} // namespace mobilsteg
