#pragma once

#include "tovin/ByteCoding.h"
#include "tovinCore/Exception.h"

namespace tovin::coding {

/// The record of a list: compact count, then each element by write(element).
template <class List, class Write>
void writeList(iByteOutputStream& stream, const List& list, Write&& write) {
  if (list.size() > INT32_MAX)
    throw Exception(L"A list of %d elements is too long for a record", list.size());
  writeInt(stream, static_cast<int32_t>(list.size()));
  for (const auto& element : list) write(element);
}

/// Reads it back, an element by each read(element). Empty after a failure.
template <class List, class Read>
void readList(iByteInputStream& stream, List& list, Read&& read) {
  list.clear();
  const int32_t count = readInt(stream);
  if (count < 0) throw Exception(L"A list cannot have the count %d", count);
  List arrived;
  for (int32_t i = 0; i < count; ++i) {
    typename List::value_type element{};
    read(element);
    arrived.push_back(std::move(element));
  }
  list.swap(arrived);
}

}  // namespace tovin::coding
