#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace mobilsteg::probehandy {

/// What the phone keeps on disk: every registration, and the reports sent to it. Without a folder it keeps
/// nothing.
class Gedaechtnis {
public:
    /// Creates the folder if need be; what an earlier run has left there is kept and continued.
    std::error_code oeffne(std::filesystem::path ordner);

    /// Appends one line to anmeldungen.jsonl. False if it could not be written.
    bool merkeAnmeldung(std::string_view zeile);

    /// Stores a report as berichte/NNN-name, numbered in the order of arrival; a reader never sees half of
    /// one. False if it could not be written.
    bool legeBerichtAb(std::string_view name, std::string_view inhalt);

private:
    std::optional<std::filesystem::path> ordner_;
    unsigned naechsteNummer_ = 1;
};

} // namespace mobilsteg::probehandy
