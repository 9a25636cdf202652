#pragma once

#include <optional>
#include <string_view>

#include "platform/standard_streams.h"
#include "protocol/response_dictionary.h"

namespace tavik {

/// Writes `response` to standard output as one compact JSON object, then one line feed. A response that JSON cannot
/// express (a number that is not finite, a string that is not UTF-8), or for which memory does not suffice, is replaced
/// whole by
/// `{"ok": false, "code": "helper_serialize_failed"}`. Called once in a run.
void writeResponse(const ResponseDictionary& response, platform::StandardStreams& streams) noexcept;

/// What an error response says.
struct ErrorReply {
  std::string_view code = {};                 ///< stable, snake_case
  std::string_view error = {};                ///< a sentence for a person
  std::optional<std::string_view> hint = {};  ///< what to do next
};

/// Writes the error envelope: `ok` false, `code`, `error`, and `hint` when there is one.
void writeError(const ErrorReply& reply, platform::StandardStreams& streams);

/// Writes the replacement that writeResponse falls back to.
void writeSerializationFailure(platform::StandardStreams& streams) noexcept;

}  // namespace tavik
