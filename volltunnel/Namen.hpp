#pragma once

#include <map>
#include <memory>

#include "volltunnel/Waehler.hpp"

namespace mobilsteg::volltunnel {

/// Answers questions for names that came by UDP: asks the same server over TCP, through the proxy, on one
/// connection for all questions to it. One that stays without an answer gets SERVFAIL. On the context's
/// thread.
class Namen {
public:
    struct Auftrag {
        Stelle proxy;
        /// Brings an answer from the server back to who asked.
        std::function<void(const Stelle& server, const Stelle& fragender, std::string_view antwort)> antwort;
        std::function<void(Ausgang, Zeit beginn)> ausgang; ///< of each connection to a server
    };

    Namen(asio::io_context& kontext, Auftrag auftrag) : kontext_(kontext), auftrag_(std::move(auftrag)) {}
    void frage(const Stelle& fragender, const Stelle& server, std::string_view bytes);

    /// Ends what takes too long. About once a second.
    void raeume(Zeit jetzt);
    [[nodiscard]] std::uint64_t fragen() const { return fragen_; }

private:
    class Leitung;
    struct Frage {
        Stelle fragender;
        std::string bytes;
        Zeit frist;
        bool zweimal = false; ///< asked again on a second connection
    };

    void stelle(const Stelle& server, Frage frage);
    void gibAuf(const Stelle& server, const Frage& frage) const;

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

/// The answer to a question that could not be asked.
[[nodiscard]] std::string servfail(std::string_view frage);

/// The answer as it may travel by UDP: of one that is too long only the question is left, and a mark upon
/// which the program asks over TCP.
[[nodiscard]] std::string gekuerzt(std::string_view antwort, std::size_t hoechstens);

} // namespace mobilsteg::volltunnel
