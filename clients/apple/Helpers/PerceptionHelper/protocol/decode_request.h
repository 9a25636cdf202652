#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "protocol/request.h"

namespace tavik {

/// Why some bytes are no request.
struct DecodeError {
  /// What went wrong and where, for a person: one line of at most 250 characters without control characters.
  std::string description = {};
};

/// Decodes one JSON object (RFC 8259, UTF-8 without a byte-order mark). Keys that are none of Request's are ignored; of
/// a repeated key the last value counts; a whole number may also be spelled 2.0 or 2e3. The first failure, in the order
/// of Request's members, is the one reported. Takes time and memory in proportion to the input, and a bounded stack.
std::variant<Request, DecodeError> decodeRequest(std::string_view json);

}  // namespace tavik
