#pragma once

#include <string>
#include <vector>

#include "volltunnel/Paket.hpp"

namespace mobilsteg::volltunnel {

struct Auftrag {
    Stelle proxy;
    std::string stopp;  ///< absolute path of the stop file
    std::string dienst; ///< network service whose DNS may have to be set
    int wache = 0;      ///< the process with which everything ends
    bool nurVPN = false;
    bool vpnDurch = false;
    std::string wurzel; ///< empty: the real system; else a folder that stands for "/" of the outside tools
};

/// What `--hilfe` prints.
inline constexpr const char* hilfe =
    "Aufruf: mobilsteg-volltunnel -proxy ADRESSE:PORT -stopp DATEI -dienst NAME -wache PROZESS\n"
    "                             [-vpn-durch | -nur-vpn] [-wurzel DIR]\n\n"
    "Führt den Verkehr dieses Rechners durch den SOCKS-Proxy, bis DATEI entsteht oder PROZESS endet; dann\n"
    "sind Routen und DNS wie vorher. Der Bordlotse ruft ihn mit den Rechten eines Administrators.";

/// Reads the arguments. Absent: `fehler` says in German what is wrong with them.
[[nodiscard]] std::optional<Auftrag> liesBefehlszeile(const std::vector<std::string>& worte,
                                                      std::string& fehler);

/// Writes a line with the time to standard output, in one piece: the helper's log.
void protokolliere(const std::string& text);

} // namespace mobilsteg::volltunnel
