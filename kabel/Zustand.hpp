#pragma once

#include "plattform/Schlange.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mobilsteg {

/// How far the way through the phone has come. `faehrt` is the only phase in which traffic passes; `beendet`
/// is the program's last.
struct Phase {
    enum class Art {
        proxyFehler,
        start,
        keinAdb,
        keinHandy,
        nichtAutorisiert,
        weitergabeAus,
        wartetAufHandy,
        abgelehnt,
        pruefung,
        faehrt,
        beendet,
    };

    Art art = Art::start;
    std::string grund; ///< only with `proxyFehler`: why, as the user reads it

    // NOLINTNEXTLINE(google-explicit-constructor): a phase without a reason is its kind
    Phase(Art a = Art::start) : art(a) {}
    [[nodiscard]] static Phase proxyFehler(std::string grund);

    /// The line that the user reads.
    [[nodiscard]] std::string text() const;

    bool operator==(const Phase&) const = default;
};

/// A browser found on the Mac.
struct BrowserFund {
    std::string name;
    std::string bundle;     ///< its package identifier
    bool fahrtwind = false; ///< whether our extension is in one of its profiles
    std::string appPfad;

    bool operator==(const BrowserFund&) const = default;
};

/// What the work queue knows and the user reads. It is handed over whole, so that nobody sees half a step.
struct Lage {
    Phase phase;
    std::string handy;
    std::string klasse;
    bool notlage = false;
    std::vector<std::string> gleise;
    std::string menge;
    std::string rettung;
    std::string austritt;
    bool proxyGesetzt = false;
    bool volltunnelLaeuft = false;
    std::string meldung;
    std::vector<BrowserFund> browserOhne;
    std::vector<std::string> vpnsGesichert;
    std::vector<std::string> vpnsOffen;
    std::vector<std::string> vorbei;
    std::vector<std::string> durch;

    bool operator==(const Lage&) const = default;
};

/// With every text from outside in one plain line. Pure.
[[nodiscard]] Lage zeigbar(Lage lage);

/// The switches as the user set them.
struct Schalterstellungen {
    bool proxyAutomatisch = true;
    bool experte = false;
    bool volltunnelAn = false;
    bool vpnDurch = false;
    bool nurVPN = false;

    bool operator==(const Schalterstellungen&) const = default;
};

/// Everything the user interface shows. Lives on the main queue; changed only through `Zustandsspeicher`.
struct Zustand : Lage, Schalterstellungen {
    std::string profil = "reise";
    bool browserHinweisWeg = false;
    std::string symbol = "cable.connector.slash";
    std::string kurz;

    /// Any other text than "vpn", an old program's for example, is the travel profile.
    [[nodiscard]] bool profilIstVpn() const { return profil == "vpn"; }

    bool operator==(const Zustand&) const = default;
};

/// Holds the published state: it is read and changed on the main queue only, and observers are told there.
class Zustandsspeicher {
public:
    using Beobachter = std::function<void(const Zustand&)>;
    using Aenderung = std::function<void(Zustand&)>;

    Zustandsspeicher(Schlange& haupt, Zustand anfang) : haupt_(haupt), zustand_(std::move(anfang)) {}

    /// From any queue: queues the change on the main queue.
    void veroeffentliche(Aenderung aenderung);

    /// On the main queue: changes at once.
    void aendere(const Aenderung& aenderung);

    /// Main queue only.
    [[nodiscard]] const Zustand& zustand() const { return zustand_; }

    /// Main queue only. `beobachter` runs there after changes, once for all that had come together by then;
    /// the state may equal the one before. There is one: the next takes its place.
    void beobachte(Beobachter beobachter) { beobachter_ = std::move(beobachter); }

private:
    void melde();

    Schlange& haupt_;
    Zustand zustand_;
    bool meldungBestellt_ = false;
    Beobachter beobachter_;
};

/// What stands in the menu bar: a symbol and a short text beside it.
struct Menueleiste {
    std::string symbol;
    std::string kurz;

    bool operator==(const Menueleiste&) const = default;
};

/// `rotation` counts the display timer's firings and picks the piece of the short text. Pure.
[[nodiscard]] Menueleiste menueleiste(const Zustand& zustand, std::uint64_t rotation);

} // namespace mobilsteg
