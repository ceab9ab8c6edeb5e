#include "plattform/Adapter.hpp"
#include "plattform/mac/Wandlung.hpp"

namespace mobilsteg {

namespace {

std::optional<std::string> wennText(id wert) {
    return [wert isKindOfClass:NSString.class] ? std::optional(stdText(wert)) : std::nullopt;
}

class NativesSkript final : public Adminskript {
public:
    std::optional<Skriptfehler> fuehreAus(const std::string& quelle) override {
        @autoreleasepool {
            NSAppleScript* skript = [[NSAppleScript alloc] initWithSource:nsText(quelle)];
            if (skript == nil)
                return Skriptfehler{true, 0, std::nullopt};
            NSDictionary* fehler = nil;
            [skript executeAndReturnError:&fehler];
            if (fehler == nil)
                return std::nullopt;
            // The number comes as a number or as its text, which both know their intValue; missing it is 0.
            const int nummer = [fehler[NSAppleScriptErrorNumber] intValue];
            return Skriptfehler{false, nummer, wennText(fehler[NSAppleScriptErrorMessage])};
        }
    }
};

} // namespace

std::unique_ptr<Adminskript> nativesSkript() {
    return std::make_unique<NativesSkript>();
}

std::optional<Buendel> nativesBuendel() {
    @autoreleasepool {
        NSBundle* buendel = NSBundle.mainBundle;
        if (buendel.bundleIdentifier == nil)
            return std::nullopt;
        return Buendel{stdText(buendel.bundleIdentifier), wennText(buendel.resourcePath),
                       wennText([buendel objectForInfoDictionaryKey:@"CFBundleShortVersionString"]),
                       wennText([buendel objectForInfoDictionaryKey:@"CFBundleVersion"])};
    }
}

std::optional<std::string> nativerRechnername() {
    @autoreleasepool {
        return wennText(NSHost.currentHost.localizedName);
    }
}

} // namespace mobilsteg
