#pragma once

// What the native adapters use of macOS and the free Cocoa headers lack; behind each entry the version of
// macOS that has it. Declarations for the type check alone: nothing is ever linked against them.

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;                                                                    // 10.0
typedef const void* CFTypeRef;                                                                    // 10.0
typedef CFTypeRef CFPropertyListRef;                                                              // 10.0
typedef const struct __CFString* CFStringRef;                                                     // 10.0
typedef const struct __CFNumber* CFNumberRef;                                                     // 10.0
typedef const struct __CFBoolean* CFBooleanRef;                                                   // 10.0
typedef long CFNumberType;                                                                        // 10.0
enum { kCFNumberSInt64Type = 4 };                                                                 // 10.0
extern const CFBooleanRef kCFBooleanTrue;                                                         // 10.0
extern const CFBooleanRef kCFBooleanFalse;                                                        // 10.0
Boolean CFNumberIsFloatType(CFNumberRef number);                                                  // 10.0
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);                     // 10.0
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);            // 10.0
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application); // 10.0
Boolean CFPreferencesAppSynchronize(CFStringRef application);                                     // 10.0

#ifdef __cplusplus
}
#endif
