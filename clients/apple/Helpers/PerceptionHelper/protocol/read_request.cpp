#include "protocol/read_request.h"

#include <string>

#include "protocol/decode_request.h"

namespace tavik {

Request readRequest(platform::StandardStreams& streams) {
  const auto input = streams.readInputToEnd();
  if (input.empty()) return {};
  auto decoded = decodeRequest(input);
  if (auto* const request = std::get_if<Request>(&decoded)) return std::move(*request);
  streams.writeError("[tavik-perception-helper] decode error: " + std::get<DecodeError>(decoded).description + "\n");
  return {};
}

}  // namespace tavik
