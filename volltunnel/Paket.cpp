#include "volltunnel/Paket.hpp"

#include <algorithm>

namespace mobilsteg::volltunnel {

namespace {

constexpr std::uint8_t protIcmp = 1;
constexpr std::uint8_t protTcp = 6;
constexpr std::uint8_t protUdp = 17;
constexpr std::uint8_t protIcmp6 = 58;

constexpr std::uint8_t istFin = 1;
constexpr std::uint8_t istSyn = 2;
constexpr std::uint8_t istRst = 4;
constexpr std::uint8_t istAck = 16;

constexpr std::size_t kopf4 = 20;
constexpr std::size_t kopf6 = 40;

std::uint16_t wort(const std::uint8_t* stelle) {
    return static_cast<std::uint16_t>(stelle[0] << 8 | stelle[1]);
}

void setzeWort(std::uint8_t* stelle, std::size_t wert) {
    stelle[0] = static_cast<std::uint8_t>(wert >> 8);
    stelle[1] = static_cast<std::uint8_t>(wert);
}

std::uint32_t langwort(const std::uint8_t* stelle) {
    return static_cast<std::uint32_t>(wort(stelle)) << 16 | wort(stelle + 2);
}

void setzeLang(std::uint8_t* stelle, std::uint32_t wert) {
    setzeWort(stelle, wert >> 16);
    setzeWort(stelle + 2, wert & 0xFFFFU);
}

std::uint64_t summe(const std::uint8_t* stelle, std::size_t laenge) {
    std::uint64_t s = 0;
    for (; laenge > 1; stelle += 2, laenge -= 2)
        s += wort(stelle);
    return laenge == 1 ? s + (static_cast<std::uint64_t>(*stelle) << 8) : s;
}

std::uint16_t gefaltet(std::uint64_t s) {
    while (s > 0xFFFF)
        s = (s >> 16) + (s & 0xFFFF);
    return static_cast<std::uint16_t>(s);
}

Adresse adresse(const std::uint8_t* stelle, bool sechs) {
    if (sechs) {
        asio::ip::address_v6::bytes_type b;
        std::copy_n(stelle, b.size(), b.begin());
        return asio::ip::address_v6(b);
    }
    return asio::ip::address_v4(langwort(stelle));
}

void setzeAdresse(std::uint8_t* stelle, const Adresse& neue) {
    if (neue.is_v6())
        std::ranges::copy(neue.to_v6().to_bytes(), stelle);
    else
        setzeLang(stelle, neue.to_v4().to_uint());
}

/// RFC 1624: the checksum at `stelle` after the sum of what it covers went from `alt` to `neu`.
void bessere(std::uint8_t* stelle, std::uint64_t alt, std::uint64_t neu) {
    const auto nicht = [](unsigned wert) { return static_cast<std::uint16_t>(~wert); };
    setzeWort(stelle, nicht(gefaltet(std::uint64_t{nicht(wort(stelle))} + nicht(gefaltet(alt)) + neu)));
}

/// What an IP header says, and its protocol; absent: it is none. The ports and what else the protocol adds
/// come later.
std::optional<std::uint8_t> liesKopf(Bytes bytes, Paket& paket) {
    const bool sechs = !bytes.empty() && bytes[0] >> 4 == 6;
    if (bytes.size() < (sechs ? kopf6 : kopf4))
        return std::nullopt;
    paket.kopf = sechs ? kopf6 : static_cast<std::size_t>(bytes[0] & 15U) * 4;
    const std::size_t laenge = sechs ? kopf6 + wort(&bytes[4]) : wort(&bytes[2]);
    const bool anderes = !sechs && (bytes[0] >> 4 != 4 || (wort(&bytes[6]) & 0x3FFFU) != 0); // or a fragment
    if (anderes || paket.kopf < kopf4 || laenge < paket.kopf || laenge > bytes.size())
        return std::nullopt;
    paket.bytes = bytes.first(laenge);
    paket.von.address(adresse(&bytes[sechs ? 8 : 12], sechs));
    paket.nach.address(adresse(&bytes[sechs ? 24 : 16], sechs));
    return bytes[sechs ? 6 : 9];
}

std::uint8_t* stellen(std::string& bytes) {
    return reinterpret_cast<std::uint8_t*>(bytes.data());
}

/// An IP packet with `inhalt` behind its header, whose checksum at `stelle` is filled in.
std::string baue(const Adresse& von, const Adresse& nach, std::uint8_t protokoll, std::string inhalt,
                 std::size_t stelle) {
    const bool sechs = von.is_v6();
    std::string paket(sechs ? kopf6 : kopf4, '\0');
    std::uint8_t* const b = stellen(paket);
    b[0] = sechs ? 0x60 : 0x45;
    setzeWort(b + (sechs ? 4 : 2), sechs ? inhalt.size() : kopf4 + inhalt.size());
    b[sechs ? 6 : 9] = protokoll;
    b[sechs ? 7 : 8] = 64; // hops
    const std::size_t adressen = sechs ? 8 : 12;
    setzeAdresse(b + adressen, von);
    setzeAdresse(b + (sechs ? 24 : 16), nach);
    if (!sechs)
        setzeWort(b + 10, static_cast<std::uint16_t>(~gefaltet(summe(b, kopf4))));
    std::uint64_t s = summe(stellen(inhalt), inhalt.size());
    if (protokoll != protIcmp) // the others cover the addresses, too
        s += summe(b + adressen, paket.size() - adressen) + protokoll + inhalt.size();
    const auto fertig = static_cast<std::uint16_t>(~gefaltet(s));
    setzeWort(stellen(inhalt) + stelle,
              protokoll == protUdp && fertig == 0 ? 0xFFFF : fertig); // 0: without a checksum
    return paket + inhalt;
}

std::optional<std::string> abriss(const Paket& paket) {
    const std::uint8_t* b = &paket.bytes[paket.kopf];
    const std::uint8_t merkmale = b[13];
    if ((merkmale & istRst) != 0)
        return std::nullopt;
    std::string antwort(20, '\0');
    std::uint8_t* const a = stellen(antwort);
    setzeWort(a, paket.nach.port());
    setzeWort(a + 2, paket.von.port());
    if ((merkmale & istAck) != 0) {
        setzeLang(a + 4, langwort(b + 8));
        a[13] = istRst;
    } else {
        const auto laenge = static_cast<std::uint32_t>(paket.bytes.size() - paket.last);
        setzeLang(a + 8, langwort(b + 4) + laenge + ((merkmale & istSyn) != 0) + ((merkmale & istFin) != 0));
        a[13] = istRst | istAck;
    }
    a[12] = 5 << 4;
    return baue(paket.nach.address(), paket.von.address(), protTcp, std::move(antwort), 16);
}

std::string unerreichbar(const Paket& paket) {
    const bool sechs = paket.nach.address().is_v6();
    const bool port = paket.art == Art::udp;
    std::string antwort(8, '\0');
    antwort[0] = sechs ? 1 : 3;
    antwort[1] = sechs ? (port ? 4 : 3) : (port ? 3 : 1);
    // As much of the packet as the standards want back: the sender finds its socket by it.
    const std::size_t zitat = std::min(paket.bytes.size(), std::size_t{sechs ? 1232U : 548U});
    antwort.append(paket.bytes.begin(), paket.bytes.begin() + static_cast<std::ptrdiff_t>(zitat));
    return baue(paket.nach.address(), paket.von.address(), sechs ? protIcmp6 : protIcmp, std::move(antwort),
                2);
}

} // namespace

const Enden& tunnelenden(bool sechs) {
    const auto ende = [](const char* text) { return asio::ip::make_address(text); };
    // A range for measurements, which no network uses; and a private one.
    static const Enden enden[] = {{ende("198.19.108.1"), ende("198.19.108.2")},
                                  {ende("fd6d:6f62:7374:6567::1"), ende("fd6d:6f62:7374:6567::2")}};
    return enden[sechs ? 1 : 0];
}

std::optional<Paket> liesPaket(Bytes bytes) {
    Paket paket;
    const auto protokoll = liesKopf(bytes, paket);
    if (!protokoll)
        return std::nullopt;
    const Bytes rest = paket.bytes.subspan(paket.kopf);
    paket.last = paket.kopf;
    if (protokoll == protTcp) {
        if (rest.size() < 20)
            return std::nullopt;
        const std::size_t laenge = static_cast<std::size_t>(rest[12] >> 4) * 4;
        if (laenge < 20 || laenge > rest.size())
            return std::nullopt;
        paket.art = Art::tcp;
        paket.syn = (rest[13] & (istSyn | istAck | istRst | istFin)) == istSyn;
        paket.last += laenge;
    } else if (protokoll == protUdp) {
        if (rest.size() < 8 || wort(&rest[4]) != rest.size())
            return std::nullopt;
        paket.art = Art::udp;
        paket.last += 8;
    } else {
        const bool sechs = paket.von.address().is_v6();
        if (protokoll == (sechs ? protIcmp6 : protIcmp)) {
            if (rest.empty() || rest[0] != (sechs ? 128 : 8))
                return std::nullopt;
            paket.art = Art::echo;
        }
        return paket;
    }
    paket.von.port(wort(rest.data()));
    paket.nach.port(wort(&rest[2]));
    return paket;
}

void schreibeUm(Paket& paket, const Stelle& von, const Stelle& nach) {
    std::uint8_t* b = paket.bytes.data();
    const bool sechs = von.address().is_v6();
    std::uint8_t* const adressen = b + (sechs ? 8 : 12);
    const std::size_t breite = sechs ? 16 : 4;
    std::uint8_t* const ports = b + paket.kopf;
    const std::uint64_t adressenVorher = summe(adressen, 2 * breite);
    const std::uint64_t portsVorher = summe(ports, 4);
    setzeAdresse(adressen, von.address());
    setzeAdresse(adressen + breite, nach.address());
    setzeWort(ports, von.port());
    setzeWort(ports + 2, nach.port());
    const std::uint64_t adressenJetzt = summe(adressen, 2 * breite);
    bessere(ports + 16, adressenVorher + portsVorher, adressenJetzt + summe(ports, 4));
    if (!sechs)
        bessere(b + 10, adressenVorher, adressenJetzt);
    paket.von = von;
    paket.nach = nach;
}

std::optional<std::string> absage(const Paket& paket) {
    if (!istEinzelne(paket.von.address()) || !istEinzelne(paket.nach.address()))
        return std::nullopt;
    return paket.art == Art::tcp ? abriss(paket) : unerreichbar(paket);
}

std::optional<std::string> udpPaket(const Stelle& von, const Stelle& nach, std::string_view last) {
    constexpr std::size_t laengstes = 65'535 - kopf4 - 8;
    if (last.size() > laengstes)
        return std::nullopt;
    std::string inhalt(8, '\0');
    setzeWort(stellen(inhalt), von.port());
    setzeWort(stellen(inhalt) + 2, nach.port());
    setzeWort(stellen(inhalt) + 4, 8 + last.size());
    return baue(von.address(), nach.address(), protUdp, inhalt.append(last), 6);
}

bool istEinzelne(const Adresse& a) {
    if (a.is_unspecified() || a.is_multicast())
        return false;
    return a.is_v6() || (a.to_v4().to_uint() < 0xE000'0000 && a.to_v4().to_uint() > 0x00FF'FFFF);
}

} // namespace mobilsteg::volltunnel
