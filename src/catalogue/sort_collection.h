// gfcolSortCollection: the heap sort of a list of strings that orders the
// catalogue. Comparison is by character code, so "b-10" comes before "b-2".
#pragma once

#include <string>

#include "runtime/keyed_list.h"

namespace ostrel {

// A new list of the items in ascending order, without keys; the input is
// not touched.
KeyedList<std::string> gfcolSortCollection(const KeyedList<std::string>& vcolItems);

}  // namespace ostrel
