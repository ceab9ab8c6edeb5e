#include "app/Delegate.hpp"

#include "app/Erststart.hpp"
#include "kabel/Kabel.hpp"

#include <csignal>

namespace mobilsteg {

Delegate::Delegate(Einstellungen& einstellungen, Dialog& dialog, std::function<void(int)> beende)
    : einstellungen_(einstellungen), dialog_(dialog), beende_(std::move(beende)) {}

void Delegate::applicationDidFinishLaunching() {
    erststart(Kabel::gemeinsam(), einstellungen_, dialog_);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        signalQuellen_.push_back(beiSignal(signal, signalQ_, [this](int s) { beendeNachSignal(s); }));
    Kabel::gemeinsam().start();
}

void Delegate::applicationWillTerminate() {
    Kabel& kabel = Kabel::gemeinsam();
    kabel.q().sync([&] { kabel.aufraeumen(); });
}

void Delegate::beendeNachSignal(int signal) {
    Kabel::gemeinsam().protokoll("Signal " + std::to_string(signal) + " -- räume auf und beende");
    applicationWillTerminate();
    beende_(0);
}

} // namespace mobilsteg
