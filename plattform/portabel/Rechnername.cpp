#include "plattform/Nativ.hpp"
#include "plattform/Orte.hpp"

#include <unistd.h>

#include <array>

namespace mobilsteg {

std::string rechnername() {
    if (auto eigener = nativerRechnername(); eigener && !eigener->empty())
        return *eigener;
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0')
        return "Mac";
    return name.data();
}

} // namespace mobilsteg
