#import <CoreGraphics/CoreGraphics.h>
#import <ImageIO/ImageIO.h>
#include <string>

#include "runtime.h"

namespace tavik::fake {
namespace {

/// An image, and a bitmap context: its size, its colour space (or none), and how its content came about.
struct Picture {
  std::size_t width, height;
  Held space;
  std::string story;
  int interpolation = kCGInterpolationDefault;
};

struct Destination {
  Held data;
  std::string type, content = {};
};

std::string described(const Picture& picture) {
  return std::to_string(picture.width) + "x" + std::to_string(picture.height) + " " + picture.story;
}

}  // namespace

Held makePicture(std::size_t width, std::size_t height, const std::string& story) {
  return object(Picture{width, height, fails("CGImageGetColorSpace") ? nullptr : text("P3"), story});
}

}  // namespace tavik::fake

using namespace tavik::fake;

const CFStringRef kCGImageDestinationLossyCompressionQuality = CFSTR("quality");

std::size_t CGImageGetWidth(CGImageRef image) { return valueOf<Picture>(image).width; }
std::size_t CGImageGetHeight(CGImageRef image) { return valueOf<Picture>(image).height; }
CGColorSpaceRef CGImageGetColorSpace(CGImageRef image) { return as<CGColorSpaceRef>(valueOf<Picture>(image).space); }
CGColorSpaceRef CGColorSpaceCreateDeviceRGB() { return give<CGColorSpaceRef>(text("device RGB")); }

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height, std::size_t bitsPerComponent,
                                   std::size_t bytesPerRow, CGColorSpaceRef space, std::uint32_t bitmapInfo) {
  require(data == nullptr && bitsPerComponent == 8 && bytesPerRow == 0 && bitmapInfo == 1,
          "a bitmap of its own, 8 bits, premultiplied alpha last");
  if (width == 0 || height == 0 || fails(__func__)) return nullptr;
  return give<CGContextRef>(object(Picture{width, height, retain(space), "in " + valueOf<std::string>(space)}));
}

void CGContextSetInterpolationQuality(CGContextRef context, CGInterpolationQuality quality) {
  valueOf<Picture>(context).interpolation = quality;
}

void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image) {
  auto& canvas = valueOf<Picture>(context);
  const auto [width, height] = rect.size;
  require(rect.origin.x == 0 && rect.origin.y == 0 && width == static_cast<double>(canvas.width) &&
              height == static_cast<double>(canvas.height),
          "the picture fills the context");
  canvas.story += " at quality " + std::to_string(canvas.interpolation) + " from " + described(valueOf<Picture>(image));
}

CGImageRef CGBitmapContextCreateImage(CGContextRef context) {
  return fails(__func__) ? nullptr : give<CGImageRef>(object(valueOf<Picture>(context)));
}

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, std::size_t count,
                                                       CFDictionaryRef options) {
  require(count == 1 && options == nullptr, "one image, no options");
  if (fails(__func__)) return nullptr;
  return give<CGImageDestinationRef>(object(Destination{retain(data), valueOf<std::string>(type)}));
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image, CFDictionaryRef properties) {
  auto& content = valueOf<Destination>(destination).content;
  for (const auto& [key, value] : valueOf<Dictionary>(properties)) {
    content += key + " " + std::to_string(valueOf<double>(value.get())) + ", ";
  }
  content += described(valueOf<Picture>(image));
}

bool CGImageDestinationFinalize(CGImageDestinationRef destination) {
  const auto& [data, type, content] = valueOf<Destination>(destination);
  require(!content.empty(), "there is an image to write");
  valueOf<std::string>(data.get()) = type + ", " + content;
  return !fails(__func__);
}
