#include "plattform/Kennung.hpp"

#include <random>
#include <string_view>

namespace mobilsteg {

std::string neueKennung() {
    std::random_device quelle;
    std::string kennung = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    constexpr std::string_view hex = "0123456789abcdef";
    for (char& stelle : kennung) {
        if (stelle == 'x')
            stelle = hex[quelle() % 16];
        else if (stelle == 'y')
            stelle = hex[8 + quelle() % 4];
    }
    return kennung;
}

} // namespace mobilsteg
