#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/mac/Wandlung.hpp"

#import <CoreFoundation/CoreFoundation.h>

#include <atomic>

namespace mobilsteg {

namespace {

/// The user's defaults. The system makes them safe for every thread; what is set is handed over at once, so
/// that it survives whatever ends this process.
class Vorgaben final : public Einstellungen {
public:
    explicit Vorgaben(const std::string& bereich)
        : bereich_(nsText(bereich)), sperrname_(stdText(NSTemporaryDirectory()) + bereich + ".sperre") {}

    std::optional<std::string> text(const std::string& schluessel) const override {
        @autoreleasepool {
            const id wert = lies(schluessel);
            return [wert isKindOfClass:NSString.class] ? std::optional(stdText(wert)) : std::nullopt;
        }
    }

    std::optional<bool> flagge(const std::string& schluessel) const override {
        @autoreleasepool {
            const id wert = lies(schluessel);
            return istFlagge(wert) ? std::optional<bool>([wert boolValue]) : std::nullopt;
        }
    }

    std::optional<Tabelle> tabelle(const std::string& schluessel) const override {
        @autoreleasepool {
            const id wert = lies(schluessel);
            if (![wert isKindOfClass:NSDictionary.class])
                return std::nullopt;
            Tabelle tabelle;
            for (NSString* name in wert) {
                const auto zahl = ganzzahl(wert[name]);
                if (!zahl)
                    return std::nullopt;
                tabelle[stdText(name)] = *zahl;
            }
            return tabelle;
        }
    }

    void setzeText(const std::string& schluessel, const std::string& wert) override {
        @autoreleasepool {
            setze(schluessel, nsText(wert));
        }
    }

    void setzeFlagge(const std::string& schluessel, bool wert) override {
        @autoreleasepool {
            setze(schluessel, [NSNumber numberWithBool:wert]);
        }
    }

    void setzeTabelle(const std::string& schluessel, const Tabelle& wert) override {
        @autoreleasepool {
            NSMutableDictionary* tabelle = [NSMutableDictionary dictionary];
            for (const auto& [name, zahl] : wert)
                tabelle[nsText(name)] = [NSNumber numberWithLongLong:zahl];
            setze(schluessel, tabelle);
        }
    }

    void entferne(const std::string& schluessel) override {
        @autoreleasepool {
            setze(schluessel, nil);
        }
    }

    std::string textOderNeu(const std::string& schluessel, const std::string& wert) override {
        @autoreleasepool {
            const Dateisperre sperre(sperrname_); // the defaults themselves know no "only if"
            CFPreferencesAppSynchronize((__bridge CFStringRef)bereich_);
            if (auto stehender = text(schluessel))
                return *stehender;
            setzeText(schluessel, wert);
            return wert;
        }
    }

    std::optional<std::string> speicherfehler() const override {
        return gespeichert_ ? std::nullopt
                            : std::optional<std::string>("Das System nimmt die Vorgaben nicht an");
    }

private:
    [[nodiscard]] id lies(const std::string& schluessel) const {
        return (__bridge_transfer id)CFPreferencesCopyAppValue((__bridge CFStringRef)nsText(schluessel),
                                                               (__bridge CFStringRef)bereich_);
    }

    void setze(const std::string& schluessel, id wert) {
        CFPreferencesSetAppValue((__bridge CFStringRef)nsText(schluessel), (__bridge CFPropertyListRef)wert,
                                 (__bridge CFStringRef)bereich_);
        gespeichert_ = CFPreferencesAppSynchronize((__bridge CFStringRef)bereich_);
    }

    /// 0 and 1 are no flags: the system tells the two kinds of number apart by these objects alone.
    [[nodiscard]] static bool istFlagge(id wert) {
        return wert == (__bridge id)kCFBooleanTrue || wert == (__bridge id)kCFBooleanFalse;
    }

    [[nodiscard]] static std::optional<std::int64_t> ganzzahl(id wert) {
        std::int64_t zahl = 0;
        if (![wert isKindOfClass:NSNumber.class] || istFlagge(wert) ||
            CFNumberIsFloatType((__bridge CFNumberRef)wert) ||
            !CFNumberGetValue((__bridge CFNumberRef)wert, kCFNumberSInt64Type, &zahl))
            return std::nullopt;
        return zahl;
    }

    NSString* bereich_;
    std::atomic<bool> gespeichert_ = true;
    std::string sperrname_;
};

} // namespace

std::unique_ptr<Einstellungen> nativeEinstellungen(const std::string& bereich) {
    return std::make_unique<Vorgaben>(bereich);
}

} // namespace mobilsteg
