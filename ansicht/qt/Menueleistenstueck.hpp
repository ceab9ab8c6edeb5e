#pragma once

#include "ansicht/qt/Panelfenster.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QMenu>
#include <QPoint>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>
#include <memory>
#include <string>

namespace mobilsteg {

/// The program's item in the menu bar, the panel that a click on it opens and closes, and the menu of a click
/// with the other button. Where there is no
/// menu bar, the panel is a window instead, open from the start, and closing it means to quit; if a menu bar
/// turns up later, the item goes there. Main thread only; nothing here blocks.
class Menueleistenstueck final : public QObject {
public:
    /// `melde` gets what the user does in the panel.
    explicit Menueleistenstueck(Melder melde);
    ~Menueleistenstueck() override;

    /// Shows the tree in the panel and in the menu bar the symbol with the short text (may be empty). Draws
    /// only what differs from what is shown.
    void zeichne(const Baum& baum, const std::string& symbol, const std::string& kurz);

    /// Once, after the first `zeichne`: goes to the menu bar, or opens the panel as a window.
    void erscheine();

protected:
    bool eventFilter(QObject* objekt, QEvent* ereignis) override;

private:
    void zeigeIkone();
    void sucheLeiste();
    [[nodiscard]] bool stueckDa() const;
    [[nodiscard]] QRect ort() const;
    void geklickt();
    void baueMenue();
    void oeffne();
    void geschlossen();
    void stelleAuf();

    Melder melde_;
    Panelfenster panel_;
    std::unique_ptr<Leistenstueck> nativ_; ///< where the system brings one
    QSystemTrayIcon stueck_{this};         ///< else this one
    QMenu menue_;                          ///< a click with the other button opens it
    QTimer suche_;
    std::string symbol_;
    std::string kurz_;
    QPoint klickstelle_;
    std::chrono::steady_clock::time_point zuletztGeschlossen_;
};

} // namespace mobilsteg
