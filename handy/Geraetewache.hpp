#pragma once

#include "plattform/AsioSchlange.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg {

/// The port of the server that the adb tool would use; absent: not on this machine, or nothing sensible.
[[nodiscard]] std::optional<std::uint16_t> adbServerport();

/// Cuts what an adb server sends to the one who tracks its devices into reports: four hexadecimal digits, and
/// as many bytes as they say. Keeps at most two reports of 64 KB. No locks, never blocks.
class Geraetemeldungen {
public:
    /// Takes the next bytes. Whether the last report that they complete differs from the one before; absent:
    /// the server speaks something else, and the connection is of no use.
    [[nodiscard]] std::optional<bool> nimm(std::string_view bytes);

    /// For a new connection; the last report is kept to compare with.
    void beginneNeu();

private:
    std::string rest_;
    std::string letzte_;
    bool zugesagt_ = false; ///< the server has agreed to report
};

/// Hears at once from the adb server that a device has come, gone or changed its state. It is a client of the
/// server like the adb tool, but starts none: that is left to the tool.
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
