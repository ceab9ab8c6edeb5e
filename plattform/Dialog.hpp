#pragma once

#include <string>
#include <vector>

namespace mobilsteg {

/// A modal question to the user.
struct Frage {
    std::string nachricht;
    std::string erlaeuterung;
    std::vector<std::string> knoepfe; ///< the first is the default
};

class Dialog {
public:
    virtual ~Dialog() = default;

    /// Brings the program to the front, asks, and blocks until the user answers. Main queue only. Returns
    /// the index of the chosen button; any other way of closing counts as one that is not the first: -1.
    [[nodiscard]] virtual int frage(const Frage& frage) = 0;
};

} // namespace mobilsteg
