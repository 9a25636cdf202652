#include "tools/mcp/standard_lines.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace tavik::mcp {
namespace {

constexpr std::size_t kLongestLine = std::size_t{4} << 20;

class LineSplitter {
 public:
  explicit LineSplitter(const std::function<void(std::string)>& take) : take_(take) {}

  void add(std::string_view bytes) {
    for (auto end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
      append(bytes.substr(0, end));
      finish();
      bytes.remove_prefix(end + 1);
    }
    append(bytes);
  }

  void finish() {
    if (!line_.empty()) take_(std::exchange(line_, {}));
  }

 private:
  void append(std::string_view part) { line_.append(part.substr(0, kLongestLine - line_.size())); }

  const std::function<void(std::string)>& take_;
  std::string line_;
};

}  // namespace

void readLines(const std::function<void(std::string)>& take) {
  LineSplitter lines(take);
  std::array<char, 65536> chunk{};
  while (true) {
    const auto count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    lines.add({chunk.data(), static_cast<std::size_t>(count)});
  }
  lines.finish();
}

}  // namespace tavik::mcp
