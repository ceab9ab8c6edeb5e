#pragma once

#include_next <AppKit/AppKit.h>

// See CoreFoundation.h beside this folder for what this is.

enum { NSEventMaskLeftMouseDown = 1 << 1, NSEventMaskRightMouseDown = 1 << 3 }; // 10.12
enum { NSEventTypeRightMouseDown = 3 };                  // 10.12
enum { NSEventModifierFlagControl = 1 << 18 };           // 10.12
constexpr auto NSBitmapImageFileTypePNG = NSPNGFileType; // 10.12

@interface NSApplication (Ergaenzung)
- (BOOL)setActivationPolicy:(NSInteger)policy; // 10.6
@end

@interface NSStatusItem (Ergaenzung)
@property(readonly) NSStatusBarButton* button; // 10.10
@end

@interface NSImage (Ergaenzung)
@property(copy) NSString* accessibilityDescription;                                                 // 10.6
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)text; // 11.0
- (void)setTemplate:(BOOL)template_;                                                                // 10.5
@end
