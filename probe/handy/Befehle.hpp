#pragma once

#include "probe/handy/AdbGeraet.hpp"
#include "probe/handy/Befehlsantwort.hpp"
#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Steckplatz.hpp"

#include <cstdint>
#include <string_view>

namespace mobilsteg::probehandy {

/// A model name that fits into adb's banner: not empty, and none of the characters that separate its fields.
bool istModell(std::string_view name);

/// An exit address the proxy can tell: one line, not empty.
bool istAustritt(std::string_view adresse);

/// What the person holding the phone can do, as commands in German.
class Befehle {
public:
    Befehle(Handyzustand& zustand, AdbGeraet& geraet, Steckplatz& steckplatz)
        : zustand_(zustand), geraet_(geraet), steckplatz_(steckplatz) {}

    /// Carries out one line. The answer comes exactly once, at once or, where adb has to be asked, later.
    void fuehreAus(std::string_view zeile, Antworter fertig);

    /// Only for the answer to "zustand".
    void merkeSteuerport(std::uint16_t port) { steuerport_ = port; }

private:
    using Rest = std::string_view;

    Befehlsantwort fuehreGleichAus(std::string_view befehl, Rest rest);
    Befehlsantwort entscheide(Entscheidung entscheidung);
    Befehlsantwort weitergabe(Rest rest);
    Befehlsantwort debugging(Rest rest);
    Befehlsantwort weg(Rest rest, bool da);
    Befehlsantwort rtt(Rest rest);
    Befehlsantwort klasse(Rest rest);
    Befehlsantwort notlage(Rest rest);
    Befehlsantwort funkloch(Rest rest);
    Befehlsantwort proxy(Rest rest);
    Befehlsantwort api(Rest rest);
    Befehlsantwort austritt(Rest rest);
    Befehlsantwort bericht(Rest rest);
    Befehlsantwort modell(Rest rest);
    Befehlsantwort zustand() const;

    Handyzustand& zustand_;
    AdbGeraet& geraet_;
    Steckplatz& steckplatz_;
    std::uint16_t steuerport_ = 0;
};

} // namespace mobilsteg::probehandy
