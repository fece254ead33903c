#pragma once

#include <expat.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <string_view>

#include "ztservice/load/Encoding.h"

namespace ztservice::parse {

// A document on its way through expat, for whoever takes its events.
class Expat {
 public:
  // Takes the parser over; there is none without memory.
  explicit Expat(XML_Parser parser) : parser_(parser, &XML_ParserFree) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUnknownEncodingHandler(parser, &onEncoding, nullptr);
  }

  XML_Parser get() const noexcept { return parser_.get(); }
  size_t line() const noexcept { return XML_GetCurrentLineNumber(parser_.get()); }
  // From 1.
  size_t column() const noexcept { return XML_GetCurrentColumnNumber(parser_.get()) + 1; }
  // What is wrong with the document.
  const char* fault() const noexcept { return XML_ErrorString(XML_GetErrorCode(parser_.get())); }

  // Takes an event. No exception may pass through expat: feed() raises it.
  template <class Work>
  void guarded(const Work& work) {
    if (failure_) return;
    try {
      work();
    } catch (...) {
      failure_ = std::current_exception();
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }
  bool gaveUp() const noexcept { return failure_ != nullptr; }

  // The whole document; false at a fault of it.
  bool feed(std::string_view bytes) {
    constexpr size_t piece = 1 << 20;
    do {
      const std::string_view next = bytes.substr(0, piece);
      bytes.remove_prefix(next.size());
      if (XML_Parse(parser_.get(), next.data(), static_cast<int>(next.size()), bytes.empty()) !=
          XML_STATUS_OK) {
        if (failure_) std::rethrow_exception(failure_);
        return false;
      }
    } while (!bytes.empty());
    return true;
  }

 private:
  static int XMLCALL onEncoding(void*, const char* name, XML_Encoding* encoding) {
    return fillEncoding(name, *encoding) ? XML_STATUS_OK : XML_STATUS_ERROR;
  }

  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::exception_ptr failure_;
};

}  // namespace ztservice::parse
