#pragma once

#include "plattform/Anschluesse.hpp"

#include <QMessageBox>

#include <vector>

namespace mobilsteg {

/// A question as a window. Main thread only.
class Fragefenster final : public QMessageBox {
public:
    explicit Fragefenster(const Frage& frage);

    /// The index of the button that was clicked; -1: it was closed by other means.
    [[nodiscard]] int antwort() const;

protected:
    void keyPressEvent(QKeyEvent* ereignis) override;
    void closeEvent(QCloseEvent* ereignis) override;

private:
    std::vector<QAbstractButton*> knoepfe_;
};

/// Asks in such a window. While it is open, the main queue's jobs wait.
class QtDialog final : public Dialog {
public:
    [[nodiscard]] int frage(const Frage& frage) override;
};

} // namespace mobilsteg
