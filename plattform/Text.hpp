#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// The pieces of `text` between the bytes `trenner`, empty pieces dropped.
[[nodiscard]] std::vector<std::string_view> teile(std::string_view text, char trenner);

/// `text` without white space and line ends (Unicode's, too) at both ends.
[[nodiscard]] std::string_view beschnitten(std::string_view text);

/// `text` without any white space and line ends (Unicode's, too).
[[nodiscard]] std::string ohneWeissraum(std::string_view text);

/// `text` without blanks and tabs at both ends; line ends stay.
[[nodiscard]] std::string_view ohneRandblanks(std::string_view text);

/// `bytes` as UTF-8, each invalid sequence replaced by one U+FFFD.
[[nodiscard]] std::string alsUtf8(std::string_view bytes);

/// The first `anzahl` characters (code points) of the UTF-8 text; all of it when it is shorter.
[[nodiscard]] std::string_view ersteZeichen(std::string_view text, std::size_t anzahl);

/// What came from outside as one line of at most `hoechstens` characters: UTF-8, and a blank for each line
/// break, control and direction character. A terminal, a log and a panel show it as it is.
[[nodiscard]] std::string einzeilig(std::string_view text, std::size_t hoechstens = 500);

/// How many characters (code points) the UTF-8 text has.
[[nodiscard]] std::size_t zeichenzahl(std::string_view text);

/// ASCII letters folded; everything else stays as it is.
[[nodiscard]] std::string inGrossbuchstaben(std::string_view text);
[[nodiscard]] std::string inKleinbuchstaben(std::string_view text);

/// How deep the arrays and objects of a JSON text lie in each other; of any other text, some number.
[[nodiscard]] std::size_t klammertiefe(std::string_view json);

/// The pieces joined with `dazwischen`.
[[nodiscard]] std::string verbunden(const std::vector<std::string>& stuecke, std::string_view dazwischen);

/// A fresh random UUID in its canonical text form, lower case.
[[nodiscard]] std::string neueKennung();

} // namespace mobilsteg
