#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct editline; // libedit's
struct history;

namespace mobilsteg {

/// How texts are written: for a pipe neither coloured nor broken into lines.
struct Schriftbild {
    bool farbig = false;
    std::size_t breite = 0; ///< columns; 0: lines are as long as their texts
};

/// How many columns (40 to 200) and lines a terminal has; both 0: the file is none.
struct Terminalmasse {
    std::size_t breite = 0;
    std::size_t hoehe = 0;
};
[[nodiscard]] Terminalmasse terminalmasse(std::FILE* datei);

/// A terminal's alternate screen: a text, and below it a line that is edited, with history and completion.
/// One thread, in `zeile`, reads and draws; all else may be called on any other. A process has one at most.
/// Signals that end or stop the process find the terminal put back.
class Schirm {
public:
    using Text = std::function<std::string(Schriftbild)>;

    /// Null: no terminal, or one that can only print (TERM is "dumb"). Heeds NO_COLOR; what MOBILSTEG_HINWEIS
    /// says stands below every text, as far as a quarter of the screen does.
    [[nodiscard]] static std::shared_ptr<Schirm> oeffne(std::FILE* eingabe, std::FILE* ausgabe);
    ~Schirm();
    Schirm(const Schirm&) = delete;
    Schirm& operator=(const Schirm&) = delete;

    /// Shows `text` from now on, asked again for each width; Tab completes to one of `vorschlaege`.
    void zeige(Text text, std::vector<std::string> vorschlaege);

    /// Says something above the line, until the next one has been typed.
    void sage(const std::string& text);

    /// Blocks until a line has been typed, and draws meanwhile. Absent: Ctrl-D, or `ende` was called.
    [[nodiscard]] std::optional<std::string> zeile();

    /// Puts the terminal back for good and prints `schlusswort` on its ordinary screen. Blocks for half a
    /// second at most; a second call only waits for the first.
    void ende(const std::string& schlusswort);

private:
    Schirm(std::FILE* eingabe, std::FILE* ausgabe, int weckrufe);
    void betritt();
    void nimmWeckrufe();
    int naechstesZeichen(wchar_t& zeichen);
    unsigned char ergaenze();
    unsigned char blaettere(bool abwaerts);
    void zeichne();

    std::FILE* ausgabe_;
    int tastatur_;
    int weckrufe_;      ///< read by the drawing thread
    std::FILE* nichts_; ///< where libedit draws: its line is drawn here, with all the rest
    editline* zeile_;
    history* frueheres_;
    std::atomic<bool> zuEnde_ = false;
    std::mutex endeschloss_; // outside of the next

    std::mutex schloss_; // guards all below
    std::condition_variable gelesen_;
    bool liest_ = false;
    Text text_;
    std::vector<std::string> vorschlaege_;
    std::string gesagt_;
    std::size_t ab_ = 0; ///< how far the text is scrolled
};

} // namespace mobilsteg
