#pragma once

#include <string>

namespace tovin::platform {

// A file name as the system takes it, however long: a long one is made absolute and marked so that the limit
// of 260 units does not count. The mark is put on long names only, for it also turns off what people expect
// of the others: '/' as a separator, "." and "..", and device names.
std::wstring systemPath(const wchar_t* name);

}  // namespace tovin::platform
