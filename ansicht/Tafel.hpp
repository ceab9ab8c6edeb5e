#pragma once

#include "ansicht/Baum.hpp"
#include "kabel/Zustandsspeicher.hpp"

#include <functional>

namespace mobilsteg {

/// Keeps a drawn panel in step with the state: the renderer is called only when the tree has changed. Lives
/// on the main queue.
class Tafel {
public:
    using Zeichner = std::function<void(const Baum&)>;

    /// Draws at once and from then on after every change.
    Tafel(Zustandsspeicher& speicher, bool bundleB2B, Zeichner zeichner);

private:
    void zeige(const Zustand& zustand);

    bool bundleB2B_;
    Zeichner zeichner_;
    Baum baum_;
    Zustandsspeicher::Beobachtung beobachtung_;
};

} // namespace mobilsteg
