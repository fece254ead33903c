// A service of several files from bytes: each ends where a line "@@ NAME" begins the next one, and the first
// is the document. The answer is a service or a framework exception; everything in it is looked at.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "ztservice/Service.h"
#include "ztservice/call/Template.h"

namespace {

using Files = std::map<std::string, std::string>;

Files filesOf(std::string_view text) {
  constexpr std::string_view mark = "\n@@ ";
  Files files;
  std::string name = "main.wsdl";
  while (true) {
    const size_t end = text.find(mark);
    files[name] = text.substr(0, end);
    if (end == text.npos) return files;
    text.remove_prefix(end + mark.size());
    const size_t line = text.find('\n');
    name = text.substr(0, line);
    text.remove_prefix(line == text.npos ? text.size() : line + 1);
  }
}

// Goes through a type as whoever prints it does; what is written inside nests no deeper than the library
// says.
size_t sizeOf(const ztservice::Type& type) {
  size_t size = type.name.local.size() + type.error.size() + type.values.size() + type.facets.size();
  const auto reference = [&](const ztservice::TypeReference& one) {
    size += one.anonymous ? sizeOf(*one.anonymous) : one.name.local.size();
  };
  for (const ztservice::Member& member : type.members) reference(member.type);
  for (const ztservice::Attribute& attribute : type.attributes) reference(attribute.type);
  for (const ztservice::TypeReference& one : type.memberTypes) reference(one);
  if (type.item) reference(*type.item);
  if (type.content) reference(*type.content);
  if (type.anonymousBase) size += sizeOf(*type.anonymousBase);
  return size;
}

size_t templateOf(const ztservice::Service& service, const ztservice::Port& port,
                  const ztservice::Operation& operation) {
  try {
    return ztservice::call::makeTemplate(service, port, operation).size();
  } catch (const ztservice::Error&) {
    return 0;  // of an operation that cannot be called
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Files files = filesOf({reinterpret_cast<const char*>(data), size});
  ztservice::Options options;
  options.limits.members = 10'000;
  options.catalogs = {"catalog.xml"};
  options.readFile = [&](const std::string& path, std::string& bytes) {
    const auto found = files.find(path);
    if (found == files.end()) return false;
    bytes = found->second;
    return true;
  };
  if (!files.contains("catalog.xml")) options.catalogs.clear();
  try {
    const ztservice::Service service = ztservice::load("main.wsdl", options);
    size_t all = 0;
    for (const ztservice::Type* type : service.types()) all += sizeOf(*type);
    for (const ztservice::Element* element : service.elements()) {
      if (element->type.anonymous) all += sizeOf(*element->type.anonymous);
    }
    for (const ztservice::Warning& warning : service.warnings()) all += warning.toString().size();
    for (const ztservice::Port& port : service.ports()) {
      for (const ztservice::Operation& operation : port.operations())
        all += templateOf(service, port, operation);
    }
    if (all == 0) return 0;
    ztservice::flatten("main.wsdl", options);
  } catch (const tovin::Exception&) {
    return 0;
  }
  return 0;
}
