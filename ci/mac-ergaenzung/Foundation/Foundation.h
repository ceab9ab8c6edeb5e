#pragma once

#include_next <Foundation/Foundation.h>

// See CoreFoundation.h beside this folder for what this is.

extern NSString* const NSAppleScriptErrorNumber;  // 10.2
extern NSString* const NSAppleScriptErrorMessage; // 10.2

@interface NSAppleScript (Ergaenzung)
- (instancetype)initWithSource:(NSString*)source;                                          // 10.2
- (NSAppleEventDescriptor*)executeAndReturnError:(NSDictionary<NSString*, id>**)errorInfo; // 10.2
@end

@interface NSDictionary <KeyType, ObjectType>(Ergaenzung)
- (ObjectType)objectForKeyedSubscript:(KeyType)key; // 10.8
@end

@interface NSMutableDictionary <KeyType, ObjectType>(Ergaenzung)
- (void)setObject:(ObjectType)object forKeyedSubscript:(KeyType)key; // 10.8
@end
