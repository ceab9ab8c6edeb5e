#pragma once

#include "plattform/AsioSchlange.hpp"

#include <functional>
#include <memory>

namespace mobilsteg {

/// Hears at once from the adb server that a device has come, gone or changed its state.
class Geraetewache {
public:
    /// `gemeldet` is called on `schlange`, at most ten times a second. `schlange` must outlive it, with no
    /// job of it running when it goes away.
    Geraetewache(AsioSchlange& schlange, std::function<void()> gemeldet);
    ~Geraetewache();
    Geraetewache(const Geraetewache&) = delete;
    Geraetewache& operator=(const Geraetewache&) = delete;

    /// Connects if there is no connection; does nothing within 3 s after the last attempt, and where the
    /// environment sends the adb tool to another machine's server. From any queue; does not block.
    void halte();

private:
    struct Innen;
    std::shared_ptr<Innen> innen_;
};

} // namespace mobilsteg
