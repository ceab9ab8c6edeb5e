// Every implementation of a port that this machine has keeps the port's contract; on a mac the native ones,
// too.

#include "plattform/Adapter.hpp"
#include "plattform/AsioSchlange.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"
#include "plattform/Uhr.hpp"
#include "probe/welt/VirtuelleWelt.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"
#include "tests/plattform/vertrag/BuendelVertrag.hpp"
#include "tests/plattform/vertrag/EinstellungenVertrag.hpp"
#include "tests/plattform/vertrag/SchlangenVertrag.hpp"
#include "tests/plattform/vertrag/SkriptVertrag.hpp"

#include <thread>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

// ── Settings ──

struct Dateibank final : Einstellungsbank {
    Einstellungen& speicher() override { return *e; }
    std::unique_ptr<Einstellungen> fremder() override { return dateiEinstellungen(pfad); }
    Ordner ordner;
    std::string pfad = ordner.pfad() + "/Library/Preferences/de.mobilsteg.pruefung.json";
    std::unique_ptr<Einstellungen> e = dateiEinstellungen(pfad);
};

struct Speicherbank final : Einstellungsbank {
    Einstellungen& speicher() override { return e; }
    SpeicherEinstellungen e;
};

/// In a range of its own of the user's real defaults, which goes with it.
struct Nativbank final : Einstellungsbank {
    ~Nativbank() override {
        // The file alone is not enough: the system keeps the range and writes it anew.
        if (auto versuch = starteProzess("/usr/bin/defaults", {"delete", bereich}); versuch.kind)
            (void)versuch.kind->warteUndErnte();
        std::error_code egal;
        std::filesystem::remove(eigenesHeim() + "/Library/Preferences/" + bereich + ".plist", egal);
    }
    Einstellungen& speicher() override { return *e; }
    std::unique_ptr<Einstellungen> fremder() override { return nativeEinstellungen(bereich); }
    std::string bereich = "de.mobilsteg.pruefung." + neueKennung();
    std::unique_ptr<Einstellungen> e = nativeEinstellungen(bereich);
};

std::vector<Einstellungsart> geteilte() {
    std::vector<Einstellungsart> arten = {{"Datei", [] { return std::make_unique<Dateibank>(); }}};
    if (nativeEinstellungen("de.mobilsteg.pruefung"))
        arten.push_back({"Nativ", [] { return std::make_unique<Nativbank>(); }});
    return arten;
}

const Einstellungsart ungeteilte = {"Speicher", [] { return std::make_unique<Speicherbank>(); }};

INSTANTIATE_TEST_SUITE_P(Plattform, EinstellungenVertrag, testing::ValuesIn(geteilte()),
                         Einstellungsart::benenne);
INSTANTIATE_TEST_SUITE_P(Tests, EinstellungenVertrag, testing::Values(ungeteilte), Einstellungsart::benenne);
INSTANTIATE_TEST_SUITE_P(Plattform, GeteilteEinstellungenVertrag, testing::ValuesIn(geteilte()),
                         Einstellungsart::benenne);

// ── Queues ──

struct EchteZeit : Schlangenbank {
    Dauer jetzt() override { return uhr.monoton(); }
    void schlafe(Dauer dauer) override { uhr.schlafe(dauer); }
    bool laufeBis(const std::function<bool()>& bedingung) override {
        for (const Dauer ende = jetzt() + 30s; !bedingung(); std::this_thread::yield())
            if (jetzt() > ende)
                return false;
        return true;
    }
    Systemuhr uhr;
};

struct Asiobank : EchteZeit {
    explicit Asiobank(AsioSchlange::Faden faden = AsioSchlange::Faden::eigener) : q_("q", faden) {}
    Schlange& q() override { return q_; }
    Schlange& andere() override { return andere_; }
    AsioSchlange q_;
    AsioSchlange andere_{"andere"}; // goes first: its jobs may be waiting for the other
};

/// As in the terminal, where the program's own thread is the queue's.
struct Ruferbank final : Asiobank {
    Ruferbank() : Asiobank(AsioSchlange::Faden::rufer) {}
    ~Ruferbank() override {
        q_.halt();
        faden.join();
    }
    std::thread faden{[this] { q_.laufe(); }};
};

struct Virtuellbank final : Schlangenbank {
    ~Virtuellbank() override { welt.beende(); }
    Schlange& q() override { return q_; }
    Schlange& andere() override { return andere_; }
    Dauer jetzt() override { return welt.jetzt(); }
    void schlafe(Dauer dauer) override { welt.uhr().schlafe(dauer); }
    bool laufeBis(const std::function<bool()>& bedingung) override { return welt.laufeBis(bedingung, 10min); }
    VirtuelleWelt welt;
    Schlange& q_ = welt.schlange("q");
    Schlange& andere_ = welt.schlange("andere");
};

INSTANTIATE_TEST_SUITE_P(
    Plattform, SchlangenVertrag,
    testing::Values(Schlangenart{"Asio", [] { return std::make_unique<Asiobank>(); }},
                    Schlangenart{"AsioDesRufers", [] { return std::make_unique<Ruferbank>(); }},
                    Schlangenart{"Virtuell", [] { return std::make_unique<Virtuellbank>(); }}),
    Schlangenart::benenne);

// ── Scripts ──

/// The portable runner with a stand-in for the system's tool, which understands just the contract's scripts.
class MitNachbildung final : public Adminskript {
public:
    std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override {
        return skript_->fuehreAus(quelle);
    }

private:
    Ordner ordner_;
    std::string tool_ = ordner_.lege("/usr/bin/osascript", R"skript(#!/bin/sh
quelle=$(cat)
case $quelle in
return*) exit 0 ;;
'error "'*) echo "$quelle" | sed 's/^error "\(.*\)" number \(.*\)$/0:9: execution error: \1 (\2)/' >&2 ;;
error*) echo "$quelle" | sed 's/^error number \(.*\)$/0:9: execution error: (\1)/' >&2 ;;
*) echo "0:3: syntax error: Zeilenende erwartet. (-2741)" >&2 ;;
esac
exit 1
)skript",
                                     true);
    std::unique_ptr<Adminskript> skript_ = osascriptSkript({ordner_.pfad(), ordner_.pfad()});
};

std::vector<Skriptart> skriptarten() {
    std::vector<Skriptart> arten = {{"Nachbildung", [] { return std::make_unique<MitNachbildung>(); }}};
    if (existiert("/usr/bin/osascript"))
        arten.push_back({"Werkzeug", [] { return osascriptSkript({eigenesHeim(), ""}); }});
    if (nativesSkript())
        arten.push_back({"Nativ", nativesSkript});
    return arten;
}

INSTANTIATE_TEST_SUITE_P(Plattform, SkriptVertrag, testing::ValuesIn(skriptarten()), Skriptart::benenne);

// ── Packages ──

std::vector<Buendelart> buendelarten() {
    const auto anStelle = [](const std::string& programm) {
        return [programm](const std::string& ordner) {
            std::filesystem::create_directories(ordner + "/x/Resources");
            Buendel buendel = ordnerBuendel("de.mobilsteg.bordlotse", ordner + programm);
            EXPECT_EQ(buendel.ressourcen.has_value(), programm.starts_with("/x/"));
            return buendel;
        };
    };
    const auto eigenes = [](const std::string&) { return eigenesBuendel("de.mobilsteg.vpnlotse"); };
    std::vector<Buendelart> arten = {{"Ordner", anStelle("/x/bin/mobilsteg-bordlotse")},
                                     {"OrdnerAmMac", anStelle("/x/MacOS/mobilsteg-bordlotse")},
                                     {"OrdnerOhneRessourcen", anStelle("/y/bin/mobilsteg-bordlotse")},
                                     {"Eigenes", eigenes}};
    if (nativesBuendel())
        arten.push_back({"Nativ", [](const std::string&) { return *nativesBuendel(); }});
    return arten;
}

INSTANTIATE_TEST_SUITE_P(Plattform, BuendelVertrag, testing::ValuesIn(buendelarten()), Buendelart::benenne);

// ── Which of them a run gets ──

TEST(Adapter, einLaufAnEinemAnderenOrtRuehrtDenEchtenMacNichtAn) {
    const Ordner ordner;
    for (const Orte& orte : {Orte{ordner.pfad(), ""}, Orte{ordner.pfad(), ordner.pfad()}}) {
        const auto ablage = einstellungenFuer(orte, "de.mobilsteg.bordlotse");
        EXPECT_EQ(ablage.ort, ordner.pfad() + "/Library/Preferences/de.mobilsteg.bordlotse.json");
        ablage.speicher->setzeFlagge("experte", true);
        EXPECT_NE(ordner.lies("/Library/Preferences/de.mobilsteg.bordlotse.json"), "");
    }
    const auto fehler = adminskriptFuer({ordner.pfad(), ordner.pfad()})->fuehreAus("return 1");
    EXPECT_TRUE(fehler && fehler->nichtGebaut) << "this simulated mac has no osascript";
}

} // namespace
