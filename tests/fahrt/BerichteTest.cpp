// The reports as they lie on the phone, over several runs of the shipped program.

#include "plattform/Dateien.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>

using namespace mobilsteg;
using testing::StartsWith;

namespace {

/// What the phone holds of one log, its parts put together in the order of their arrival.
std::string sammle(const Fahrtbank& bank, const std::string& name) {
    std::set<std::string> dateien; // their names begin with their number
    for (const auto& eintrag : std::filesystem::directory_iterator(bank.ordner.pfad() + "/handy1/berichte"))
        if (eintrag.path().filename().string().ends_with("-" + name))
            dateien.insert(eintrag.path());
    std::string alles;
    for (const auto& datei : dateien) {
        const std::string bericht = liesDatei(datei).value_or("");
        EXPECT_THAT(bericht, StartsWith("# " + name + " ab Byte " + std::to_string(alles.size()) + ", "));
        alles += bericht.substr(bericht.find('\n') + 1);
    }
    return alles;
}

/// One run of the program, until it has reported at least once.
void fahre(Fahrtbank& bank) {
    const int vorher = bank.zeilenMit("Der Proxy des Handys antwortet nicht");
    bank.starte();
    // The reports go out between two ticks.
    EXPECT_TRUE(warteBis([&] { return bank.zeilenMit("Der Proxy des Handys") >= vorher + 2; }));
    bank.programm->tippe("beenden");
    EXPECT_EQ(bank.programm->warteAufEnde(), 0) << bank.ausgabe();
}

TEST(Berichte, liegenUeberDreiFahrtenBytegenauAufDemHandy) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    handy->sage("proxy kaputt"); // trouble, tick after tick: the reports go out
    const std::string tunnellog = "/heim/Library/Logs/MobilstegVolltunnel.log";
    std::string tunnel = std::string("erste\r\n\0\xFF\xC3", 10); // no text, and cut inside a character
    bank.ordner.lege(tunnellog, tunnel);
    fahre(bank);
    const std::string erste = sammle(bank, "mac-bordlotse.log");
    EXPECT_FALSE(erste.empty());
    EXPECT_EQ(sammle(bank, "mac-volltunnel.log"), tunnel);

    handy->sage("bericht aus");
    const auto gezeigt = [&] {
        const std::string antwort = handy->sage("zustand");
        return nlohmann::json::parse(antwort.substr(0, antwort.find('\n')))["berichte"].get<int>();
    };
    const int angenommen = gezeigt();
    bank.ordner.lege(tunnellog, tunnel += "\xBC zweite\n");
    fahre(bank);
    EXPECT_EQ(gezeigt(), angenommen);
    EXPECT_EQ(sammle(bank, "mac-bordlotse.log"), erste);

    handy->sage("bericht an");
    const std::string nachZweien = bank.protokoll();
    bank.ordner.lege(tunnellog, tunnel += "dritte");
    fahre(bank);
    EXPECT_GT(gezeigt(), angenommen);
    EXPECT_EQ(sammle(bank, "mac-volltunnel.log"), tunnel);
    const std::string alle = sammle(bank, "mac-bordlotse.log");
    EXPECT_THAT(bank.protokoll(), StartsWith(alle));
    EXPECT_GT(alle.size(), nachZweien.size()) << "what was refused in the second run, too";
}

} // namespace
