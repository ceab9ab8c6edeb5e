#pragma once

#include "ansicht/Baum.hpp"

#include <QLabel>

#include <functional>

namespace mobilsteg {

/// Text in as many lines as it needs. A plain label breaks lines between words only; this one also breaks a
/// word, a path for example, that is wider than `breite` points. Its colour follows the palette.
class Text final : public QLabel {
public:
    Text(const QFont& schrift, Farbe farbe, int breite, QWidget* eltern);

    /// A selection stays when the text is the one shown.
    void zeige(const std::string& inhalt);

    /// A value: it can be selected and copied. It takes the keyboard only when it is clicked, so that Tab
    /// leads from control to control. `name` says what it is the value of.
    void machWaehlbar(const std::string& name);

    /// What a click on the text does; empty: nothing.
    void beimKlick(std::function<void()> aufgabe);

    /// The text as it was given.
    [[nodiscard]] const QString& inhalt() const { return inhalt_; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* ereignis) override;
    void contextMenuEvent(QContextMenuEvent* ereignis) override;
    void keyPressEvent(QKeyEvent* ereignis) override;
    void mousePressEvent(QMouseEvent* ereignis) override;
    void mouseReleaseEvent(QMouseEvent* ereignis) override;

private:
    [[nodiscard]] bool waehlbar() const { return textInteractionFlags().testFlag(Qt::TextSelectableByMouse); }
    void faerbe();
    void kopiere() const;

    Farbe farbe_;
    int breite_;
    QString inhalt_;
    std::function<void()> klick_;
};

} // namespace mobilsteg
