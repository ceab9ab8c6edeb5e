// A build without Qt: there is no menu-bar program, only the one in the terminal.

#include "app/MobilstegBordlotseApp.hpp"

namespace mobilsteg {

bool anzeigeVorhanden() {
    return false;
}

int fensterbetrieb(const Befehlszeile&, const std::string&, int&, char**) {
    return 1;
}

} // namespace mobilsteg
