#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
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
    protokoll,
    beenden,
};

/// The word of a control: its command in the terminal, and a part of its key. `werte` is what may be typed
/// behind it, as the user reads it; empty: nothing.
struct Wort {
    std::string_view wort;
    std::string_view werte;
};

/// In the order of `Bedienung`.
inline constexpr std::array<Wort, 11> woerter = {{
    {"experte", "an|aus"},
    {"proxy", ""},
    {"automatisch", "an|aus"},
    {"volltunnel", "an|aus"},
    {"vpn-durch", "an|aus"},
    {"nur-vpn", "an|aus"},
    {"profil", "reise|vpn"},
    {"browser", "NAME"},
    {"hinweis", "weg"},
    {"protokoll", ""},
    {"beenden", ""},
}};

[[nodiscard]] constexpr const Wort& wort(Bedienung was) {
    return woerter[static_cast<std::size_t>(was)];
}

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
    std::optional<Aktion> beimKlick{}; ///< absent: a click does nothing

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

/// One of several values, as a group of radio buttons. Only `gewaehlt` changes while its key stays.
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

struct Element;

/// The panel from top to bottom.
using Baum = std::vector<Element>;

/// Controls beside each other, in lines where they are too wide together; the last one at the far end of the
/// first.
struct Reihe {
    Baum teile;

    bool operator==(const Reihe& andere) const;
};

/// `schluessel` tells an element from all others of its tree and stays while the element means the same:
/// "zeile.Handy", "schalter.volltunnel", "browser.Chrome". Renderers find by it what they have drawn. What a
/// control does never changes under its key, nor does how a text looks.
struct Element {
    std::string schluessel;
    std::variant<Kopf, Satz, Trenner, Zeile, Symbolzeile, Schalter, Knopf, Wahl, Reihe> inhalt;

    bool operator==(const Element&) const = default;
};

inline bool Reihe::operator==(const Reihe& andere) const {
    return teile == andere.teile;
}

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
