// The part of CoreGraphics that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

using CGFloat = double;
using CGDirectDisplayID = std::uint32_t;
using CGWindowID = std::uint32_t;
using CGImageRef = struct CGImage*;
using CGContextRef = struct CGContext*;
using CGColorSpaceRef = struct CGColorSpace*;

struct CGPoint {
  CGFloat x, y;
};
struct CGSize {
  CGFloat width, height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) { return {{x, y}, {width, height}}; }

enum CGImageAlphaInfo : std::uint32_t { kCGImageAlphaNone = 0, kCGImageAlphaPremultipliedLast = 1 };
enum CGInterpolationQuality : std::int32_t { kCGInterpolationDefault = 0, kCGInterpolationHigh = 3 };

extern "C" {
CGDirectDisplayID CGMainDisplayID();
bool CGPreflightScreenCaptureAccess();

std::size_t CGImageGetWidth(CGImageRef image);
std::size_t CGImageGetHeight(CGImageRef image);
CGColorSpaceRef CGImageGetColorSpace(CGImageRef image);
CGColorSpaceRef CGColorSpaceCreateDeviceRGB();

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height, std::size_t bitsPerComponent,
                                   std::size_t bytesPerRow, CGColorSpaceRef space, std::uint32_t bitmapInfo);
void CGContextSetInterpolationQuality(CGContextRef context, CGInterpolationQuality quality);
void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image);
CGImageRef CGBitmapContextCreateImage(CGContextRef context);
}
