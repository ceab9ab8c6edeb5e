// The real HTTP client against a real server. Its limits of 3 and 10 silent seconds are too long to wait for
// here.

#include "handy/Http.hpp"

#include "plattform/Text.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <future>

using namespace mobilsteg;
using namespace std::string_literals;
using asio::ip::tcp;
using enum HttpAnfrage::Weg;
using namespace testing;

namespace {

/// Serves one connection after the other on loopback, until it goes away.
struct Server {
    explicit Server(const std::function<void(tcp::socket&)>& bediene, std::uint16_t port = 0)
        : horcher(kontext, {asio::ip::address_v4::loopback(), port}),
          faden(std::async(std::launch::async, [this, bediene] {
              for (auto kunde = horcher.accept(); !ende; kunde.close(), kunde = horcher.accept())
                  bediene(kunde);
          })) {}
    ~Server() {
        ende = true;
        tcp::socket(kontext).connect(horcher.local_endpoint());
    }

    asio::io_context kontext;
    tcp::acceptor horcher;
    std::atomic<bool> ende = false;
    std::future<void> faden; // goes first, which waits for its end
};

CurlHttp http; // one for all: nothing of an earlier request shows in the next

std::error_code egal; // a client that is gone shows in what it got or sent

/// One HTTP request; a body ends with "[ende]".
std::string liesAnfrage(tcp::socket& socket) {
    std::string bytes;
    for (const auto* ende : {"\r\n\r\n", "[ende]"})
        if (bytes.empty() || bytes.starts_with("POST"))
            asio::read_until(socket, asio::dynamic_buffer(bytes), ende, egal);
    return bytes;
}

std::string antwort(const std::string& kopf, const std::string& koerper = "") {
    return "HTTP/1.1 " + kopf + "\r\nContent-Length: " + std::to_string(koerper.size()) + "\r\n\r\n" +
           koerper;
}

// Neither way heeds the environment. The direct one would find nobody at this proxy, and the other one would
// go around the phone.
[[maybe_unused]] const bool umgebung = [] {
    for (const auto* name : {"http_proxy", "all_proxy", "ALL_PROXY", "https_proxy"})
        ::setenv(name, "http://127.0.0.1:9", 1);
    return ::setenv("no_proxy", "nur-am-handy.invalid", 1) == 0;
}();

const std::string amHandy = "nur-am-handy.invalid";

/// The phone's proxy towards one client, up to the request itself; returns what the client asked it for.
std::string vermittle(tcp::socket& socket, const std::string& leave) {
    const auto lies = [&](std::size_t anzahl) {
        std::string bytes(anzahl, '\0');
        bytes.resize(asio::read(socket, asio::buffer(bytes), egal));
        return bytes;
    };
    lies(static_cast<unsigned char>(lies(2).back())); // the ways to log in
    asio::write(socket, asio::buffer(leave), egal);
    const auto ziel = lies(7 + amHandy.size());
    asio::write(socket, asio::buffer("\x05\x00\x00\x01\x00\x00\x00\x00\x00\x00", 10), egal);
    return ziel;
}

std::vector<std::string> anfragen; // what the last server has heard

/// Asks a server that has these answers, for one request after the other: "status body", "-" without an
/// answer.
std::string hole(const std::vector<std::string>& antworten, const std::string& koerper = "",
                 HttpAnfrage::Weg weg = direkt, const std::string& leave = "\x05\x00"s) {
    const bool zumServer = weg == direkt;
    anfragen.clear();
    const Server server(
        [&](tcp::socket& socket) {
            EXPECT_EQ(vererbbareSockets(::getpeername, socket.local_endpoint().port()), 0);
            const auto ziel = zumServer ? "" : vermittle(socket, leave);
            anfragen.push_back(ziel + liesAnfrage(socket));
            if (anfragen.size() <= antworten.size())
                asio::write(socket, asio::buffer(antworten[anfragen.size() - 1]), egal);
        },
        zumServer ? 0 : 1080);
    const auto port = server.horcher.local_endpoint().port();
    const auto url = "http://" + (zumServer ? "127.0.0.1:" + std::to_string(port) : amHandy + ":8123");
    const auto ergebnis = http.hole(
        {weg, koerper.empty() ? "GET" : "POST", url + "/hin", {{"Content-Type", "text/plain"}}, koerper});
    return ergebnis ? std::to_string(ergebnis->status) + " " + ergebnis->koerper : "-";
}

const std::string gut = antwort("200 OK", "da");

TEST(CurlHttp, bringtWasDerServerSagtOderNichts) {
    for (const std::size_t umwege : {20U, 21U}) {
        std::vector<std::string> alle(umwege, antwort("302 Found\r\nLocation: /her", "ein Umweg"));
        alle.push_back(gut);
        EXPECT_EQ(hole(alle, "", durchProxy), umwege == 20 ? "200 da" : "-");
    }
    EXPECT_EQ(hole({antwort("503 Service Unavailable", "später")}), "503 später");
    EXPECT_EQ(hole({"HTTP/1.0 200 OK\r\n\r\nbis zum Ende"}), "200 bis zum Ende");
    const std::string vierMegabyte(4U << 20U, 'x');
    EXPECT_TRUE(hole({antwort("200 OK", vierMegabyte)}) == "200 " + vierMegabyte);
    for (const std::string& schlechte :
         {antwort("200 OK", vierMegabyte + "x"), "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalb"s,
          "SSH-2.0-OpenSSH_9.2\r\n"s, ""s})
        EXPECT_EQ(hole({schlechte}), "-") << schlechte.substr(0, 80);
    EXPECT_EQ(hole({antwort("302 Found\r\nLocation: file:///etc/hostname")}, "", durchProxy), "-");
}

/// What the phone is told is for it alone.
TEST(CurlHttp, sendetDenKoerperGanzUndKeinemAnderen) {
    // So large that curl would ask for leave to send it.
    const std::string koerper = "viel\0"s + std::string(1'200'000, 'k') + "[ende]";
    for (const std::string status : {"302", "307"}) {
        EXPECT_EQ(hole({antwort(status + " Found\r\nLocation: /her", "ein Umweg"), gut}, koerper),
                  status + " ein Umweg");
        EXPECT_THAT(anfragen,
                    ElementsAre(AllOf(StartsWith("POST /hin HTTP/1.1\r\n"), Not(HasSubstr("Expect:")),
                                      HasSubstr("\r\nContent-Type: text/plain\r\n"),
                                      EndsWith("\r\n\r\n" + koerper))));
    }
}

TEST(CurlHttp, fragtDenProxyDesHandysNachDemNamen) {
    EXPECT_EQ(hole({gut}, "", durchProxy), "200 da");
    EXPECT_THAT(anfragen.at(0),
                StartsWith("\x05\x01\x00\x03\x14nur-am-handy.invalid\x1F\xBBGET /hin HTTP/1.1\r\n"
                           "Host: nur-am-handy.invalid:8123\r\n"s));
    EXPECT_EQ(hole({gut}, "", durchProxy, "\x05\xFF"), "-") << "it wants a password";
    EXPECT_FALSE(http.hole({durchProxy, "GET", "http://" + amHandy, {}, ""})) << "nobody listens";
}

TEST(CurlHttp, kenntDenProxyAmGruss) {
    using Stuecke = std::vector<std::string>;
    for (const auto& stuecke :
         {Stuecke{"\x05\x00"s}, {"\x05", "\x00"s}, {"\x05\xFF"}, {"SSH-2.0-OpenSSH_9.2\r\n"}, {"\x05"}, {}}) {
        const Server proxy(
            [&](tcp::socket& s) {
                EXPECT_EQ(vererbbareSockets(::getpeername, s.local_endpoint().port()), 0);
                std::string gruss(3, '\0');
                asio::read(s, asio::buffer(gruss), egal);
                for (const auto& stueck : stuecke)
                    asio::write(s, asio::buffer(stueck), egal);
                EXPECT_TRUE(gruss == "\x05\x01\x00"s);
            },
            1080);
        EXPECT_EQ(http.proxyGruesst(), verbunden(stuecke, "") == "\x05\x00"s);
    }
    EXPECT_FALSE(http.proxyGruesst()) << "nobody listens";
}

} // namespace
