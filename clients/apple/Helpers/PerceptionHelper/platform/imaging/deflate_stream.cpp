#include "platform/imaging/deflate_stream.h"

#include "platform/posix/shared_library.h"

#define TAVIK_ISA_L_FUNCTIONS(DO) \
  DO(isal_deflate)                \
  DO(isal_deflate_init)

namespace tavik::platform::imaging {
namespace {

struct ISAL {
  static constexpr const char* kSoname = "libisal.so.2";
  TAVIK_LIBRARY_FUNCTIONS(TAVIK_ISA_L_FUNCTIONS)
};

const ISAL* isaL() { return posix::loaded<ISAL>(); }

}  // namespace

DeflateStream::DeflateStream() : state_(std::make_unique<State>()) {
  isal_zstream& stream = state_->stream;
  if (isUsable()) isaL()->isal_deflate_init(&stream);
  stream.level = 2;
  stream.level_buf = state_->level.data();
  stream.level_buf_size = static_cast<std::uint32_t>(state_->level.size());
  stream.gzip_flag = IGZIP_ZLIB;
  takeOutput();
}

bool DeflateStream::isUsable() const { return isaL() != nullptr; }

void DeflateStream::begin(std::span<const std::uint8_t> bytes, bool areLast) {
  // The library does not write to its input.
  state_->stream.next_in = const_cast<std::uint8_t*>(bytes.data());
  state_->stream.avail_in = static_cast<std::uint32_t>(bytes.size());
  state_->stream.end_of_stream = areLast ? 1 : 0;
}

bool DeflateStream::deflateSome() {
  isaL()->isal_deflate(&state_->stream);
  return state_->stream.avail_out == 0;
}

std::span<const std::uint8_t> DeflateStream::takeOutput() {
  isal_zstream& stream = state_->stream;
  const std::span<const std::uint8_t> taken(state_->output.data(), state_->output.size() - stream.avail_out);
  stream.next_out = state_->output.data();
  stream.avail_out = static_cast<std::uint32_t>(state_->output.size());
  return taken;
}

}  // namespace tavik::platform::imaging
