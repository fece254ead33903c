#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/Name.h"

namespace ztservice::call {

// Namespaces of messages.
inline constexpr std::string_view soap11Space = "http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr std::string_view soap12Space = "http://www.w3.org/2003/05/soap-envelope";
inline constexpr bool isEnvelope(std::string_view space) {
  return space == soap11Space || space == soap12Space;
}
inline constexpr std::string_view encoding11Space = "http://schemas.xmlsoap.org/soap/encoding/";
inline constexpr std::string_view encoding12Space = "http://www.w3.org/2003/05/soap-encoding";
inline constexpr std::string_view instanceSpace = "http://www.w3.org/2001/XMLSchema-instance";

// XML as it is written, from the first element to the last. Prefixes are given out as they are needed;
// whoever puts the text into a document declares them around it.
class XmlText {
 public:
  void begin(const Name& name);
  // Of the element that has just begun.
  void attribute(const Name& name, std::string_view value);
  void text(std::string_view value);
  // What is XML already.
  void raw(std::string_view xml);
  void end(const Name& name);

  // "ns1:order": the name as it stands in a value, in an element or attribute with this prefix.
  std::string qualified(const Name& name);

  // Attributes for all prefixes: ` xmlns:ns1="urn:orders"…`.
  std::string declarations() const;
  std::string take();

 private:
  void endTag();
  void put(const Name& name);
  std::string_view prefixOf(std::string_view space);

  std::string out_;
  bool isInTag_ = false;
  // The one that was asked for last, which is most often the next one too.
  std::string_view lastSpace_;
  std::string_view lastPrefix_;
  std::map<std::string, std::string, std::less<>> prefixes_;
  std::vector<const std::string*> order_;
  size_t own_ = 0;
};

// The place of the first character that cannot stand in XML, npos if there is none: what is no UTF-8, too.
size_t unfitAt(std::string_view text);

// What is wrong with XML that is to stand inside an element: empty if nothing.
std::string faultOfXml(std::string_view xml);

}  // namespace ztservice::call
