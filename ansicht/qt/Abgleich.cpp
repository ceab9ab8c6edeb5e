#include "ansicht/qt/Abgleich.hpp"

#include <algorithm>

namespace mobilsteg {

namespace {

// More same things always count more than any number of the same kind.
constexpr int gleicheArt = 1;
constexpr int dasselbe = 10000;

int anzeige(bool gleich) {
    return gleich ? dasselbe : gleicheArt;
}

int bedienung(bool gleich) {
    return gleich ? dasselbe : 0;
}

int naehe(const Kopf&, const Kopf&) {
    return dasselbe;
}
int naehe(const Satz& a, const Satz& b) {
    return anzeige(a == b);
}
int naehe(const Trenner&, const Trenner&) {
    return gleicheArt;
}
int naehe(const Zeile& a, const Zeile& b) {
    return anzeige(a.bezeichnung == b.bezeichnung);
}
int naehe(const Symbolzeile& a, const Symbolzeile& b) {
    return anzeige(a.text == b.text);
}
int naehe(const Schalter& a, const Schalter& b) {
    return bedienung(a.was == b.was);
}
int naehe(const Knopf& a, const Knopf& b) {
    return bedienung(a.aktion == b.aktion);
}
int naehe(const Wahl& a, const Wahl& b) {
    return bedienung(a.was == b.was);
}

int naehe(const std::variant<Schalter, Knopf>& a, const std::variant<Schalter, Knopf>& b) {
    if (const auto* schalter = std::get_if<Schalter>(&a))
        return std::holds_alternative<Schalter>(b) ? naehe(*schalter, std::get<Schalter>(b)) : 0;
    return std::holds_alternative<Knopf>(b) ? naehe(std::get<Knopf>(a), std::get<Knopf>(b)) : 0;
}

int naehe(const Reihe& a, const Reihe& b) {
    return bedienung(std::any_of(a.teile.begin(), a.teile.end(), [&](const auto& links) {
        return std::any_of(b.teile.begin(), b.teile.end(),
                           [&](const auto& rechts) { return naehe(links, rechts) > 0; });
    }));
}

/// How gladly `b` takes over the widgets of `a`; 0: not at all.
int naehe(const Element& a, const Element& b) {
    return std::visit(
        [&](const auto& links) {
            using Art = std::decay_t<decltype(links)>;
            const auto* rechts = std::get_if<Art>(&b);
            return rechts == nullptr ? 0 : naehe(links, *rechts);
        },
        a);
}

} // namespace

std::vector<std::optional<std::size_t>> gleicheAb(const Baum& alt, const Baum& neu) {
    const std::size_t n = alt.size();
    const std::size_t m = neu.size();
    // summe[i][j]: the best that the rests from alt[i] and neu[j] on can come to.
    std::vector<std::vector<int>> summe(n + 1, std::vector<int>(m + 1, 0));
    std::vector<std::vector<int>> paar(n, std::vector<int>(m, 0));
    for (std::size_t i = n; i-- > 0;)
        for (std::size_t j = m; j-- > 0;) {
            paar[i][j] = naehe(alt[i], neu[j]);
            const int zusammen = paar[i][j] > 0 ? paar[i][j] + summe[i + 1][j + 1] : 0;
            summe[i][j] = std::max({summe[i + 1][j], summe[i][j + 1], zusammen});
        }

    std::vector<std::optional<std::size_t>> herkunft(m);
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < n && j < m) {
        if (paar[i][j] > 0 && summe[i][j] == paar[i][j] + summe[i + 1][j + 1])
            herkunft[j++] = i++;
        else if (summe[i][j] == summe[i + 1][j])
            ++i;
        else
            ++j;
    }
    return herkunft;
}

} // namespace mobilsteg
