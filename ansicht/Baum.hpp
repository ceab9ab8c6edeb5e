#pragma once

#include <string>
#include <variant>
#include <vector>

namespace mobilsteg {

// What the panel shows, as plain values: the renderers draw these and decide nothing.

enum class Schrift { titel, normal, klein, kleinste };
enum class Farbe { normal, sekundaer, gruen, gelb, rot, orange };

/// What a control acts on.
enum class Bedienung {
    experte,
    proxy,
    automatisch,
    volltunnel,
    vpnDurch,
    nurVPN,
    profil,
    browser,
    hinweisWeg,
    beenden,
};

/// One use of a control: `wert` is "an" or "aus" for a switch, the chosen value for a choice, the browser's
/// name, and empty for a plain button.
struct Aktion {
    Bedienung was = Bedienung::experte;
    std::string wert;

    bool operator==(const Aktion&) const = default;
};

/// The heading with the coloured dot.
struct Kopf {
    std::string titel;
    Farbe punkt;

    bool operator==(const Kopf&) const = default;
};

/// Free text over the whole width.
struct Satz {
    std::string text;
    Schrift schrift;
    Farbe farbe;

    bool operator==(const Satz&) const = default;
};

struct Trenner {
    bool operator==(const Trenner&) const = default;
};

/// A label in a column of its own, and a value that can be selected and copied.
struct Zeile {
    std::string bezeichnung;
    std::string wert;

    bool operator==(const Zeile&) const = default;
};

/// A coloured symbol, a text, and at the far end a small word in the symbol's colour (may be empty).
struct Symbolzeile {
    std::string symbol;
    Farbe farbe;
    std::string text;
    std::string zusatz;

    bool operator==(const Symbolzeile&) const = default;
};

/// A checkbox.
struct Schalter {
    Bedienung was;
    std::string text;
    bool an;

    bool operator==(const Schalter&) const = default;
};

struct Knopf {
    Aktion aktion;
    std::string text;
    std::string hilfe;   ///< what it does, where its text alone does not tell; else empty
    std::string appPfad; ///< an application whose icon it bears; empty: none
    bool rahmenlos = false;
    Farbe farbe = Farbe::normal; ///< of a borderless one's text; normal: the colour of what can be clicked

    bool operator==(const Knopf&) const = default;
};

/// One of several values, as a group of radio buttons.
struct Wahl {
    struct Moeglichkeit {
        std::string wert;
        std::string text;

        bool operator==(const Moeglichkeit&) const = default;
    };

    Bedienung was;
    std::string bezeichnung;
    std::vector<Moeglichkeit> moeglichkeiten;
    std::string gewaehlt;

    bool operator==(const Wahl&) const = default;
};

/// Controls beside each other: the last one at the far end.
struct Reihe {
    std::vector<std::variant<Schalter, Knopf>> teile;

    bool operator==(const Reihe&) const = default;
};

using Element = std::variant<Kopf, Satz, Trenner, Zeile, Symbolzeile, Schalter, Knopf, Wahl, Reihe>;

/// The panel from top to bottom.
using Baum = std::vector<Element>;

/// The panel's measures in points.
struct Masse {
    static constexpr int breite = 330;
    static constexpr int rand = 12;
    static constexpr int abstand = 8;
    static constexpr int bezeichnungsspalte = 100;
    static constexpr int symbolabstand = 6;
    static constexpr int punkt = 9;
    static constexpr int browsersymbol = 16;
    static constexpr int browserabstand = 5;
};

} // namespace mobilsteg
