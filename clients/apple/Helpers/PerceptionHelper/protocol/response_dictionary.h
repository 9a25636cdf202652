#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace tavik {

/// A map of JSON values under string keys. Its strings are valid UTF-8 and its numbers finite.
using ResponseDictionary = boost::json::object;
using ResponseArray = boost::json::array;
using ResponseValue = boost::json::value;

}  // namespace tavik
