// What the pixels of a picture take as PNG: reads a binary PPM (P6) of 8 bits a component from standard input, and
// prints for each compressor, level and filter its name, its milliseconds (the least of three) and its bytes, separated
// by tabs.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <limits>
#include <string>
#include <vector>
#include <zlib.h>

#include <isa-l/igzip_lib.h>

namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t kPixelBytes = 3;
constexpr std::array kFilters{"none", "sub", "up"};  // ISO/IEC 15948, 9.2

struct Picture {
  std::size_t rowBytes = 0;
  std::size_t height = 0;
  Bytes pixels = {};
};

Picture readPicture(std::istream& input) {
  std::string magic;
  std::size_t width = 0, height = 0, maximum = 0;
  input >> magic >> width >> height >> maximum;
  input.get();
  Picture picture{.rowBytes = width * kPixelBytes, .height = height, .pixels = Bytes(width * kPixelBytes * height)};
  input.read(reinterpret_cast<char*>(picture.pixels.data()), static_cast<std::streamsize>(picture.pixels.size()));
  return magic == "P6" && maximum == 255 && input ? picture : Picture{};
}

Bytes filtered(const Picture& picture, unsigned filter) {
  if (picture.rowBytes == 0) return {};
  const std::size_t before = filter == 1 ? kPixelBytes : picture.rowBytes;  // where the neighbour is
  Bytes rows;
  rows.reserve(picture.pixels.size() + picture.height);
  for (std::size_t at = 0; at < picture.pixels.size(); ++at) {
    const std::size_t x = at % picture.rowBytes;
    if (x == 0) rows.push_back(static_cast<std::uint8_t>(filter));
    const bool hasNeighbour = filter == 1 ? x >= before : filter == 2 && at >= before;
    rows.push_back(static_cast<std::uint8_t>(picture.pixels[at] - (hasNeighbour ? picture.pixels[at - before] : 0)));
  }
  return rows;
}

std::size_t zlibBytes(const Bytes& rows, int level) {
  Bytes output(compressBound(rows.size()));
  uLongf size = output.size();
  return compress2(output.data(), &size, rows.data(), rows.size(), level) == Z_OK ? size : 0;
}

std::size_t isalBytes(Bytes& rows, int level) {
  Bytes buffer(ISAL_DEF_LVL3_EXTRA_LARGE), output(rows.size() + 65536);
  isal_zstream stream;
  isal_deflate_init(&stream);
  stream.level = static_cast<std::uint32_t>(level);
  stream.level_buf = buffer.data();
  stream.level_buf_size = static_cast<std::uint32_t>(buffer.size());
  stream.gzip_flag = IGZIP_ZLIB;
  stream.end_of_stream = 1;
  stream.next_in = rows.data();
  stream.avail_in = static_cast<std::uint32_t>(rows.size());
  stream.next_out = output.data();
  stream.avail_out = static_cast<std::uint32_t>(output.size());
  return isal_deflate(&stream) == COMP_OK ? stream.total_out : 0;
}

template <class Compress>
void measure(const std::string& name, Compress compress) {
  double least = std::numeric_limits<double>::max();
  std::size_t bytes = 0;
  for (int run = 0; run < 3; ++run) {
    const auto begin = std::chrono::steady_clock::now();
    bytes = compress();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    least = std::min(least, time.count());
  }
  std::printf("%s\t%.1f\t%zu\n", name.c_str(), least, bytes);
}

}  // namespace

int main() {
  const Picture picture = readPicture(std::cin);
  if (picture.pixels.empty()) return 1;
  for (unsigned filter = 0; filter < 3; ++filter) {
    Bytes rows = filtered(picture, filter);
    const auto name = [&](const char* compressor, int level) {
      return std::string(compressor).append(" ").append(std::to_string(level)).append(", ").append(kFilters[filter]);
    };
    for (const int level : {1, 3, 6, 9}) measure(name("zlib", level), [&] { return zlibBytes(rows, level); });
    for (const int level : {0, 1, 2, 3}) measure(name("ISA-L", level), [&] { return isalBytes(rows, level); });
  }
}
