#include "kabel/Protokoll.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

namespace mobilsteg {

Protokoll::Protokoll(std::string pfad, const Uhr& uhr) : pfad_(std::move(pfad)), uhr_(uhr) {}

void Protokoll::schreibe(const std::string& text) {
    const std::lock_guard wache(schloss_);
    if (text == letzteZeile_)
        return;
    letzteZeile_ = text;
    const std::string zeile = ortszeit(uhr_.wand()) + "  " + einzeilig(text) + "\n";
    legeElternordnerAn(pfad_);
    // Only a file that is missing is made anew: one that merely cannot be opened must not be replaced.
    if (!haengeAn(pfad_, zeile) && !existiert(pfad_))
        schreibeAtomar(pfad_, zeile, Haltbarkeit::fluechtig);
}

} // namespace mobilsteg
