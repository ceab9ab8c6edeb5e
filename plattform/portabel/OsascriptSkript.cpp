#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>

namespace mobilsteg {

namespace {

/// A file without a name that holds the source, at its beginning.
Deskriptor alsEingabe(const std::string& quelle) {
    std::error_code egal;
    std::string name = (std::filesystem::temp_directory_path(egal) / "bordlotse-XXXXXX").string();
    Deskriptor datei(::mkostemp(name.data(), O_CLOEXEC));
    if (!datei)
        return {};
    ::unlink(name.c_str());
    const auto laenge = static_cast<ssize_t>(quelle.size());
    if (::pwrite(datei.nummer(), quelle.data(), quelle.size(), 0) != laenge)
        return {};
    return datei;
}

/// Reads to the end; a dialog may stand open for hours meanwhile.
std::string allesAus(const Deskriptor& rohr) {
    std::string bytes;
    pollfd fall{rohr.nummer(), POLLIN, 0};
    do
        ::poll(&fall, 1, -1);
    while (liesBlock(rohr, bytes));
    return bytes;
}

class OsascriptSkript final : public Adminskript {
public:
    explicit OsascriptSkript(Orte orte) : orte_(std::move(orte)) {}

    [[nodiscard]] std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override {
        const Deskriptor eingabe = alsEingabe(quelle);
        auto versuch =
            eingabe ? starteProzess(orte_.imSystem("/usr/bin/osascript"), {"-"}, {eingabe.nummer(), true})
                    : Startversuch{};
        if (!versuch.kind)
            return Skriptfehler{true, 0, std::nullopt};
        const std::string fehler = allesAus(versuch.kind->fehler);
        if (versuch.kind->warteUndErnte() == 0)
            return std::nullopt;
        return liesSkriptfehler(alsUtf8(fehler));
    }

private:
    Orte orte_;
};

} // namespace

std::unique_ptr<Adminskript> osascriptSkript(const Orte& orte) {
    return std::make_unique<OsascriptSkript>(orte);
}

Skriptfehler liesSkriptfehler(std::string_view fehlerausgabe) {
    constexpr std::string_view marke = "execution error: ";
    Skriptfehler fehler;
    const auto zeilen = teile(beschnitten(fehlerausgabe), '\n');
    const auto zeile = zeilen.empty() ? std::string_view() : beschnitten(zeilen.back());
    const auto anfang = zeile.find(marke);
    const auto klammer = zeile.rfind('(');
    if (anfang == std::string_view::npos || klammer == std::string_view::npos || !zeile.ends_with(')') ||
        klammer < anfang + marke.size())
        return fehler;
    const auto zahl = zeile.substr(klammer + 1, zeile.size() - klammer - 2);
    int nummer = 0;
    if (std::from_chars(zahl.data(), zahl.data() + zahl.size(), nummer).ptr != zahl.data() + zahl.size())
        return fehler;
    fehler.nummer = nummer;
    const auto meldung = beschnitten(zeile.substr(anfang + marke.size(), klammer - anfang - marke.size()));
    if (!meldung.empty())
        fehler.meldung = std::string(meldung);
    return fehler;
}

} // namespace mobilsteg
