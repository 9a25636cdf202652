#pragma once

#include <functional>
#include <string>

namespace tavik::mcp {

/// Reads standard input, and gives each line that is not empty, without its line feed, to `take`, until the input ends.
/// Of a line of more than 4 MiB only as much is given.
void readLines(const std::function<void(std::string)>& take);

}  // namespace tavik::mcp
