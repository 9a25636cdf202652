#pragma once

#include <string_view>

namespace tavik {

/// The text of the policy that comes with the program, compiled in: a program that has lost its files has it still.
std::string_view deliveredPolicy();

}  // namespace tavik
