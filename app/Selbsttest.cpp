#include "ansicht/Browser.hpp"
#include "app/Dienste.hpp"
#include "handy/Lauf.hpp"
#include "netz/Variante.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"

#include <cstdio>

namespace mobilsteg {

namespace {

void sage(const std::string& name, const std::string& wert) {
    constexpr std::size_t spalte = 16;
    std::printf("%s%s%s\n", name.c_str(),
                std::string(name.size() < spalte ? spalte - name.size() : 1, ' ').c_str(),
                einzeilig(wert).c_str());
    std::fflush(stdout);
}

std::string oderNichts(const std::optional<std::string>& text) {
    return text.value_or("—");
}

} // namespace

int selbsttest(const Befehlszeile& zeile, const std::string& kennung) {
    const Umfeld u(zeile, kennung);
    const auto& einstellungen = *u.ablage.speicher;
    sage("Kennung", u.buendel.kennung);
    sage("Ausgabe", Variante(u.buendel, einstellungen).anzeigename());
    sage("Version", oderNichts(u.buendel.version) + " (" + oderNichts(u.buendel.bauversion) + ")");
    sage("Ressourcen", oderNichts(u.buendel.ressourcen));
    sage("Heim", u.orte.heim);
    sage("Wurzel", u.orte.wurzel.empty() ? "/" : u.orte.wurzel);
    sage("Einstellungen", u.ablage.ort + " · kabel.id " + oderNichts(einstellungen.text("kabel.id")));
    sage("Rechnername", rechnername());
    const auto laeufer = Laufsperre::inhaber(u.orte.heim);
    sage("Läuft", laeufer ? "Prozess " + std::to_string(laeufer->laeufer) + " · Wächter " +
                                std::to_string(laeufer->waechter)
                          : "—");
    const auto adb = u.adb.finden();
    sage("adb", oderNichts(adb));
    if (adb)
        for (const auto& geraet : u.adb.geraete(*adb))
            sage("", geraet.serial + " · " + geraet.zustand + " · " + geraet.modell);
    sage("Netzwerkdienst", oderNichts(u.proxy.dienst()));
    sage("Eigener Proxy", oderNichts(u.proxy.gemerkterDienst()));
    for (const char* werkzeug :
         {"/sbin/route", "/usr/sbin/networksetup", "/usr/sbin/scutil", "/usr/sbin/lsof", "/usr/sbin/netstat",
          "/usr/bin/pgrep", "/usr/bin/mdfind", "/usr/bin/open", "/usr/bin/osascript"})
        sage(werkzeug, istAusfuehrbar(u.orte.imSystem(werkzeug)) ? "da" : "fehlt");
    for (const auto& fund : Browser(lauf, u.orte, einstellungen).finden())
        sage("Browser",
             fund.name + (fund.fahrtwind ? " mit fahrtwind" : " ohne fahrtwind") + " · " + fund.appPfad);
    return 0;
}

} // namespace mobilsteg
