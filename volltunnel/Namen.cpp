#include "volltunnel/Namen.hpp"

#include <asio/buffer.hpp>
#include <asio/write.hpp>

#include <algorithm>

namespace mobilsteg::volltunnel {

namespace {

using asio::ip::tcp;
using Uhrzeit = std::chrono::steady_clock;

constexpr std::size_t dnsKopf = 12;
constexpr std::size_t gleichzeitig = 1000; // questions on one connection
constexpr std::size_t hoechstensServer = 32;

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
    while (stelle < bytes.size()) {
        const auto laenge = static_cast<unsigned char>(bytes[stelle]);
        if (laenge == 0)
            return stelle + 1;
        if (laenge > 63)
            return std::nullopt; // no question needs to point
        stelle += 1 + laenge;
    }
    return std::nullopt;
}

} // namespace

bool istFrage(std::string_view nachricht) {
    return nachricht.size() > dnsKopf && (static_cast<unsigned char>(nachricht[2]) & 0x80U) == 0 &&
           zahl(nachricht, 4) > 0;
}

std::size_t hoechstlaenge(std::string_view frage) {
    constexpr std::size_t ohneWunsch = 512;
    if (!istFrage(frage) || zahl(frage, 4) != 1 || zahl(frage, 6) != 0 || zahl(frage, 8) != 0)
        return ohneWunsch;
    auto stelle = hinterNamen(frage, dnsKopf);
    if (!stelle)
        return ohneWunsch;
    *stelle += 4; // type and class of the question
    for (std::size_t weitere = zahl(frage, 10); weitere > 0; --weitere) {
        stelle = hinterNamen(frage, *stelle);
        if (!stelle || *stelle + 10 > frage.size())
            return ohneWunsch;
        if (zahl(frage, *stelle) == 41) // EDNS
            return std::max(ohneWunsch, zahl(frage, *stelle + 2));
        *stelle += 10 + zahl(frage, *stelle + 8);
    }
    return ohneWunsch;
}

std::string servfail(std::string_view frage) {
    const auto ende = hinterNamen(frage, dnsKopf);
    const bool ganz = zahl(frage, 4) == 1 && ende && *ende + 4 <= frage.size();
    std::string antwort(frage.substr(0, ganz ? *ende + 4 : dnsKopf));
    antwort[2] = static_cast<char>((antwort[2] & 0x79) | 0x80); // an answer; kind of question and wish stay
    antwort[3] = static_cast<char>(0x82);                       // recursion there would be, but it failed
    setze(antwort, 4, ganz ? 1 : 0);
    antwort.replace(6, 6, 6, '\0');
    return antwort;
}

std::string gekuerzt(std::string_view antwort, std::size_t hoechstens) {
    if (antwort.size() <= hoechstens || antwort.size() < dnsKopf)
        return std::string(antwort);
    const auto ende = zahl(antwort, 4) == 1 ? hinterNamen(antwort, dnsKopf) : std::nullopt;
    const bool ganz = ende && *ende + 4 <= std::min(antwort.size(), hoechstens);
    std::string kurz(antwort.substr(0, ganz ? *ende + 4 : dnsKopf));
    kurz[2] = static_cast<char>(kurz[2] | 2);
    setze(kurz, 4, ganz ? 1 : 0);
    kurz.replace(6, 6, 6, '\0');
    return kurz;
}

/// The connection to one server.
class Namen::Leitung : public std::enable_shared_from_this<Leitung> {
public:
    Leitung(Namen& namen, Stelle server)
        : namen_(namen), server_(std::move(server)), socket_(namen.kontext_), eingang_(2) {}

    void frage(const Stelle& fragender, std::string_view bytes) {
        Frage neue{fragender, std::string(bytes), Uhrzeit::now() + geduld};
        if (offene_.size() >= gleichzeitig)
            return gibAuf(neue);
        while (offene_.contains(naechste_))
            ++naechste_;
        sende(naechste_, neue.bytes);
        offene_.emplace(naechste_++, std::move(neue));
    }

    /// False: of no use any more.
    [[nodiscard]] bool raeume(Zeit jetzt) {
        std::erase_if(offene_, [&](const auto& offene) {
            const bool zuSpaet = offene.second.frist <= jetzt;
            if (zuSpaet)
                gibAuf(offene.second);
            return zuSpaet;
        });
        return !offene_.empty() || zuletzt_ + haltezeit > jetzt;
    }

    void schliesse() {
        std::error_code egal;
        zu_ = true;
        socket_.close(egal);
    }

private:
    struct Frage {
        Stelle fragender;
        std::string bytes;
        Zeit frist;
        bool zweimal = false; ///< asked again on a second connection
    };

    enum class Lage { ruht, waehlt, steht };

    void gibAuf(const Frage& frage) {
        namen_.auftrag_.antwort(server_, frage.fragender, servfail(frage.bytes));
    }

    void sende(std::uint16_t kennung, std::string_view bytes) {
        zuletzt_ = Uhrzeit::now();
        std::string laenge(2, '\0');
        setze(laenge, 0, bytes.size());
        const std::size_t stelle = ausgang_.size() + 2;
        ausgang_.append(laenge).append(bytes);
        setze(ausgang_, stelle, kennung);
        if (lage_ == Lage::ruht)
            waehleAn();
        else if (lage_ == Lage::steht && unterwegs_.empty())
            schreibe();
    }

    void waehleAn() {
        lage_ = Lage::waehlt;
        waehle(namen_.kontext_, namen_.auftrag_.proxy, server_,
               [ich = shared_from_this(), beginn = Uhrzeit::now()](Ausgang ausgang, tcp::socket socket) {
                   if (ich->zu_)
                       return;
                   ich->socket_ = std::move(socket);
                   if (ausgang == Ausgang::verbunden) {
                       ich->lage_ = Lage::steht;
                       ich->eingang_.resize(2);
                       ich->schreibe();
                       ich->lies(0);
                   } else {
                       ich->brichAb(true);
                   }
                   ich->namen_.auftrag_.ausgang(ausgang, beginn);
               });
    }

    void schreibe() {
        if (ausgang_.empty())
            return;
        unterwegs_ = std::exchange(ausgang_, {});
        asio::async_write(
            socket_, asio::buffer(unterwegs_),
            [ich = shared_from_this(), wann = generation_](std::error_code fehler, std::size_t) {
                if (ich->zu_ || wann != ich->generation_)
                    return;
                ich->unterwegs_.clear();
                fehler ? ich->brichAb(false) : ich->schreibe();
            });
    }

    /// Two bytes that tell the length, then the message; `da` bytes of either are there.
    void lies(std::size_t da) {
        socket_.async_read_some(
            asio::buffer(eingang_.data() + da, eingang_.size() - da),
            [ich = shared_from_this(), da, wann = generation_](std::error_code fehler, std::size_t n) {
                if (ich->zu_ || wann != ich->generation_)
                    return;
                if (fehler)
                    return ich->brichAb(false);
                if (da + n < ich->eingang_.size())
                    return ich->lies(da + n);
                ich->nimm();
                ich->lies(0);
            });
    }

    void nimm() {
        laengeKommt_ = !laengeKommt_;
        if (!laengeKommt_) {
            const std::size_t laenge = zahl({eingang_.data(), 2}, 0);
            eingang_.resize(laenge);
            if (laenge > 0)
                return;
            laengeKommt_ = true; // an empty message
        } else if (eingang_.size() >= dnsKopf) {
            std::string antwort(eingang_.begin(), eingang_.end());
            const auto offene = offene_.find(static_cast<std::uint16_t>(zahl(antwort, 0)));
            if (offene != offene_.end()) {
                const Frage frage = std::move(offene->second);
                offene_.erase(offene);
                antwort.replace(0, 2, frage.bytes, 0, 2);
                namen_.auftrag_.antwort(server_, frage.fragender,
                                        gekuerzt(antwort, hoechstlaenge(frage.bytes)));
            }
        }
        eingang_.resize(2);
    }

    /// The connection is gone. Servers end one when nothing was asked for a while: what was asked meanwhile
    /// is asked once more.
    void brichAb(bool endgueltig) {
        ++generation_;
        lage_ = Lage::ruht;
        laengeKommt_ = true;
        eingang_.resize(2);
        unterwegs_.clear();
        ausgang_.clear();
        std::error_code egal;
        socket_.close(egal);
        for (auto& [kennung, frage] : std::exchange(offene_, {})) {
            if (endgueltig || frage.zweimal) {
                gibAuf(frage);
                continue;
            }
            frage.zweimal = true;
            sende(kennung, frage.bytes);
            offene_.emplace(kennung, std::move(frage));
        }
    }

    Namen& namen_;
    Stelle server_;
    tcp::socket socket_;
    Lage lage_ = Lage::ruht;
    bool zu_ = false;
    bool laengeKommt_ = true;
    unsigned generation_ = 0; ///< of the connection; handlers of an older one do nothing
    std::uint16_t naechste_ = 1;
    std::map<std::uint16_t, Frage> offene_;
    std::string ausgang_, unterwegs_;
    std::vector<char> eingang_;
    Zeit zuletzt_ = Uhrzeit::now();
};

Namen::Namen(asio::io_context& kontext, Auftrag auftrag) : kontext_(kontext), auftrag_(std::move(auftrag)) {}

Namen::~Namen() {
    for (const auto& [server, leitung] : leitungen_)
        leitung->schliesse();
}

void Namen::frage(const Stelle& fragender, const Stelle& server, std::string_view bytes) {
    if (!istFrage(bytes))
        return;
    ++fragen_;
    auto& leitung = leitungen_[server];
    if (!leitung && leitungen_.size() > hoechstensServer) {
        leitungen_.erase(server);
        return auftrag_.antwort(server, fragender, servfail(bytes));
    }
    if (!leitung)
        leitung = std::make_shared<Leitung>(*this, server);
    leitung->frage(fragender, bytes);
}

void Namen::raeume(Zeit jetzt) {
    std::erase_if(leitungen_, [&](const auto& eine) {
        const bool weg = !eine.second->raeume(jetzt);
        if (weg)
            eine.second->schliesse();
        return weg;
    });
}

} // namespace mobilsteg::volltunnel
