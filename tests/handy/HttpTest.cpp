// The real HTTP client against a real server. Its limits of 3 and 10 silent seconds are too long to wait for
// here.

#include "handy/Http.hpp"

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
#include <thread>

using namespace mobilsteg;
using namespace std::string_literals;
using asio::ip::tcp;
using namespace testing;

namespace {

/// Serves one connection after the other on loopback, until it goes away.
class Server {
public:
    explicit Server(const std::function<void(tcp::socket&)>& bediene, std::uint16_t port = 0)
        : horcher_(kontext_, {asio::ip::address_v4::loopback(), port}), faden_([this, bediene] {
              while (true) {
                  auto kunde = horcher_.accept();
                  if (ende_)
                      return;
                  bediene(kunde);
              }
          }) {}
    ~Server() {
        ende_ = true;
        tcp::socket(kontext_).connect(horcher_.local_endpoint());
        faden_.join();
    }
    [[nodiscard]] std::uint16_t port() const { return horcher_.local_endpoint().port(); }

private:
    asio::io_context kontext_;
    tcp::acceptor horcher_;
    std::atomic<bool> ende_ = false;
    std::thread faden_;
};

std::error_code egal; // a client that is gone shows in what it got or sent

std::string lies(tcp::socket& socket, std::size_t anzahl) {
    std::string bytes(anzahl, '\0');
    bytes.resize(asio::read(socket, asio::buffer(bytes), egal));
    return bytes;
}

/// One HTTP request with its body.
std::string liesAnfrage(tcp::socket& socket) {
    std::string bytes;
    const std::size_t kopf = asio::read_until(socket, asio::dynamic_buffer(bytes), "\r\n\r\n", egal);
    const std::size_t laenge = bytes.find("Content-Length: ");
    if (laenge < kopf)
        bytes += lies(socket, kopf + std::stoul(bytes.substr(laenge + 16)) - bytes.size());
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

/// Asks a server that has these answers for one request after the other; adds what it hears to `anfragen`.
/// Returns "status body", "-" without an answer.
std::string hole(const std::vector<std::string>& antworten, std::vector<std::string>& anfragen,
                 const std::string& koerper = "") {
    const Server server([&, naechste = antworten.begin()](tcp::socket& socket) mutable {
        anfragen.push_back(liesAnfrage(socket));
        EXPECT_EQ(vererbbareSockets(::getpeername, socket.local_endpoint().port()), 0);
        if (naechste != antworten.end())
            asio::write(socket, asio::buffer(*naechste++), egal);
    });
    const auto ergebnis = CurlHttp().hole({HttpAnfrage::Weg::direkt,
                                           koerper.empty() ? "GET" : "POST",
                                           "http://127.0.0.1:" + std::to_string(server.port()) + "/hin",
                                           {{"Content-Type", "text/plain"}},
                                           koerper});
    return ergebnis ? std::to_string(ergebnis->status) + " " + ergebnis->koerper : "-";
}

const std::string gut = antwort("200 OK", "da");

TEST(CurlHttp, bringtWasDerServerSagtOderNichts) {
    const std::string umweg = antwort("302 Found\r\nLocation: /her", "ein Umweg");
    const auto umwege = [&](std::size_t anzahl) {
        std::vector<std::string> alle(anzahl, umweg);
        alle.push_back(gut);
        return alle;
    };
    const std::string vierMegabyte(4U << 20U, 'x');
    const std::vector<std::pair<std::vector<std::string>, std::string>> faelle = {
        {umwege(0), "200 da"},
        {umwege(20), "200 da"},
        {umwege(21), "-"},
        {{antwort("302 Found\r\nLocation: file:///etc/hostname")}, "-"},
        {{antwort("503 Service Unavailable", "später")}, "503 später"},
        {{"HTTP/1.0 200 OK\r\n\r\nbis zum Ende"}, "200 bis zum Ende"},
        {{antwort("200 OK", vierMegabyte)}, "200 " + vierMegabyte},
        {{antwort("200 OK", vierMegabyte + "x")}, "-"},
        {{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalb"}, "-"},
        {{"SSH-2.0-OpenSSH_9.2\r\n"}, "-"},
        {{}, "-"}};
    for (std::size_t i = 0; i < faelle.size(); ++i) {
        std::vector<std::string> egalWas;
        EXPECT_TRUE(hole(faelle[i].first, egalWas) == faelle[i].second) << i;
    }
}

TEST(CurlHttp, sendetDenKoerperUndLaesstIhnNurBei302Fallen) {
    const std::string koerper =
        "viel\0"s + std::string(1'200'000, 'k'); // curl would ask for leave to send it
    std::vector<std::string> anfragen;
    for (const auto* kopf : {"302 Found\r\nLocation: /her", "307 Temporary Redirect\r\nLocation: /her"})
        EXPECT_EQ(hole({antwort(kopf), gut}, anfragen, koerper), "200 da");
    for (auto& anfrage : anfragen)
        if (anfrage.ends_with(koerper)) // too long for a report
            anfrage.replace(anfrage.size() - koerper.size(), koerper.size(), "[...]");
    const auto post = [&](const std::string& pfad) {
        return AllOf(StartsWith("POST " + pfad + " HTTP/1.1\r\n"), Not(HasSubstr("Expect:")),
                     HasSubstr("\r\nContent-Type: text/plain\r\n"), EndsWith("\r\n\r\n[...]"));
    };
    const auto get = AllOf(StartsWith("GET /her "), EndsWith("\r\n\r\n"));
    EXPECT_THAT(anfragen, ElementsAre(post("/hin"), get, post("/hin"), post("/her")));
}

TEST(CurlHttp, fragtDenProxyDesHandysNachDemNamen) {
    std::string wunsch;
    std::string anfrage;
    const HttpAnfrage frage{
        HttpAnfrage::Weg::durchProxy, "GET", "http://nur-am-handy.invalid:8123/ip", {}, ""};
    for (const auto& leave : {"\x05\x00"s, "\x05\xFF"s}) {
        const Server proxy(
            [&](tcp::socket& s) {
                (void)lies(s, static_cast<unsigned char>(lies(s, 2).back())); // the ways to log in
                asio::write(s, asio::buffer(leave), egal);
                wunsch += lies(s, 27);
                asio::write(s, asio::buffer("\x05\x00\x00\x01\x00\x00\x00\x00\x00\x00", 10), egal);
                anfrage += liesAnfrage(s);
                asio::write(s, asio::buffer(antwort("200 OK", "203.0.113.7\n")), egal);
            },
            1080);
        EXPECT_EQ(CurlHttp().hole(frage).has_value(), leave.back() == 0);
    }
    EXPECT_EQ(wunsch, "\x05\x01\x00\x03\x14nur-am-handy.invalid\x1F\xBB"s);
    EXPECT_THAT(anfrage, StartsWith("GET /ip HTTP/1.1\r\nHost: nur-am-handy.invalid:8123\r\n"));
    EXPECT_FALSE(CurlHttp().hole(frage)) << "nobody listens";
}

} // namespace
