#pragma once

#include "ansicht/Baum.hpp"

#include <QHBoxLayout>
#include <QWidget>

#include <functional>
#include <vector>

namespace mobilsteg {

/// Takes what the user did. May be called again before it has returned, and may have the panel redrawn.
using Melder = std::function<void(const Aktion&)>;

/// One element of the panel as widgets.
struct Baustein {
    Element gezeigt;
    QWidget* flaeche = nullptr;                   ///< bears the element's key as its object name
    std::function<void(const Element&)> stelleUm; ///< to another state of the same element
};

/// Turns the widgets into those of `neu`. An element that was there under its key keeps its widgets with
/// all that the user has under way in them, and an unchanged one is not touched. They belong to `eltern`;
/// laying them out is left to the caller. `melde` is kept by reference.
void erneuere(std::vector<Baustein>& bausteine, const Baum& neu, const Melder& melde, QWidget* eltern);

/// Fills `flaeche` with widgets for an element that only shows, or for one that is used; of another kind the
/// result has no `flaeche`. They show nothing until the first `stelleUm`.
[[nodiscard]] Baustein baueAnzeige(const Element& element, const Melder& melde, QWidget* flaeche);
[[nodiscard]] Baustein baueBedienung(const Element& element, const Melder& melde, QWidget* flaeche);

/// A row without edges, for the builders.
[[nodiscard]] QHBoxLayout* waagerecht(QWidget* flaeche, int abstand = 0);

/// Wraps a `setze` that takes the one kind of element.
template <class Art, class Setzer>
[[nodiscard]] Baustein baustein(QWidget* flaeche, Setzer setze) {
    return {{}, flaeche, [setze](const Element& element) { setze(std::get<Art>(element.inhalt)); }};
}

} // namespace mobilsteg
