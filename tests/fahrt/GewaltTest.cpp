// What no program can prevent: being killed, stopped, starved. What it may leave behind then, and for how
// long.

#include "plattform/Dateien.hpp"
#include "tests/fahrt/Fahrtbank.hpp"
#include "tests/hilfe/Klient.hpp"

#include <gmock/gmock.h>

#include <csignal>
#include <random>
#include <thread>

using namespace mobilsteg;
using testing::HasSubstr;

namespace {

constexpr const char* vpnLotse = "mobilsteg-vpnlotse";

void schlafe(std::chrono::milliseconds dauer) {
    std::this_thread::sleep_for(dauer);
}

/// Nothing of this program, nor of one before it, is left.
void erwarteNichts(const Fahrtbank& bank, const std::string& wann) {
    EXPECT_FALSE(bank.proxyAn()) << wann;
    EXPECT_EQ(bank.adb({"forward", "--list"}), "") << wann;
    EXPECT_TRUE(portFrei(1081)) << wann;
    const std::string stopp =
        bank.ordner.pfad() + "/heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp";
    EXPECT_TRUE(warteBis([&] { return !existiert(stopp + ".laeuft"); }, 5)) << wann;
}

/// MOBILSTEG_TODE=200 makes it a long one.
TEST(Gewalt, nachKeinemAbschussBleibtEtwas) {
    const char* wunsch = std::getenv("MOBILSTEG_TODE");
    const int tode = wunsch != nullptr ? std::atoi(wunsch) : 4;
    const unsigned samen = std::random_device{}();
    std::mt19937 zufall(samen);
    Fahrtbank bank;
    bank.alsVpnBenutzer();
    const auto handy = bank.handy();
    int mitProxy = 0;
    for (int tod = 0; tod < tode; ++tod) {
        const std::string wann = "Samen " + std::to_string(samen) + ", Tod " + std::to_string(tod);
        handy->sage("weitergabe an");
        bank.starte(vpnLotse);
        schlafe(std::chrono::milliseconds(zufall() % 1600));
        bank.programm->sende(SIGKILL);
        bank.programm->warteAufEnde();
        EXPECT_TRUE(portFrei(1081)) << wann;
        mitProxy += bank.proxyAn() ? 1 : 0;
        if (zufall() % 2 == 0)
            handy->sage("weitergabe aus");
        std::remove((bank.ordner.pfad() + "/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json")
                        .c_str());
        bank.starte(vpnLotse);
        ASSERT_TRUE(warteBis([&] { return !bank.stand().empty(); }, 30)) << wann << bank.ausgabe();
        bank.programm->sende(SIGTERM);
        EXPECT_EQ(bank.programm->warteAufEnde(60), 0) << wann;
        erwarteNichts(bank, wann);
    }
    RecordProperty("mitProxyGetroffen", mitProxy);
    std::printf("%d Abschüsse, %d davon bei gesetztem Proxy\n", tode, mitProxy);
}

TEST(Gewalt, wasDerMacImSchlafVerliertIstNachDemErstenTaktZurueckgenommen) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    bank.programm->sende(SIGSTOP);
    handy->sage("ziehen");
    schlafe(std::chrono::milliseconds(3500)); // a tick is missed
    EXPECT_TRUE(bank.proxyAn());
    bank.programm->sende(SIGCONT);
    EXPECT_TRUE(warteBis([&] { return !bank.proxyAn(); }, 5));
    bank.erwartePhase("Kein Handy am Kabel", 5);
    EXPECT_LE(bank.zeilenMit("Kein Handy"), 1) << "missed ticks are one tick";
}

TEST(Gewalt, faehrtUndRaeumtAufAuchWennEsAnAllemFehlt) {
    struct Fall {
        const char* name;
        const char* umstand;
        std::function<void(Fahrtbank&)> vorher;
        bool standLesbar = true;
    };
    const Fall faelle[] = {
        {"das Heim nimmt nichts an", ":",
         [](Fahrtbank& b) {
             std::filesystem::remove_all(b.ordner.pfad() + "/heim/Library/Logs");
             std::filesystem::remove_all(b.ordner.pfad() + "/heim/Library/Application Support");
             b.ordner.lege("/heim/Library/Logs", "a file in the folder's place");
             b.ordner.lege("/heim/Library/Application Support", "");
         },
         false},
        {"die Platte ist voll", ":",
         [](Fahrtbank& b) {
             std::filesystem::create_directories(b.ordner.pfad() + "/heim/Library/Logs");
             std::filesystem::create_symlink("/dev/full",
                                             b.ordner.pfad() + "/heim/Library/Logs/MobilstegBordlotse.log");
         }},
        {"wenige Deskriptoren", "ulimit -n 64", [](Fahrtbank&) {}},
        {"ein anderes adb", ":",
         [](Fahrtbank& b) {
             const std::string adb = b.ordner.pfad() + "/mac/opt/homebrew/bin/adb";
             const auto echtes = std::filesystem::canonical(adb).string();
             std::filesystem::remove(adb);
             b.ordner.lege(
                 "/mac/opt/homebrew/bin/adb",
                 "#!/bin/sh\necho \"adb server version (40) doesn't match this client (41); killing...\" >&2\n"
                 "[ \"$1\" = devices ] && echo '* daemon started successfully'\nexec '" +
                     echtes + "' \"$@\"\n",
                 true);
         }},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        Fahrtbank bank;
        const auto handy = bank.handy();
        fall.vorher(bank);
        bank.starte("mobilsteg-bordlotse", fall.umstand);
        const auto faehrt = [] {
            return frage(1081, "GET / HTTP/1.0\r\n\r\n").find("\"faehrt\": true") != std::string::npos;
        };
        EXPECT_TRUE(warteBis(faehrt)) << bank.ausgabe();
        EXPECT_TRUE(bank.proxyAn());
        if (fall.standLesbar) {
            std::vector<Klient> schweiger; // more than the program may have descriptors
            for (int i = 0; i < 200; ++i)
                schweiger.emplace_back(1081);
            bank.erwartePhase("Fährt mit");
            EXPECT_TRUE(warteBis(faehrt)) << "silent clients must not shut others out";
        }
        bank.programm->sende(SIGTERM);
        EXPECT_EQ(bank.programm->warteAufEnde(), 0) << bank.ausgabe();
        erwarteNichts(bank, fall.name);
    }
}

} // namespace
