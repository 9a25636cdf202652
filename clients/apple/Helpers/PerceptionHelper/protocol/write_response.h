#pragma once

#include <string>

#include "platform/standard_streams.h"
#include "protocol/error_replies.h"
#include "protocol/response_dictionary.h"

namespace tavik {

/// Writes `response` to standard output as one compact JSON object, then one line feed. A response that JSON cannot
/// express (a number that is not finite, a string that is not UTF-8), or for which memory does not suffice, is replaced
/// whole by kSerializationFailure. Called once in a run.
void writeResponse(const ResponseDictionary& response, platform::StandardStreams& streams) noexcept;

/// The text of an error envelope: `ok` false, `code`, `error`, and `hint` when there is one.
std::string errorText(const ErrorReply& reply);

/// Writes the error envelope.
void writeError(const ErrorReply& reply, platform::StandardStreams& streams);

/// Writes the replacement that writeResponse falls back to.
void writeSerializationFailure(platform::StandardStreams& streams) noexcept;

}  // namespace tavik
