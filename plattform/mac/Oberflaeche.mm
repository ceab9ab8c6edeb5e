#include "plattform/Oberflaeche.hpp"

#include "plattform/mac/Wandlung.hpp"

#import <AppKit/AppKit.h>

#include <algorithm>

/// What the menu bar's button sends its presses to.
@interface BordlotseKlickziel : NSObject {
@public
    std::function<void()> beiKlick;
    std::function<void()> beiNebenklick;
}
- (void)geklickt:(id)sender;
@end

@implementation BordlotseKlickziel
- (void)geklickt:(id)sender {
    (void)sender;
    NSEvent* ereignis = NSApplication.sharedApplication.currentEvent;
    const bool neben = ereignis.type == NSEventTypeRightMouseDown ||
                       (ereignis.modifierFlags & NSEventModifierFlagControl) != 0;
    (neben ? beiNebenklick : beiKlick)();
}
@end

namespace mobilsteg {

namespace {

constexpr int symbolhoehe = 18; // points, like the menu bar's other symbols

class NativesLeistenstueck final : public Leistenstueck {
public:
    NativesLeistenstueck(std::function<void()> beiKlick, std::function<void()> beiNebenklick)
        : ziel_([[BordlotseKlickziel alloc] init]),
          stueck_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {
        ziel_->beiKlick = std::move(beiKlick);
        ziel_->beiNebenklick = std::move(beiNebenklick);
        stueck_.button.target = ziel_;
        stueck_.button.action = @selector(geklickt:);
        stueck_.button.imagePosition = NSImageLeft;
        [stueck_.button sendActionOn:NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown];
    }
    ~NativesLeistenstueck() override { [NSStatusBar.systemStatusBar removeStatusItem:stueck_]; }
    NativesLeistenstueck(const NativesLeistenstueck&) = delete;
    NativesLeistenstueck& operator=(const NativesLeistenstueck&) = delete;

    void zeige(const std::string& symbol, const std::string& titel, const std::string& hilfe,
               const std::function<std::string(int)>& ersatz) override {
        @autoreleasepool {
            NSImage* bild = [NSImage imageWithSystemSymbolName:nsText(symbol) accessibilityDescription:nil];
            if (bild == nil)
                bild = ausPng(ersatz(2 * symbolhoehe));
            [bild setTemplate:YES]; // its property's name is a keyword here
            bild.accessibilityDescription = nsText(hilfe);
            stueck_.button.image = bild;
            stueck_.button.title = nsText(titel);
            stueck_.button.toolTip = nsText(hilfe);
        }
    }

    Lage lage() const override {
        // The system counts from the main screen's bottom left.
        const NSRect ort = stueck_.button.window.frame;
        NSScreen* schirm = NSScreen.screens.firstObject;
        return {static_cast<int>(NSMinX(ort)), static_cast<int>(NSMaxY(schirm.frame) - NSMaxY(ort)),
                static_cast<int>(NSWidth(ort)), static_cast<int>(NSHeight(ort))};
    }

private:
    static NSImage* ausPng(const std::string& png) {
        NSImage* bild = [[NSImage alloc] initWithData:[NSData dataWithBytes:png.data() length:png.size()]];
        bild.size = NSMakeSize(symbolhoehe, symbolhoehe);
        return bild;
    }

    BordlotseKlickziel* ziel_;
    NSStatusItem* stueck_;
};

/// As large as it fits into a square of `kante` pixels, in its own proportions. A PNG file's bytes; absent:
/// it cannot be written as one.
std::optional<std::string> gezeichnet(NSImage* bild, int kante) {
    // Drawn, since the image itself counts in points, of which a dense screen has fewer than pixels.
    NSBitmapImageRep* raster = [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                                       pixelsWide:kante
                                                                       pixelsHigh:kante
                                                                    bitsPerSample:8
                                                                  samplesPerPixel:4
                                                                         hasAlpha:YES
                                                                         isPlanar:NO
                                                                   colorSpaceName:NSCalibratedRGBColorSpace
                                                                      bytesPerRow:0
                                                                     bitsPerPixel:0];
    const NSSize mass = bild.size;
    const CGFloat faktor = kante / std::max({mass.width, mass.height, CGFloat{1}});
    const CGFloat breite = mass.width * faktor;
    const CGFloat hoehe = mass.height * faktor;
    [NSGraphicsContext saveGraphicsState];
    NSGraphicsContext.currentContext = [NSGraphicsContext graphicsContextWithBitmapImageRep:raster];
    [bild drawInRect:NSMakeRect((kante - breite) / 2, (kante - hoehe) / 2, breite, hoehe)];
    [NSGraphicsContext restoreGraphicsState];
    NSData* png = [raster representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
    return png == nil ? std::nullopt : std::optional(stdBytes(png));
}

} // namespace

bool anzeigeVorhanden() {
    return true;
}

void alsMenueleistenprogramm() {
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
    // Kept for as long as the program runs.
    static const id wach =
        [NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                     reason:@"Bordlotse"];
    (void)wach;
}

void nachVorn() {
    [NSApplication.sharedApplication activateIgnoringOtherApps:YES];
}

std::optional<std::string> programmbild(const std::string& pfad, int kante) {
    @autoreleasepool {
        return gezeichnet([NSWorkspace.sharedWorkspace iconForFile:nsText(pfad)], kante);
    }
}

std::optional<std::string> systemsymbol(const std::string& name, int kante) {
    @autoreleasepool {
        NSImage* bild = [NSImage imageWithSystemSymbolName:nsText(name) accessibilityDescription:nil];
        return bild == nil ? std::nullopt : gezeichnet(bild, kante);
    }
}

Abmeldung beiAbmeldung(std::function<void()> aufgabe) {
    NSNotificationCenter* amt = NSWorkspace.sharedWorkspace.notificationCenter;
    const id beobachter = [amt addObserverForName:NSWorkspaceWillPowerOffNotification
                                           object:nil
                                            queue:nil
                                       usingBlock:^(NSNotification*) {
                                         aufgabe();
                                       }];
    return {nullptr, [amt, beobachter](void*) { [amt removeObserver:beobachter]; }};
}

std::unique_ptr<Leistenstueck> nativesLeistenstueck(std::function<void()> beiKlick,
                                                    std::function<void()> beiNebenklick) {
    return std::make_unique<NativesLeistenstueck>(std::move(beiKlick), std::move(beiNebenklick));
}

} // namespace mobilsteg
