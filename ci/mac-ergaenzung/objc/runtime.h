#pragma once

// The free runtime's own has inline functions that reach into objects, which ARC forbids. This much of it the
// free Cocoa headers need.

#include <objc/objc.h>

typedef struct objc_ivar* Ivar;
typedef struct objc_method* Method;
typedef struct objc_property* objc_property_t;
struct objc_method_description {
    SEL name;
    char* types;
};
