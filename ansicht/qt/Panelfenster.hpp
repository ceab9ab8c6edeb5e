#pragma once

#include "ansicht/qt/Baustein.hpp"

class QScrollArea;
class QVBoxLayout;

namespace mobilsteg {

/// The panel as a window: it draws trees and reports what the user does in them. Main thread only; nothing
/// here blocks.
class Panelfenster final : public QWidget {
public:
    enum class Art {
        aufklappend, ///< without a frame; closes on Escape and when the user turns to something else
        fenster      ///< with a frame and a title, the heading's; stays until it is told to close
    };

    explicit Panelfenster(Melder melde);
    ~Panelfenster() override;

    /// Shows the tree; the one shown already changes nothing. What the user has under way (focus, selection,
    /// a pressed button) survives in every element whose key stays.
    void zeichne(const Baum& baum);

    /// Hides the window if that has to change.
    void setzeArt(Art art);
    [[nodiscard]] Art art() const { return art_; }

    /// The panel scrolls what is taller, in points.
    void setzeHoechsthoehe(int hoehe);

    /// What happens when the user closes it. As a window it does not close by itself.
    void beimSchliessen(std::function<void()> aufgabe) { beimSchliessen_ = std::move(aufgabe); }

    /// What happens when its height has changed.
    void beiNeuerHoehe(std::function<void()> aufgabe) { beiNeuerHoehe_ = std::move(aufgabe); }

protected:
    bool event(QEvent* ereignis) override;
    void closeEvent(QCloseEvent* ereignis) override;
    void keyPressEvent(QKeyEvent* ereignis) override;
    void paintEvent(QPaintEvent* ereignis) override;

private:
    void ordne();
    void zeichneNeu();
    void passeHoeheAn();
    void verlassen();

    Melder melde_;
    Baum baum_;
    std::vector<Baustein> bausteine_;
    QWidget* inhalt_;
    QVBoxLayout* stapel_;
    QScrollArea* rollbereich_;
    Art art_ = Art::aufklappend;
    int hoechsthoehe_;
    std::function<void()> beimSchliessen_;
    std::function<void()> beiNeuerHoehe_;
};

} // namespace mobilsteg
