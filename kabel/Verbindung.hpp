#pragma once

#include "handy/Adb.hpp"
#include "handy/Handy.hpp"
#include "handy/Ports.hpp"
#include "plattform/Einstellungen.hpp"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mobilsteg {

/// A port as adb writes it.
[[nodiscard]] std::string tcp(int port);

/// The chain from the adb tool to the proven path, one link per operation. Holds what one tick leaves for the
/// next; says what it found and leaves the consequences to its caller. Work queue only; every operation that
/// runs a tool or asks the phone blocks.
class Verbindung {
public:
    Verbindung(Adb adb, Laeufer laeufer, Handy handy, Einstellungen& einstellungen);

    /// Finds the adb tool, once found for good. False: there is none.
    [[nodiscard]] bool findeAdb();

    enum class Fund { keins, unautorisiert, dasselbe, neues };

    /// Looks for the first usable phone, on the cable before elsewhere. A new one's name is in
    /// `handyName()`; its forwards are still to come.
    [[nodiscard]] Fund sucheHandy();

    /// The phone is gone: nothing of it is in place any more.
    void vergissHandy();

    /// Sets the two forwards up unless they stand. Returns what is to be logged.
    [[nodiscard]] std::vector<std::string> leiteWeiter();

    /// Whether both forwards of this phone stand, as far as adb has told.
    [[nodiscard]] bool forwards() const { return forwards_; }

    /// Which of our ports other programs of this Mac hold, as the user reads it; empty: none that hinders.
    [[nodiscard]] const std::string& belegtePorts() const { return belegtePorts_; }

    /// Whether adb still forwards the SOCKS port to this phone and what answers there speaks SOCKS5. If not,
    /// the forwards are built anew next time. Blocks for up to 7 s.
    [[nodiscard]] bool wegSteht();

    /// Registers with the phone. Absent: no answer; the forwards are then built anew next time.
    [[nodiscard]] std::optional<Antwort> meldeAn(const std::string& id, const std::string& name,
                                                 const std::vector<std::string>& vpnZiele);

    /// Fetches the exit address through the phone; on success the path counts as proven.
    [[nodiscard]] std::optional<std::string> beweise();

    /// The path no longer counts as proven.
    void verwirfBeweis();

    /// Removes the forwards from adb, whatever comes of it (5 s each at most).
    void baueAb();

    [[nodiscard]] Handy& handy() { return handy_; }
    [[nodiscard]] bool zuletztGueltig() const { return zuletztGueltig_; }
    [[nodiscard]] const std::string& austrittIntern() const { return austrittIntern_; }
    [[nodiscard]] const std::string& handyName() const { return handyName_; }
    [[nodiscard]] const std::optional<std::string>& adbPfad() const { return adbPfad_; }
    [[nodiscard]] const std::optional<std::string>& serial() const { return serial_; }

private:
    [[nodiscard]] Ergebnis leiteEinenWeiter(int lokal, int amHandy) const;
    [[nodiscard]] Ergebnis leiteGastseiteWeiter(std::vector<std::string>& zeilen);
    void merkeAndereGastPorts();
    void nimmUebriggebliebeneWeg();
    /// False: it may still stand, since adb did not come to answer.
    [[nodiscard]] bool entferne(const std::string& serial, const std::string& lokal) const;

    Adb adb_;
    Laeufer laeufer_;
    Handy handy_;
    /// Other than the usual: a forward may stand there, by this run or an earlier one.
    Ruecknahmen andereGastPorts_;

    std::optional<std::string> adbPfad_;
    std::optional<std::string> serial_;
    /// Whose forwards may stand. Kept when the phone is out of sight: adb may only have failed to list it.
    std::optional<std::string> forwardSerial_;
    std::string handyName_;
    bool forwards_ = false;
    std::string belegtePorts_;
    /// Found in use by others in the last search: nothing of ours stands there.
    std::set<std::string> fremdeGastPorts_;
    bool zuletztGueltig_ = false; // the path through the phone is proven
    std::string austrittIntern_;
};

} // namespace mobilsteg
