#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "volltunnel/Helfer.hpp"

extern char** environ; // NOLINT(readability-redundant-declaration): macOS declares it nowhere

using namespace mobilsteg::volltunnel;

int main(int anzahl, char** worte) {
    std::string fehler;
    const auto auftrag = liesBefehlszeile({worte + 1, worte + anzahl}, fehler);
    if (!auftrag) {
        std::fprintf(stderr, "mobilsteg-volltunnel: %s\n", fehler.c_str());
        return 2;
    }
    if (::geteuid() != 0) {
        std::fprintf(stderr, "mobilsteg-volltunnel: braucht die Rechte eines Administrators\n");
        return 1;
    }
    // What the user's environment says must not decide what root's tools do, nor in which language they
    // speak.
    static char* leer[] = {nullptr};
    environ = leer;
    ::setenv("PATH", "/usr/bin:/bin:/usr/sbin:/sbin", 1);
    ::setenv("LC_ALL", "C", 1);
    return fuehreHelfer(*auftrag);
}
