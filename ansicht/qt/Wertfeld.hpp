#pragma once

#include <QTextEdit>

#include <string>

namespace mobilsteg {

/// A value that can be selected and copied, in as many lines as it needs. It takes the keyboard only when it
/// is clicked, so that Tab leads from control to control.
class Wertfeld final : public QTextEdit {
public:
    explicit Wertfeld(QWidget* eltern);

    /// Keeps the selection when the text is the one shown.
    void zeige(const std::string& wert);

    /// The text shown.
    [[nodiscard]] QString wert() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int breite) const override;

protected:
    void contextMenuEvent(QContextMenuEvent* ereignis) override;
    void wheelEvent(QWheelEvent* ereignis) override;
    void keyPressEvent(QKeyEvent* ereignis) override;
};

} // namespace mobilsteg
