#include "ztbaseclient/client/CCacheDisplayAttr.h"

#include "tovinCore/Exception.h"
#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"

using tovin::guarded;
using tovin::WideString;

namespace {

constexpr const char* ClassName = "CCacheDisplayAttr";
constexpr wchar_t separator = L';';
constexpr const wchar_t* pattern = L"%d;%d;%d;%d;%ls;%d";

std::wstring formatted(int viewType, int dataGroup, int pageSize, int page, const wchar_t* text,
                       int imageState) {
  try {
    return tovin::format(pattern, viewType, dataGroup, pageSize, page, text, imageState);
  } catch (const std::exception& e) {
    throw tovin::Exception(L"Unable to format: %ls (%hs)", pattern, e.what());
  }
}

}  // namespace

void CCacheDisplayAttr::Reset() { *this = CCacheDisplayAttr(); }

void CCacheDisplayAttr::SetDisplayAttr(const wchar_t* text) {
  guarded({ClassName, "SetDisplayAttr"}, [&] {
    WideString kept(text);  // the argument may be our own text
    Reset();
    text_ = std::move(kept);
    EnsureUpToDate();
  });
}

void CCacheDisplayAttr::EnsureUpToDate() {
  guarded({ClassName, "EnsureUpToDate"}, [&] {
    if (upToDate_ || text_.isEmpty()) return;
    const auto fields = tovin::util::singleStringToMultipleStrings(text_.view(), separator);
    int* const numbers[] = {&viewType_, &dataGroup_, &pageSize_, &displayPageNum_, nullptr, &imageState_};
    for (size_t i = 0; i < fields.size() && i < std::size(numbers); ++i) {
      if (numbers[i])
        *numbers[i] = tovin::util::stringToInteger(fields[i]);
      else
        displayText_ = fields[i];
    }
    upToDate_ = true;
  });
}

void CCacheDisplayAttr::GetDefaultDisplayAttr(int pageSize, WideString& out) {
  guarded({ClassName, "GetDefaultDisplayAttr"},
          [&] { out = formatted(1, PassData | FailData, pageSize, 1, L"", 1); });
}
