#include "ztbaseclient/wsdl/ReferencePlace.h"

#include <expat.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztcore/ztFile.h"

namespace {

class Search {
 public:
  explicit Search(const tovin::WideString& location) : expat_(XML_ParserCreate(nullptr), XML_ParserFree) {
    for (const wchar_t c : location.view()) location_ += static_cast<char>(c);
    if (!expat_) return;
    XML_SetUserData(expat_.get(), this);
    XML_SetStartElementHandler(expat_.get(), onElement);
  }

  // False when there is no need to go on.
  bool take(const unsigned char* bytes, size_t count) {
    return expat_ && XML_Parse(expat_.get(), reinterpret_cast<const char*>(bytes), static_cast<int>(count),
                               0) == XML_STATUS_OK;
  }
  const ReferencePlace& place() const { return place_; }

 private:
  static void onElement(void* self, const char* name, const char** attributes) {
    static_cast<Search*>(self)->look(name, attributes);
  }

  void look(std::string_view name, const char** attributes) {
    if (name.find("include") == name.npos && name.find("import") == name.npos) return;
    for (; *attributes; attributes += 2) {
      if (attributes[1] != location_ || !isLocation(attributes[0])) continue;
      place_ = {static_cast<int64_t>(XML_GetCurrentLineNumber(expat_.get())),
                static_cast<int64_t>(XML_GetCurrentColumnNumber(expat_.get())) + 1};
      XML_StopParser(expat_.get(), XML_FALSE);
      return;
    }
  }

  static bool isLocation(std::string_view attribute) {
    const std::wstring name = tovin::utf8ToWide(attribute.substr(attribute.find(':') + 1));
    return tovin::equalFolded(std::wstring_view(name), std::wstring_view(L"schemalocation")) ||
           tovin::equalFolded(std::wstring_view(name), std::wstring_view(L"location"));
  }

  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expat_;
  std::string location_;
  ReferencePlace place_;
};

constexpr size_t pieceSize = 1 << 16;

}  // namespace

std::wstring ReferencePlace::text() const {
  return line > 0 ? L":" + std::to_wstring(line) + L":" + std::to_wstring(column) : std::wstring();
}

ReferencePlace findReference(const tovin::Array<unsigned char>& document, const tovin::WideString& location) {
  Search search(location);
  for (size_t at = 0; at < document.getSize(); at += pieceSize) {
    if (!search.take(document.data() + at, std::min(pieceSize, document.getSize() - at))) break;
  }
  return search.place();
}

ReferencePlace findReference(const tovin::WideString& name, const tovin::WideString& location) {
  Search search(location);
  ztFile file;
  auto piece = std::make_unique<unsigned char[]>(pieceSize);
  if (!file.Open(name, ztFile::ForReading)) return {};
  while (const unsigned count = file.Read(piece.get(), pieceSize)) {
    if (!search.take(piece.get(), count)) break;
  }
  return search.place();
}
