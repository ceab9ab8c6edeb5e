#pragma once

#include "ansicht/Baum.hpp"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

namespace mobilsteg {

/// Takes what the user did. May be called again before it has returned, and may have the panel redrawn.
using Melder = std::function<void(const Aktion&)>;

/// One element of the panel as widgets. It is made for an element and may then show others of the same kind,
/// of a control only those that do the same thing.
class Baustein : public QWidget {
public:
    using QWidget::QWidget;

    virtual void zeige(const Element& element) = 0;

    /// Appends its visible texts, read from its widgets.
    virtual void sammleTexte(std::vector<std::string>& texte) const = 0;

    /// Appends what the Tab key leads to, in its order.
    virtual void sammleBedienung(std::vector<QWidget*>& bedienung) const = 0;
};

/// Turns the widgets of `alt` into those of `neu`. Those of elements that are in both stay, with all that the
/// user has under way in them; the others go and come. They belong to `eltern`; laying them out is left to
/// the caller. `melde` is kept by reference.
void erneuere(const Baum& alt, const Baum& neu, std::vector<Baustein*>& bausteine, const Melder& melde,
              QWidget* eltern);

/// New widgets that show the element, if it is one that only shows or one that is used; else null.
[[nodiscard]] Baustein* baueAnzeige(const Element& element, QWidget* eltern);
[[nodiscard]] Baustein* baueBedienung(const Element& element, const Melder& melde, QWidget* eltern);

/// The name by which automation finds what belongs to a control: "knopf.browser.Chrome" for example.
[[nodiscard]] QString bedienungsname(const char* art, Bedienung was, const std::string& wert);

} // namespace mobilsteg
