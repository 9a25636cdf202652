#include "platform/macos/cg_image.h"

#include <ImageIO/ImageIO.h>
#include <utility>

namespace tavik::platform::macos {
namespace {

static_assert(kCGImageAlphaPremultipliedLast == 1);
static_assert(kCGInterpolationHigh == 3);

CFRef<CGColorSpaceRef> colorSpaceOf(CGImageRef image) {
  auto own = retained(CGImageGetColorSpace(image));
  return own ? own : adopted(CGColorSpaceCreateDeviceRGB());
}

/// Null when no such bitmap can be made.
CFRef<CGContextRef> makeBitmapContext(PixelSize size, CGColorSpaceRef colorSpace) {
  constexpr std::size_t kBitsPerComponent = 8, kItsOwnBytesPerRow = 0;
  return adopted(CGBitmapContextCreate(nullptr, static_cast<std::size_t>(size.width),
                                       static_cast<std::size_t>(size.height), kBitsPerComponent, kItsOwnBytesPerRow,
                                       colorSpace, kCGImageAlphaPremultipliedLast));
}

CFRef<CFDictionaryRef> propertiesFor(std::optional<double> quality) {
  const auto number = adopted(quality ? CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &*quality) : nullptr);
  const void* key = kCGImageDestinationLossyCompressionQuality;
  const void* value = number.get();
  return adopted(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, number ? 1 : 0, &kCFTypeDictionaryKeyCallBacks,
                                    &kCFTypeDictionaryValueCallBacks));
}

class CoreGraphicsImage final : public Image {
 public:
  explicit CoreGraphicsImage(CFRef<CGImageRef> image) : image_(std::move(image)) {}

  PixelSize size() const override {
    return {static_cast<std::int64_t>(CGImageGetWidth(image_.get())),
            static_cast<std::int64_t>(CGImageGetHeight(image_.get()))};
  }

  ImageRef resized(PixelSize size) const override {
    const auto colorSpace = colorSpaceOf(image_.get());
    const auto context = makeBitmapContext(size, colorSpace.get());
    if (!context) return nullptr;
    CGContextSetInterpolationQuality(context.get(), kCGInterpolationHigh);
    const auto whole = CGRectMake(0, 0, static_cast<CGFloat>(size.width), static_cast<CGFloat>(size.height));
    CGContextDrawImage(context.get(), whole, image_.get());
    auto image = adopted(CGBitmapContextCreateImage(context.get()));
    return image ? makeImage(std::move(image)) : nullptr;
  }

  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    const auto data = adopted(CFDataCreateMutable(kCFAllocatorDefault, 0));
    const CFStringRef identifier = type == ImageType::png ? CFSTR("public.png") : CFSTR("public.jpeg");
    const auto destination = adopted(CGImageDestinationCreateWithData(data.get(), identifier, 1, nullptr));
    if (!destination) return std::nullopt;
    CGImageDestinationAddImage(destination.get(), image_.get(), propertiesFor(quality).get());
    if (!CGImageDestinationFinalize(destination.get())) return std::nullopt;
    const auto* const bytes = reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data.get()));
    return std::vector(bytes, bytes + CFDataGetLength(data.get()));
  }

 private:
  CFRef<CGImageRef> image_;
};

}  // namespace

ImageRef makeImage(CFRef<CGImageRef> image) { return std::make_shared<CoreGraphicsImage>(std::move(image)); }

}  // namespace tavik::platform::macos
