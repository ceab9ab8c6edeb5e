#pragma once

#include "ansicht/Tafel.hpp"
#include "ansicht/qt/Panelfenster.hpp"
#include "plattform/Oberflaeche.hpp"

#include <QPoint>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>
#include <memory>

namespace mobilsteg {

/// The program's item in the menu bar, and the panel that a click on it opens and closes. Where there is no
/// menu bar, the panel is a window instead, open from the start, and closing it means to quit; if a menu bar
/// turns up later, the item goes there. Main thread only; nothing here blocks.
class Menueleistenstueck final : public QObject {
public:
    /// `melde` gets what the user does in the panel.
    Menueleistenstueck(Zustandsspeicher& speicher, bool bundleB2B, Melder melde);
    ~Menueleistenstueck() override;

    [[nodiscard]] Panelfenster& panel() { return panel_; }

    /// Opens the panel by the item, or as a window. A panel that is open already comes to the front.
    void oeffne();
    void schliesse();

protected:
    bool eventFilter(QObject* objekt, QEvent* ereignis) override;

private:
    void zeige(const Zustand& zustand);
    void zeigeIkone();
    void sucheLeiste();
    [[nodiscard]] bool stueckDa() const;
    [[nodiscard]] QRect ort() const;
    void geklickt();
    void geschlossen();
    void stelleAuf();

    Melder melde_;
    Panelfenster panel_;
    std::unique_ptr<Leistenstueck> nativ_; ///< where the system brings one
    QSystemTrayIcon stueck_;               ///< else this one
    QTimer suche_;
    int versuche_ = 0;
    std::string symbol_;
    std::string kurz_;
    QPoint klickstelle_;
    std::chrono::steady_clock::time_point zuletztGeschlossen_;
    Tafel tafel_;
    Zustandsspeicher::Beobachtung beobachtung_;
};

} // namespace mobilsteg
