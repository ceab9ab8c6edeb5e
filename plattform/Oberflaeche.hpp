#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace mobilsteg {

// What the system's desktop gives beside the toolkit. Only a mac's does; elsewhere these do nothing or are
// absent. All of it on the main thread, once the toolkit's application object stands. Nothing here blocks.

/// Whether there is a display to draw on. Needs no application object. A mac always has one; elsewhere
/// DISPLAY or WAYLAND_DISPLAY names it.
[[nodiscard]] bool anzeigeVorhanden();

/// A program of the menu bar: no Dock icon, no menu of its own, and never slowed down for not being looked
/// at.
void alsMenueleistenprogramm();

/// Brings this program before the others, so that its window gets the keyboard.
void nachVorn();

/// The icon of the application at `pfad`, `kante` pixels wide and high, as a PNG file's bytes.
[[nodiscard]] std::optional<std::string> programmbild(const std::string& pfad, int kante);

/// The system's symbol of that name, black, as large as it fits into a square of `kante` pixels: a PNG file's
/// bytes. Absent: the system has none.
[[nodiscard]] std::optional<std::string> systemsymbol(const std::string& name, int kante);

/// Keeps what `beiAbmeldung` began.
using Abmeldung = std::shared_ptr<void>;

/// Runs `aufgabe` when the user logs out, restarts or powers off, before the system ends the programs. The
/// system waits until it has returned.
[[nodiscard]] Abmeldung beiAbmeldung(std::function<void()> aufgabe);

/// The program's item in the system's own menu bar. It goes with the object.
class Leistenstueck {
public:
    /// In points from the top left corner of the main screen.
    struct Lage {
        int links;
        int oben;
        int breite;
        int hoehe;
    };

    virtual ~Leistenstueck() = default;

    /// Shows the system's symbol of that name in the menu bar's own colour, and `titel` behind it (may be
    /// empty). Where the system has no such symbol, `ersatz` draws it: a PNG file's bytes, for the height in
    /// pixels.
    virtual void zeige(const std::string& symbol, const std::string& titel, const std::string& hilfe,
                       const std::function<std::string(int)>& ersatz) = 0;

    [[nodiscard]] virtual Lage lage() const = 0;
};

/// Absent: the toolkit has to bring its own. `beiKlick` runs when the item is pressed, `beiNebenklick` when
/// it is with the other button or with the control key.
[[nodiscard]] std::unique_ptr<Leistenstueck> nativesLeistenstueck(std::function<void()> beiKlick,
                                                                  std::function<void()> beiNebenklick);

} // namespace mobilsteg
