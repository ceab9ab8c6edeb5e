#pragma once

#include <string>

namespace mobilsteg {

/// Whoever serves the document to others on this Mac.
class Standausgabe {
public:
    virtual ~Standausgabe() = default;

    /// Begins to serve; once, from any queue. A failure is silent.
    virtual void starte() = 0;

    /// From now on these bytes are served. From any queue; does not block.
    virtual void setzeDokument(std::string bytes) = 0;
};

} // namespace mobilsteg
