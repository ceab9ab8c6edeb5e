#include "volltunnel/Namen.hpp"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>

#include <algorithm>

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;
using Uhrzeit = std::chrono::steady_clock;

constexpr std::size_t dnsKopf = 12;
constexpr std::size_t laengsterName = 255;
constexpr std::size_t gleichzeitig = 1000; // questions on one connection
constexpr std::size_t hoechstensServer = 32;
constexpr std::chrono::seconds fragegeduld{4}; // programs ask again after five
constexpr std::chrono::seconds haltezeit{30};  // of a connection on which nothing is asked

std::size_t zahl(std::string_view bytes, std::size_t stelle) {
    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[stelle])) << 8 |
           static_cast<unsigned char>(bytes[stelle + 1]);
}

void setze(std::string& bytes, std::size_t stelle, std::size_t wert) {
    bytes[stelle] = static_cast<char>(wert >> 8);
    bytes[stelle + 1] = static_cast<char>(wert);
}

/// The byte behind the name at `stelle`; absent: it does not end within the message, or points elsewhere.
std::optional<std::size_t> hinterNamen(std::string_view bytes, std::size_t stelle) {
    bytes = bytes.substr(0, stelle + laengsterName);
    for (; stelle < bytes.size(); stelle += 1U + static_cast<unsigned char>(bytes[stelle])) {
        if (bytes[stelle] == 0)
            return stelle + 1;
        if (static_cast<unsigned char>(bytes[stelle]) > 63)
            break; // no question needs to point
    }
    return std::nullopt;
}

/// The header and, if it is whole, the only question.
std::string nurFrage(std::string_view nachricht) {
    const auto ende = zahl(nachricht, 4) == 1 ? hinterNamen(nachricht, dnsKopf) : std::nullopt;
    const bool ganz = ende && *ende + 4 <= nachricht.size();
    std::string kurz(nachricht.substr(0, ganz ? *ende + 4 : dnsKopf));
    setze(kurz, 4, ganz ? 1 : 0);
    return kurz.replace(6, 6, 6, '\0');
}

} // namespace

bool istFrage(std::string_view nachricht) {
    return nachricht.size() > dnsKopf && (static_cast<unsigned char>(nachricht[2]) & 0x80U) == 0 &&
           zahl(nachricht, 4) > 0;
}

std::size_t hoechstlaenge(std::string_view frage) {
    constexpr std::size_t ohneWunsch = 512;
    auto stelle = zahl(frage, 4) == 1 ? hinterNamen(frage, dnsKopf) : std::nullopt;
    if (stelle)
        stelle = hinterNamen(frage, *stelle + 4); // type and class of the question
    while (stelle && *stelle + 10 <= frage.size()) {
        if (zahl(frage, *stelle) == 41) // EDNS
            return std::max(ohneWunsch, zahl(frage, *stelle + 2));
        stelle = hinterNamen(frage, *stelle + 10 + zahl(frage, *stelle + 8));
    }
    return ohneWunsch;
}

std::string servfail(std::string_view frage) {
    std::string antwort = nurFrage(frage);
    antwort[2] = static_cast<char>((antwort[2] & 0x79) | 0x80); // an answer; kind of question and wish stay
    antwort[3] = static_cast<char>(0x82);                       // recursion there would be, but it failed
    return antwort;
}

std::string gekuerzt(std::string_view antwort, std::size_t hoechstens) {
    if (antwort.size() <= hoechstens)
        return std::string(antwort);
    std::string kurz = nurFrage(antwort);
    kurz[2] = static_cast<char>(kurz[2] | 2);
    return kurz;
}

/// A connection to one server, from the dialling to its end.
class Namen::Leitung : public std::enable_shared_from_this<Leitung> {
public:
    Leitung(Namen& namen, Stelle server)
        : namen_(namen), server_(std::move(server)), socket_(namen.kontext_) {}

    void beginne() {
        waehle(namen_.kontext_, namen_.auftrag_.proxy, server_,
               [ich = shared_from_this()](Ausgang ausgang, tcp::socket socket) {
                   if (ich->zu_)
                       return;
                   ich->steht_ = ausgang == Ausgang::verbunden;
                   ich->socket_ = std::move(socket);
                   if (ich->steht_) {
                       ich->schreibe();
                       ich->liesLaenge();
                   } else {
                       ich->ende(false);
                   }
                   ich->namen_.auftrag_.ausgang(ausgang, ich->beginn_);
               });
    }

    void stelle(Frage frage) {
        if (offene_.size() >= gleichzeitig)
            return namen_.gibAuf(server_, frage);
        while (offene_.contains(naechste_))
            ++naechste_;
        zuletzt_ = Uhrzeit::now();
        const std::size_t anfang = ausgang_.size();
        ausgang_.append(2, '\0').append(frage.bytes);
        setze(ausgang_, anfang, frage.bytes.size());
        setze(ausgang_, anfang + 2, naechste_);
        offene_.emplace(naechste_, std::move(frage));
        if (steht_ && unterwegs_.empty())
            schreibe();
    }

    /// False: of no use any more.
    [[nodiscard]] bool raeume(Zeit jetzt) {
        std::erase_if(offene_, [&](const auto& offene) {
            const bool zuSpaet = offene.second.frist <= jetzt;
            if (zuSpaet)
                namen_.gibAuf(server_, offene.second);
            return zuSpaet;
        });
        return !offene_.empty() || zuletzt_ + haltezeit > jetzt;
    }

    /// Servers end a connection on which nothing was asked for a while: with `nochmal`, what was asked
    /// meanwhile is asked once more, on another one.
    void ende(bool nochmal) {
        if (std::exchange(zu_, true))
            return;
        std::error_code egal;
        socket_.close(egal);
        namen_.leitungen_.erase(server_);
        for (auto& [kennung, frage] : offene_) {
            if (!nochmal || std::exchange(frage.zweimal, true))
                namen_.gibAuf(server_, frage);
            else
                namen_.stelle(server_, std::move(frage));
        }
    }

private:
    void schreibe() {
        unterwegs_ = std::exchange(ausgang_, {});
        asio::async_write(socket_, asio::buffer(unterwegs_),
                          [ich = shared_from_this()](std::error_code fehler, std::size_t) {
                              if (fehler)
                                  return ich->ende(true);
                              ich->unterwegs_.clear();
                              if (!ich->ausgang_.empty())
                                  ich->schreibe();
                          });
    }

    void liesLaenge() {
        lies(2, [this] {
            lies(zahl(eingang_, 0), [this] {
                nimm();
                liesLaenge();
            });
        });
    }

    void lies(std::size_t laenge, std::function<void()> dann) {
        eingang_.resize(laenge);
        asio::async_read(socket_, asio::buffer(eingang_),
                         [ich = shared_from_this(), dann = std::move(dann)](
                             std::error_code fehler, std::size_t) { fehler ? ich->ende(true) : dann(); });
    }

    void nimm() {
        const auto offene = eingang_.size() < dnsKopf
                                ? offene_.end()
                                : offene_.find(static_cast<std::uint16_t>(zahl(eingang_, 0)));
        if (offene == offene_.end())
            return;
        const Frage frage = std::move(offene->second);
        offene_.erase(offene);
        eingang_.replace(0, 2, frage.bytes, 0, 2);
        namen_.auftrag_.antwort(server_, frage.fragender, gekuerzt(eingang_, hoechstlaenge(frage.bytes)));
    }

    Namen& namen_;
    Stelle server_;
    tcp::socket socket_;
    Zeit beginn_ = Uhrzeit::now(), zuletzt_ = beginn_;
    bool steht_ = false, zu_ = false;
    std::uint16_t naechste_ = 1;
    std::map<std::uint16_t, Frage> offene_; ///< by the number that they travel under
    std::string ausgang_, unterwegs_, eingang_;
};

void Namen::frage(const Stelle& fragender, const Stelle& server, std::string_view bytes) {
    if (!istFrage(bytes))
        return;
    ++fragen_;
    stelle(server, {fragender, std::string(bytes), Uhrzeit::now() + fragegeduld});
}

void Namen::stelle(const Stelle& server, Frage frage) {
    auto leitung = leitungen_.find(server);
    if (leitung == leitungen_.end()) {
        if (leitungen_.size() >= hoechstensServer)
            return gibAuf(server, frage);
        leitung = leitungen_.emplace(server, std::make_shared<Leitung>(*this, server)).first;
        leitung->second->beginne();
    }
    leitung->second->stelle(std::move(frage));
}

void Namen::gibAuf(const Stelle& server, const Frage& frage) const {
    auftrag_.antwort(server, frage.fragender, servfail(frage.bytes));
}

void Namen::raeume(Zeit jetzt) {
    for (const auto& [server, leitung] : std::map(leitungen_))
        if (!leitung->raeume(jetzt))
            leitung->ende(false);
}

} // namespace mobilsteg::volltunnel
