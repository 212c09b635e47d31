// What the compiler and every framework take for granted.
#pragma once

typedef struct objc_class* Class;
typedef struct objc_object {
  Class isa;
} * id;
typedef struct objc_selector* SEL;

#if __OBJC_BOOL_IS_BOOL  // the compiler knows: a bool on arm64, a signed char on x86_64
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif

#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
