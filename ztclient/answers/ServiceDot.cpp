#include "ztclient/answers/ServiceDot.h"

#include <map>
#include <set>
#include <string>

#include "ztclient/answers/Markup.h"
#include "ztclient/answers/ServiceReferences.h"

using ztservice::Name;

namespace {

// In quotation marks, in which Graphviz reads references of HTML, and backslashes.
std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : markup::escaped(text)) {
    if (c == '\\') out += '\\';
    out += c == '\n' ? ' ' : c;
  }
  return out + '"';
}

}  // namespace

void writeServiceDot(const ztservice::Service& service, std::ostream& out) {
  std::map<Name, size_t> places;
  for (const ztservice::Type* type : service.types()) {
    if (!type->file.empty()) places.emplace(type->name, places.size());
  }
  // Types that are written in no document say nothing.
  const auto arrows = [&](const std::string& from, const auto& references) {
    std::set<size_t> seen;
    references([&](const Name& name) {
      const auto to = places.find(name);
      if (to != places.end() && seen.insert(to->second).second)
        out << "  " << from << " -> t" << to->second << ";\n";
    });
  };
  out << "digraph service {\n  rankdir=LR;\n  node [fontname=\"sans-serif\", fontsize=10];\n";
  size_t port = 0;
  for (const ztservice::Port& one : service.ports()) {
    out << "  subgraph cluster_" << port << " {\n    label=" << quoted(one.name())
        << ";\n    node [shape=box];\n";
    for (size_t i = 0; i < one.operations().size(); ++i)
      out << "    o" << port << '_' << i << " [label=" << quoted(one.operations()[i].name()) << "];\n";
    out << "  }\n";
    ++port;
  }
  for (const auto& [name, place] : places)
    out << "  t" << place << " [shape=ellipse, label=" << quoted(name.local)
        << ", tooltip=" << quoted(name.space) << "];\n";
  port = 0;
  for (const ztservice::Port& one : service.ports()) {
    for (size_t i = 0; i < one.operations().size(); ++i) {
      arrows("o" + std::to_string(port) + '_' + std::to_string(i),
             [&](const serviceReferences::Visit& visit) {
               serviceReferences::ofOperation(service, one.operations()[i], visit);
             });
    }
    ++port;
  }
  for (const ztservice::Type* type : service.types()) {
    const auto from = places.find(type->name);
    if (from == places.end()) continue;
    arrows("t" + std::to_string(from->second),
           [&](const serviceReferences::Visit& visit) { serviceReferences::ofType(*type, visit); });
  }
  out << "}\n";
}
