#pragma once

#include <boost/json/array.hpp>

namespace tavik::mcp {

/// The tools as tools/list tells them.
const boost::json::array& toolList();

}  // namespace tavik::mcp
