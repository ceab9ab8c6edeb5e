#pragma once

#include <deque>
#include <map>
#include <memory>

#include "volltunnel/Waehler.hpp"

namespace mobilsteg::volltunnel {

/// Answers questions for names that came by UDP: asks the same server over TCP, through the proxy, on one
/// connection for all questions to it. A question that stays without an answer gets SERVFAIL. On the
/// context's thread only.
class Namen {
public:
    struct Auftrag {
        Stelle proxy;
        /// Brings an answer from the server back to who asked.
        std::function<void(const Stelle& server, const Stelle& fragender, std::string_view antwort)> antwort;
        std::function<void(Ausgang, Zeit beginn)> ausgang; ///< of each connection to a server
    };

    static constexpr std::chrono::seconds geduld{4};     ///< programs ask again after five
    static constexpr std::chrono::seconds haltezeit{30}; ///< of a connection on which nothing is asked

    Namen(asio::io_context& kontext, Auftrag auftrag);
    ~Namen();

    void frage(const Stelle& fragender, const Stelle& server, std::string_view bytes);

    /// Ends what takes too long. About once a second.
    void raeume(Zeit jetzt);

    [[nodiscard]] std::uint64_t fragen() const { return fragen_; }

private:
    class Leitung;

    asio::io_context& kontext_;
    Auftrag auftrag_;
    std::uint64_t fragen_ = 0;
    std::map<Stelle, std::shared_ptr<Leitung>> leitungen_;
};

// What is read of messages; pure.

/// Whether it can be a question: a header, at least one name asked, and no answer.
[[nodiscard]] bool istFrage(std::string_view nachricht);

/// The longest answer that who asked takes by UDP: what the question says (EDNS), 512 otherwise.
[[nodiscard]] std::size_t hoechstlaenge(std::string_view frage);

/// "Ask somebody else": the answer to a question that could not be asked.
[[nodiscard]] std::string servfail(std::string_view frage);

/// The answer as it may travel by UDP: too long, and only its header and a mark are left, upon which the
/// program asks over TCP.
[[nodiscard]] std::string gekuerzt(std::string_view antwort, std::size_t hoechstens);

} // namespace mobilsteg::volltunnel
