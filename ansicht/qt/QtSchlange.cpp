#include "ansicht/qt/QtSchlange.hpp"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>

namespace mobilsteg {

namespace {

QEvent::Type auftragsart() {
    static const auto art = static_cast<QEvent::Type>(QEvent::registerEventType());
    return art;
}

class Auftrag final : public QEvent {
public:
    explicit Auftrag(Aufgabe a) : QEvent(auftragsart()), aufgabe(std::move(a)) {}

    Aufgabe aufgabe;
};

/// Lives on the loop's thread and runs there what arrives.
class Empfaenger final : public QObject {
public:
    void fuehreAus(Aufgabe aufgabe) {
        wartende_.push_back(std::move(aufgabe));
        if (beschaeftigt_) // a job's own loop has brought us here
            return;
        beschaeftigt_ = true;
        while (!wartende_.empty()) {
            const Aufgabe naechste = std::move(wartende_.front());
            wartende_.pop_front();
            naechste();
        }
        beschaeftigt_ = false;
    }

    void verwirfAlle() { wartende_.clear(); }

    bool event(QEvent* ereignis) override {
        if (ereignis->type() != auftragsart())
            return QObject::event(ereignis);
        fuehreAus(std::move(static_cast<Auftrag*>(ereignis)->aufgabe));
        return true;
    }

private:
    std::deque<Aufgabe> wartende_;
    bool beschaeftigt_ = false;
};

Dauer jetzt() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// A repetition. `uhr` belongs to the receiver and is touched on the loop's thread only.
struct Takt {
    Dauer faellig;
    Dauer periode;
    Aufgabe aufgabe;
    std::atomic<bool> beendet{false};
    QTimer* uhr = nullptr;

    void stelle() const {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(faellig - jetzt());
        uhr->start(std::max(rest, std::chrono::milliseconds::zero()));
    }

    void feuere() {
        if (beendet)
            return;
        faellig = naechsterTakt(faellig, periode, jetzt());
        aufgabe();
        if (!beendet)
            stelle();
    }
};

} // namespace

// Shared with the timers, which may outlive the queue.
struct QtSchlange::Innen {
    std::mutex schloss;
    Empfaenger* empfaenger = nullptr; // none: the queue takes no more jobs
    std::unique_ptr<Empfaenger> besitz;

    void async(Aufgabe aufgabe) {
        const std::lock_guard wache(schloss);
        if (empfaenger != nullptr)
            QCoreApplication::postEvent(empfaenger, new Auftrag(std::move(aufgabe)));
    }
};

QtSchlange::QtSchlange(std::string bezeichnung)
    : Schlange(std::move(bezeichnung)), innen_(std::make_shared<Innen>()) {
    innen_->besitz = std::make_unique<Empfaenger>();
    innen_->empfaenger = innen_->besitz.get();
}

QtSchlange::~QtSchlange() {
    halt();
    // Here and not with the last Zeitgeber, which may go on another thread.
    innen_->besitz.reset();
}

void QtSchlange::halt() {
    {
        const std::lock_guard wache(innen_->schloss);
        innen_->empfaenger = nullptr;
    }
    innen_->besitz->verwirfAlle();
    QCoreApplication::removePostedEvents(innen_->besitz.get(), auftragsart());
    qDeleteAll(innen_->besitz->findChildren<QTimer*>());
}

void QtSchlange::async(Aufgabe aufgabe) {
    innen_->async(std::move(aufgabe));
}

Zeitgeber QtSchlange::wiederhole(Dauer erste, Dauer periode, Aufgabe aufgabe) {
    auto takt = std::make_shared<Takt>();
    takt->faellig = jetzt() + erste;
    takt->periode = periode;
    takt->aufgabe = std::move(aufgabe);
    async([takt, empfaenger = innen_->besitz.get()] {
        if (takt->beendet)
            return;
        takt->uhr = new QTimer(empfaenger);
        takt->uhr->setSingleShot(true);
        takt->uhr->setTimerType(Qt::PreciseTimer);
        QObject::connect(takt->uhr, &QTimer::timeout,
                         [takt, empfaenger] { empfaenger->fuehreAus([takt] { takt->feuere(); }); });
        takt->stelle();
    });
    return Zeitgeber(takt.get(), [takt, innen = innen_](void*) mutable {
        takt->beendet = true;
        innen->async([takt = std::move(takt)] {
            if (takt->uhr != nullptr)
                takt->uhr->deleteLater();
            takt->uhr = nullptr;
        });
    });
}

bool QtSchlange::istHier() const {
    return QThread::currentThread() == innen_->besitz->thread();
}

} // namespace mobilsteg
