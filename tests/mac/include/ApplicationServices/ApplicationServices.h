#pragma once

#include <CoreGraphics/CoreGraphics.h>

extern "C" {
extern CFStringRef kAXTrustedCheckOptionPrompt;
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options);
}
