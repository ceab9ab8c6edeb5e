#pragma once

#include "ansicht/Baum.hpp"

#include <QWidget>

namespace mobilsteg {

/// The filled circle that shows the state.
class Punkt final : public QWidget {
public:
    explicit Punkt(QWidget* eltern);
    void zeige(Farbe farbe);

protected:
    void paintEvent(QPaintEvent* ereignis) override;

private:
    Farbe farbe_ = Farbe::normal;
};

/// One of the symbols, as large as a line of a row's text.
class Symbolfeld final : public QWidget {
public:
    explicit Symbolfeld(QWidget* eltern);
    void zeige(const std::string& symbol, Farbe farbe);

protected:
    void paintEvent(QPaintEvent* ereignis) override;

private:
    std::string symbol_;
    Farbe farbe_ = Farbe::normal;
};

/// A thin line over the whole width.
class Strich final : public QWidget {
public:
    explicit Strich(QWidget* eltern);

protected:
    void paintEvent(QPaintEvent* ereignis) override;
};

} // namespace mobilsteg
