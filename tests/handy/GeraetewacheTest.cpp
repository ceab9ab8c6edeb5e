// What the adb server reports of its devices, and what a server of another kind does to us.

#include "handy/Geraetewache.hpp"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <gtest/gtest.h>

#include <cstdlib>
#include <semaphore>

using namespace mobilsteg;
using namespace std::chrono_literals;
using asio::ip::tcp;

namespace {

TEST(Geraetemeldungen, sagenWasSichGeaendertHat) {
    const std::tuple<std::string, std::optional<bool>> folge[] = {
        {"OK", false},          {"AY00", false},
        {"00", false},                                       // nothing is connected, and nothing was before
        {"0004A de0004", true},                              // the second one is not complete yet
        {"A de", false},        {"0004B de0004A de", false}, // there and back between two reads
        {"0000", true},
    };
    Geraetemeldungen meldungen;
    for (const auto& [bytes, anders] : folge)
        EXPECT_EQ(meldungen.nimm(bytes), anders) << bytes;
    meldungen.beginneNeu();
    EXPECT_EQ(meldungen.nimm("OKAY0000"), false) << "as before the connection was lost";
    for (const std::string fremd : {"FAIL0004nein", "HTTP/1.1 200", "OKAYzzzz", "OKAY-001", "OKAY00 4"}) {
        meldungen.beginneNeu();
        EXPECT_EQ(meldungen.nimm(fremd), std::nullopt) << fremd;
    }
}

TEST(Geraetewache, meldetSichAnUndRuftBeiJederAenderung) {
    asio::io_context kontext;
    tcp::acceptor server(kontext, {asio::ip::address_v4::loopback(), 0});
    ::setenv("ANDROID_ADB_SERVER_PORT", std::to_string(server.local_endpoint().port()).c_str(), 1);
    AsioSchlange schlange("wache");
    std::counting_semaphore<> gemeldet(0);
    Geraetewache wache(schlange, [&] { gemeldet.release(); });
    wache.halte();
    wache.halte(); // connects once
    auto adb = server.accept();
    std::string bitte(22, ' ');
    asio::read(adb, asio::buffer(bitte));
    EXPECT_EQ(bitte, "0012host:track-devices");
    const auto anfang = std::chrono::steady_clock::now();
    for (const char* meldung : {"OKAY0004A de", "0000"}) {
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
