// What the adb server tells us, and what a server of another kind does to us.

#include "handy/Geraetewache.hpp"

#include "handy/Adb.hpp"
#include "handy/Adbserver.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <semaphore>

using namespace mobilsteg;
using namespace std::chrono_literals;
using asio::ip::tcp;

namespace {

using Vielleicht = std::optional<std::string>;

TEST(Adbmeldungen, kommenGanzUndNurDieNeueste) {
    const std::pair<std::string, Vielleicht> folge[] = {
        {"OK", std::nullopt},     {"AY00", std::nullopt},        {"00", ""}, {"", std::nullopt}, // told once
        {"0004A de0004", "A de"}, // the second one is not complete yet
        {"A d", std::nullopt},    {"e0004B de0004C de", "C de"},
    };
    Adbmeldungen meldungen;
    for (const auto& [bytes, neueste] : folge) {
        EXPECT_TRUE(meldungen.nimm(bytes));
        EXPECT_EQ(meldungen.neueste(), neueste) << bytes;
    }
    for (const std::string fremd : {"FAIL0004nein", "HTTP/1.1 200", "OKAYzzzz", "OKAY-001", "OKAY00 4"})
        EXPECT_FALSE(Adbmeldungen().nimm(fremd)) << fremd;
}

struct Adbserver {
    Adbserver() {
        ::setenv("ANDROID_ADB_SERVER_PORT", std::to_string(horcher.local_endpoint().port()).c_str(), 1);
    }

    /// The next client, once it has asked that.
    tcp::socket kunde(std::string_view frage) {
        auto einer = horcher.accept();
        std::string gelesen(frage.size(), ' ');
        asio::read(einer, asio::buffer(gelesen));
        EXPECT_EQ(gelesen, frage);
        return einer;
    }

    asio::io_context kontext;
    tcp::acceptor horcher{kontext, {asio::ip::address_v4::loopback(), 0}};
};

TEST(Adbserver, nenntDieForwardsOderDasWerkzeugMuss) {
    const std::pair<std::string, std::string> antworten[] = {
        {"OKAY0007R5 a b\n", "R5 a b\n"},
        {"OKAY0000", ""},
        {"OKAY0007R5 a", "vom Werkzeug"}, // half an answer
        {"FAIL0004nein", "vom Werkzeug"},
    };
    Adbserver server;
    const auto werkzeug = [](auto&&...) { return Ergebnis{0, "vom Werkzeug", ""}; };
    const Adb adb(werkzeug, {}, {}, forwardsVomServer);
    for (const auto& [antwort, liste] : antworten) {
        const auto faden = std::async(std::launch::async, [&, gesagt = antwort] {
            auto kunde = server.kunde("0011host:list-forward");
            for (const char c : gesagt)
                asio::write(kunde, asio::buffer(&c, 1));
        });
        EXPECT_EQ(adb.forwards("adb"), liste) << antwort;
    }
    ::setenv("ADB_SERVER_SOCKET", "tcp:anderswo:5037", 1);
    EXPECT_EQ(adb.forwards("adb"), "vom Werkzeug") << "only that finds this server";
    ::unsetenv("ADB_SERVER_SOCKET");
}

TEST(Geraetewache, meldetSichAnUndRuftBeiJederAenderung) {
    Adbserver server;
    AsioSchlange schlange("wache");
    std::counting_semaphore<> gemeldet(0);
    Geraetewache wache(schlange, [&] { gemeldet.release(); });
    wache.halte();
    wache.halte(); // connects once
    auto adb = server.kunde("0012host:track-devices");
    const auto anfang = std::chrono::steady_clock::now();
    for (const char* meldung : {"OKAY0004A de", "0004B de0004A de0000"}) {
        asio::write(adb, asio::buffer(std::string(meldung)));
        EXPECT_TRUE(gemeldet.try_acquire_for(4s)) << meldung;
    }
    EXPECT_GE(std::chrono::steady_clock::now() - anfang, 100ms) << "at most ten times a second";
    asio::write(adb, asio::buffer(std::string("kein adb")));
    std::error_code ende;
    char byte = 0;
    EXPECT_EQ(adb.read_some(asio::buffer(&byte, 1), ende), 0U) << "the connection is given up";
    EXPECT_FALSE(gemeldet.try_acquire());
}

} // namespace
