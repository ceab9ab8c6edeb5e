#pragma once

#include "plattform/Dateien.hpp"
#include "plattform/Kindprozess.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

namespace mobilsteg {

/// Asks until it holds. False: it did not in a time that is ample on a busy machine, too.
[[nodiscard]] inline bool warteBis(const std::function<bool()>& bedingung, double sekunden = 45) {
    const auto frist = std::chrono::steady_clock::now() + std::chrono::duration<double>(sekunden);
    while (!bedingung()) {
        if (std::chrono::steady_clock::now() > frist)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// A program started by a test, in a process group of its own; ended with the test if it still runs then.
class Programm {
public:
    /// Its outputs go to `ausgabe`, a file; its standard input is a pipe held open by this object.
    Programm(std::vector<std::string> worte, const std::string& ausgabe) {
        int rohr[2];
        EXPECT_EQ(::pipe2(rohr, O_CLOEXEC), 0);
        const Deskriptor lesen(rohr[0]);
        eingabe_ = Deskriptor(rohr[1]);
        worte.insert(worte.begin(), {"-c", R"(exec "$@" >>"$0" 2>&1)", ausgabe});
        auto versuch = starteProzess("/bin/sh", worte, {lesen.nummer(), true});
        EXPECT_TRUE(versuch.kind) << versuch.grund;
        kind_ = std::move(versuch.kind).value();
    }
    ~Programm() {
        eingabe_.schliesse();
        if (!status_)
            sende(SIGTERM);
        if (!warteAufEnde()) {
            ADD_FAILURE() << "ließ sich nicht beenden";
            sende(SIGKILL);
            warteAufEnde();
        }
    }

    [[nodiscard]] int nummer() const { return kind_.nummer; }
    void sende(int signal) const { ::kill(kind_.nummer, signal); }
    void sendeGruppe(int signal) const { ::kill(-kind_.nummer, signal); } ///< as a terminal does
    void tippe(const std::string& zeile) const {
        EXPECT_GT(::dprintf(eingabe_.nummer(), "%s\n", zeile.c_str()), 0);
    }
    /// Waits for its end: exit code, or the signal's number. Absent: it did not end in time.
    std::optional<int> warteAufEnde() {
        if (!status_ && warteBis([&] { return kind_.istBeendet(); }))
            status_ = kind_.warteUndErnte();
        return status_;
    }

private:
    Deskriptor eingabe_;
    Kindprozess kind_;
    std::optional<int> status_;
};

} // namespace mobilsteg
