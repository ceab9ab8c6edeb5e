#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>

class QPainter;

namespace mobilsteg {

/// Text in lines of at most `breite` points: broken between words, and within a word only where that alone is
/// longer. The text's own line ends stay.
class Umbruch {
public:
    Umbruch(const QString& text, const QFont& schrift, double breite,
            Qt::Alignment ausrichtung = Qt::AlignLeft);

    /// Of all lines, in points.
    [[nodiscard]] int hoehe() const { return hoehe_; }

    /// Of the longest line, in points.
    [[nodiscard]] int breite() const;

    /// With the painter's pen, from the origin on.
    void male(QPainter& maler) const;

    /// The text with line ends where it is broken, and that text again without them.
    [[nodiscard]] QString text() const;
    [[nodiscard]] static QString ohne(QString umgebrochen);

private:
    QTextLayout gelegt_;
    int hoehe_ = 0;
};

} // namespace mobilsteg
