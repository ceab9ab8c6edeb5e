#include "ansicht/terminal/Zeilen.hpp"

#include <utility>

namespace mobilsteg {

void Zeilen::nimm(std::string_view block, const std::function<void(std::string)>& zeile) {
    for (std::size_t ende = 0; (ende = block.find('\n')) != std::string_view::npos;
         block.remove_prefix(ende + 1)) {
        haengeAn(block.substr(0, ende));
        zeile(std::exchange(angefangen_, {}));
    }
    haengeAn(block);
}

std::optional<std::string> Zeilen::rest() {
    if (angefangen_.empty())
        return std::nullopt;
    return std::exchange(angefangen_, {});
}

void Zeilen::haengeAn(std::string_view text) {
    angefangen_.append(text.substr(0, laengste - angefangen_.size()));
}

} // namespace mobilsteg
