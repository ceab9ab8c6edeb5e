// The program without Qt: the menu bar's is a file beside it, and takes over the whole process. Who stays in
// the terminal all day need not carry the toolkit's libraries.

#include "app/MobilstegBordlotseApp.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Orte.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace mobilsteg {

int fensterbetrieb(const Befehlszeile&, const std::string&, int&, char** worte) {
    const std::string eigenes = eigenesProgramm();
    const std::string programm = eigenes + "-fenster";
    errno = ENOENT;
    if (!eigenes.empty()) // otherwise it would be whatever lies in the working folder
        ::execv(programm.c_str(), worte);
    std::fprintf(stderr, "%s lässt sich nicht starten: %s. Im Terminal läuft das Programm mit --terminal.\n",
                 programm.c_str(), fehlerbeschreibung(errno).c_str());
    return 1;
}

} // namespace mobilsteg
