#pragma once

#include "plattform/Text.hpp"

#import <Foundation/Foundation.h>

#include <string>

namespace mobilsteg {

inline NSString* nsText(const std::string& text) {
    return [NSString stringWithUTF8String:alsUtf8(text).c_str()];
}

inline std::string stdBytes(NSData* bytes) {
    return {static_cast<const char*>(bytes.bytes), bytes.length};
}

/// Half a surrogate pair, of which there is no UTF-8, becomes a question mark.
inline std::string stdText(NSString* text) {
    return stdBytes([text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES]);
}

} // namespace mobilsteg
