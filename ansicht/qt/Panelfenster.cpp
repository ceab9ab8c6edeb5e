#include "ansicht/qt/Panelfenster.hpp"

#include "ansicht/qt/Gestalt.hpp"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

constexpr float rahmenstaerke = 0.2F;

Qt::WindowFlags fensterart(Panelfenster::Art art) {
    if (art == Panelfenster::Art::fenster)
        return Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
               Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
}

} // namespace

Panelfenster::Panelfenster(Melder melde)
    : QWidget(nullptr, fensterart(Art::aufklappend)), melde_(std::move(melde)), inhalt_(new QWidget),
      stapel_(new QVBoxLayout(inhalt_)), rollbereich_(new QScrollArea(this)), hoechsthoehe_(QWIDGETSIZE_MAX) {
    setObjectName("panel");
    setFixedWidth(Masse::breite);
    stapel_->setSpacing(Masse::abstand);

    rollbereich_->setFrameShape(QFrame::NoFrame);
    rollbereich_->setFocusPolicy(Qt::NoFocus);
    rollbereich_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rollbereich_->setWidgetResizable(true);
    rollbereich_->setWidget(inhalt_);
    // The background is the window's, with its edge.
    rollbereich_->viewport()->setAutoFillBackground(false);
    inhalt_->setAutoFillBackground(false);

    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState zustand) {
        if (zustand != Qt::ApplicationActive)
            verlassen();
    });
}

Panelfenster::~Panelfenster() = default;

void Panelfenster::zeichne(const Baum& baum) {
    if (baum == baum_)
        return;
    baum_ = baum;
    erneuere(bausteine_, baum_, melde_, inhalt_);
    ordne();
    for (const auto& element : baum_)
        if (const auto* kopf = std::get_if<Kopf>(&element.inhalt))
            setWindowTitle(qtText(kopf->titel));
    passeHoeheAn();
}

void Panelfenster::ordne() {
    while (QLayoutItem* stueck = stapel_->takeAt(0))
        delete stueck;
    QWidget* bisher = nullptr;
    for (const auto& baustein : bausteine_) {
        stapel_->addWidget(baustein.flaeche);
        baustein.flaeche->show();
        baustein.flaeche->raise(); // the children's order is a screen reader's
        for (auto* knopf : baustein.flaeche->findChildren<QAbstractButton*>()) {
            if (bisher != nullptr)
                QWidget::setTabOrder(bisher, knopf);
            bisher = knopf;
        }
    }
}

/// For another font or style: everything is made and measured anew.
void Panelfenster::zeichneNeu() {
    const Baum baum = std::exchange(baum_, {});
    erneuere(bausteine_, {}, melde_, inhalt_);
    zeichne(baum);
}

void Panelfenster::passeHoeheAn() {
    stapel_->setContentsMargins(Masse::rand, Masse::rand, Masse::rand, Masse::rand);
    // Without any text to break there is no height that depends on the width.
    const int inhaltshoehe = stapel_->hasHeightForWidth() ? stapel_->totalHeightForWidth(Masse::breite)
                                                          : stapel_->totalSizeHint().height();
    const bool rollt = inhaltshoehe > hoechsthoehe_;
    const bool balkenDaneben = style()->styleHint(QStyle::SH_ScrollBar_Transient) == 0;
    if (rollt && balkenDaneben) // it takes the place of the far edge
        stapel_->setContentsMargins(Masse::rand, Masse::rand, randAmRollbalken, Masse::rand);
    // Left to itself, a bar that is there makes the content narrower and higher, and so keeps itself needed.
    rollbereich_->setVerticalScrollBarPolicy(rollt ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    const int hoehe = std::min(inhaltshoehe, hoechsthoehe_);
    if (hoehe == minimumHeight())
        return;
    setFixedHeight(hoehe);
    rollbereich_->setGeometry(rect());
    if (beiNeuerHoehe_)
        beiNeuerHoehe_();
}

void Panelfenster::setzeArt(Art art) {
    if (art == art_)
        return;
    art_ = art;
    setWindowFlags(fensterart(art));
}

void Panelfenster::setzeHoechsthoehe(int hoehe) {
    hoechsthoehe_ = hoehe;
    passeHoeheAn();
}

bool Panelfenster::event(QEvent* ereignis) {
    const bool ergebnis = QWidget::event(ereignis);
    switch (ereignis->type()) {
    case QEvent::WindowDeactivate:
        if (QApplication::activePopupWidget() == nullptr) // a value's menu is still the panel
            verlassen();
        break;
    case QEvent::FontChange:
    case QEvent::StyleChange:
        QTimer::singleShot(0, this, &Panelfenster::zeichneNeu); // once the change is complete
        break;
    default:
        break;
    }
    return ergebnis;
}

void Panelfenster::verlassen() {
    if (art_ == Art::aufklappend && isVisible())
        close();
}

void Panelfenster::closeEvent(QCloseEvent* ereignis) {
    if (art_ == Art::fenster)
        ereignis->ignore();
    if (beimSchliessen_)
        beimSchliessen_();
}

void Panelfenster::keyPressEvent(QKeyEvent* ereignis) {
    if (ereignis->key() == Qt::Key_Escape && art_ == Art::aufklappend)
        close();
    else
        QWidget::keyPressEvent(ereignis);
}

void Panelfenster::paintEvent(QPaintEvent*) {
    if (art_ == Art::fenster)
        return;
    QColor farbe = palette().color(QPalette::WindowText);
    farbe.setAlphaF(rahmenstaerke);
    QPainter maler(this);
    maler.setPen(farbe);
    maler.setRenderHint(QPainter::Antialiasing);
    maler.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace mobilsteg
