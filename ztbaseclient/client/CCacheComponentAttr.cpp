#include "ztbaseclient/client/CCacheComponentAttr.h"

#include <string_view>

#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "CCacheComponentAttr";

// The text up to a separator, which is taken off with it.
std::wstring_view takeField(std::wstring_view& text, wchar_t separator) {
  const size_t end = std::min(text.find(separator), text.size());
  const std::wstring_view field = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return field;
}

}  // namespace

void CCacheComponentAttr::Reset() { *this = CCacheComponentAttr(); }

void CCacheComponentAttr::Parse(const wchar_t* text) {
  guarded({ClassName, "Parse"}, [&] {
    CCacheComponentAttr parsed;
    parsed.text_ = text;
    std::wstring_view rest = parsed.text_.view();
    parsed.runTimeId_ = takeField(rest, L';');
    parsed.ports_ = tovin::util::stringToInteger(takeField(rest, L';'));
    std::wstring_view sizes = takeField(rest, L';');
    parsed.passRecordSize_ = tovin::util::stringToInteger(takeField(sizes, L':'));
    parsed.failRecordSize_ = tovin::util::stringToInteger(sizes);
    parsed.tagProp_ = rest;
    *this = std::move(parsed);
  });
}
