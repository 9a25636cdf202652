// The part of ImageIO that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

using CGImageDestinationRef = struct CGImageDestination*;

extern "C" {
extern const CFStringRef kCGImageDestinationLossyCompressionQuality;

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, std::size_t count,
                                                       CFDictionaryRef options);
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image, CFDictionaryRef properties);
bool CGImageDestinationFinalize(CGImageDestinationRef destination);
}
