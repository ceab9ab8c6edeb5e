#pragma once

#include "ansicht/qt/Baustein.hpp"

namespace mobilsteg {

/// The part that all kinds of elements share. `Art` is the kind of element.
template <class Art>
class BausteinFuer : public Baustein {
public:
    using Baustein::Baustein;

    void zeige(const Element& element) final { setze(std::get<Art>(element)); }

protected:
    virtual void setze(const Art& element) = 0;
};

} // namespace mobilsteg
