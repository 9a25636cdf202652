#pragma once

#include <string>
#include <tuple>
#include <vector>

namespace tavik {

/// The cases of a test: each row has a text, which tells it from the others, and a value for every column.
template <class... Columns>
using Table = std::vector<std::tuple<std::string, Columns...>>;

}  // namespace tavik
