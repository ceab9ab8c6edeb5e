#pragma once

#include "plattform/Dateien.hpp"

#include <optional>
#include <string>

namespace mobilsteg {

/// Lets one program at a time work on a home, whichever edition it is. Held for as long as the object lives,
/// and never longer than the process. In a home where it cannot be opened everybody gets it.
class Laufsperre {
public:
    /// Who holds it. `laeufer` 0: nobody who could be named.
    struct Inhaber {
        int laeufer = 0;  ///< the program's process
        int waechter = 0; ///< its watchman's
    };

    explicit Laufsperre(const std::string& heim);

    /// The file that is locked.
    [[nodiscard]] static std::string pfad(const std::string& heim);

    /// Takes it for this program. While a watchman holds it, cleaning up, that is waited for, a minute at
    /// most. Absent: it is ours; else whose it is.
    [[nodiscard]] std::optional<Inhaber> nimm();

    /// Takes it for the watchman of the process `toter`, once that has let go. False: a new copy has it.
    [[nodiscard]] bool nimmNach(int toter);

    /// Only with the lock: names this program's watchman to those who ask.
    void nenneWaechter(int nummer);

    /// Whose it is now; absent: nobody's. Takes and creates nothing, and does not block.
    [[nodiscard]] static std::optional<Inhaber> inhaber(const std::string& heim);

private:
    Laufsperre(const std::string& heim, bool anlegen);
    [[nodiscard]] bool versuche(int art) const;
    [[nodiscard]] Inhaber lies() const;
    void schreibe(Inhaber inhaber);

    Deskriptor datei_;
};

} // namespace mobilsteg
