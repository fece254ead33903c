#include "ztclient/pages/ServicePage.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "ztclient/answers/Markup.h"
#include "ztclient/answers/ServiceReferences.h"
#include "ztclient/answers/ServiceText.h"
#include "ztclient/pages/Page.h"
#include "ztservice/call/Template.h"

using markup::escaped;
using ztservice::Attribute;
using ztservice::Member;
using ztservice::Message;
using ztservice::Name;
using ztservice::Operation;
using ztservice::Part;
using ztservice::Port;
using ztservice::Type;
using ztservice::TypeReference;

namespace {

// Types inside each other that are shown where they stand.
constexpr size_t deepest = 12;
constexpr size_t longestExample = 300;
constexpr size_t mostUsers = 50;

std::string boundsOf(uint64_t min, uint64_t max) {
  const std::string most = max == Member::unbounded ? "many" : std::to_string(max);
  if (max == 1) return min == 0 ? "optional" : "required";
  return std::to_string(min) + " to " + most;
}

class Manual {
 public:
  explicit Manual(const ztservice::Service& service) : service_(service) {
    for (const Type* type : service.types()) {
      if (!type->file.empty()) places_.emplace(type->name, places_.size());
    }
    forOperations([this](const Operation& operation, const std::string& id) {
      serviceReferences::ofOperation(service_, operation,
                                     [&](const Name& name) { use(name, id, operation.name()); });
    });
    for (const Type* type : service.types()) {
      const auto place = places_.find(type->name);
      if (place == places_.end()) continue;
      serviceReferences::ofType(*type,
                                [&](const Name& name) { use(name, idOf(place->second), type->name.local); });
    }
  }

  std::string body() {
    std::string body = "<p>Namespace <code>" + escaped(service_.targetNamespace()) + "</code></p>\n";
    if (!service_.warnings().empty()) {
      body += "<details class=\"warning\"><summary>" + std::to_string(service_.warnings().size()) +
              " warnings</summary>\n<ul>\n";
      for (const ztservice::Warning& one : service_.warnings())
        body += "<li>" + escaped(one.toString()) + "</li>\n";
      body += "</ul></details>\n";
    }
    body += page::filterOf("Operations and types with", "main", "filter");
    body +=
        "<div class=\"tools\" hidden><button data-open=\"yes\" data-within=\"#operations\">Open all "
        "operations</button> <button data-open=\"no\" data-within=\"#operations\">Close "
        "them</button></div>\n";
    body += contents() + "<h2>Operations</h2>\n<div id=\"operations\">\n";
    size_t number = 0;
    for (const Port& one : service_.ports()) body += port(one, number++);
    body += "</div>\n<h2>Types</h2>\n";
    for (const Type* type : service_.types()) {
      const auto place = places_.find(type->name);
      if (place != places_.end()) body += section(*type, place->second);
    }
    return body;
  }

 private:
  struct User {
    std::string id;
    std::string_view name;
  };

  static std::string idOf(size_t type) { return "t" + std::to_string(type); }

  template <class Visit>
  void forOperations(const Visit& visit) const {
    size_t number = 0;
    for (const Port& port : service_.ports()) {
      for (size_t i = 0; i < port.operations().size(); ++i)
        visit(port.operations()[i], "o" + std::to_string(number) + '-' + std::to_string(i));
      ++number;
    }
  }

  void use(const Name& type, const std::string& id, std::string_view name) {
    std::vector<User>& users = users_[type];
    if (users.empty() || users.back().id != id) users.push_back({id, name});
  }

  std::string contents() const {
    std::string list = "<nav aria-label=\"Operations\"><ul>\n";
    forOperations([&](const Operation& operation, const std::string& id) {
      list += "<li><a href=\"#" + id + "\">" + escaped(operation.name()) + "</a></li>\n";
    });
    return list + "</ul></nav>\n";
  }

  std::string port(const Port& port, size_t number) {
    std::string text = "<h3>" + escaped(port.name()) + "</h3>\n<p class=\"quiet\">" +
                       protocolName(port.protocol()) + " at <code>" + escaped(port.address()) +
                       "</code></p>\n" + error(port.error());
    for (size_t i = 0; i < port.operations().size(); ++i) {
      const Operation& one = port.operations()[i];
      text += "<details data-row id=\"o" + std::to_string(number) + '-' + std::to_string(i) + "\"><summary>" +
              escaped(one.name()) + "</summary>\n" + error(one.error());
      if (!one.soapAction().empty())
        text += "<p class=\"quiet\">Action <code>" + escaped(one.soapAction()) + "</code></p>\n";
      if (one.input()) text += message("Request", *one.input());
      if (one.output()) text += message("Response", *one.output());
      for (const ztservice::Fault& fault : one.faults())
        text += parts("Fault " + std::string(fault.name), fault.parts) + error(fault.error);
      text += example(port, one) + "</details>\n";
    }
    return text;
  }

  std::string error(std::string_view text) const {
    return text.empty() ? std::string()
                        : "<p class=\"warning\">Cannot be resolved: " + escaped(text) + "</p>\n";
  }

  std::string message(const char* title, const Message& message) {
    std::string text = parts(title, message.parts) + error(message.error);
    std::vector<Part> headers;
    for (const ztservice::Header& header : message.headers) {
      if (header.part) headers.push_back(*header.part);
    }
    if (!headers.empty()) text += parts(std::string(title) + " headers", headers);
    for (const ztservice::Attachment& one : message.attachments) {
      text += "<p>Attachment <code>" + escaped(one.part.name) + "</code>";
      for (const std::string_view type : one.mediaTypes) text += ' ' + escaped(type);
      text += "</p>\n";
    }
    return text;
  }

  std::string parts(const std::string& title, const std::vector<Part>& parts) {
    std::string text = "<h4>" + escaped(title) + "</h4>\n";
    if (parts.empty()) return text + "<p>Nothing</p>\n";
    for (const Part& part : parts) {
      const ztservice::Element* element = part.element.empty() ? nullptr : service_.element(part.element);
      const TypeReference reference = element ? element->type : TypeReference{part.type};
      text += "<p><code>" + escaped(part.element.empty() ? part.name : part.element.local) +
              "</code>: " + link(reference) + "</p>\n" + error(part.error);
      const Type* type = reference.anonymous      ? reference.anonymous
                         : reference.name.empty() ? nullptr
                                                  : service_.type(reference.name);
      if (type && (reference.anonymous || type->kind == Type::Kind::complex)) text += inside(*type, 0);
    }
    return text;
  }

  std::string example(const Port& port, const Operation& operation) const {
    if (port.protocol() == ztservice::Protocol::other) return {};
    for (const bool isFull : {true, false}) {
      try {
        ztservice::call::TemplateOptions options;
        options.isFull = isFull;
        options.lines = longestExample;
        return "<h4>Values of a request</h4>\n<pre tabindex=\"0\">" +
               escaped(makeTemplate(service_, port, operation, options)) + "</pre>\n";
      } catch (const ztservice::Error&) {
        continue;  // too long, or nothing to call
      }
    }
    return {};
  }

  std::string link(const TypeReference& reference) const {
    if (reference.anonymous || reference.name.empty()) return "<span class=\"quiet\">as below</span>";
    const auto place = places_.find(reference.name);
    const std::string name = escaped(reference.name.local);
    return place == places_.end() ? name : "<a href=\"#" + idOf(place->second) + "\">" + name + "</a>";
  }

  // A type with what is written inside it.
  std::string inside(const Type& type, size_t depth) const {
    if (depth > deepest) return "<p>…</p>\n";
    std::string text = error(type.error);
    if (type.anonymousBase) text += inside(*type.anonymousBase, depth + 1);
    if (type.item)
      text += "<p>List of " + link(*type.item) + "</p>\n" +
              (type.item->anonymous ? inside(*type.item->anonymous, depth + 1) : "");
    if (!type.memberTypes.empty()) {
      text += "<p>One of";
      for (const TypeReference& one : type.memberTypes)
        text += ' ' + (one.anonymous ? "a type of its own" : link(one));
      text += "</p>\n";
    }
    if (type.content) text += "<p>Text: " + link(*type.content) + "</p>\n";
    if (!type.facets.empty()) {
      text += "<ul>\n";
      for (const ztservice::Facet& facet : type.facets)
        text += "<li>" + escaped(facet.name) + " <code>" + escaped(facet.value) + "</code></li>\n";
      text += "</ul>\n";
    }
    if (!type.values.empty()) {
      text += "<p>Values:";
      for (const std::string_view value : type.values) text += " <code>" + escaped(value) + "</code>";
      text += "</p>\n";
    }
    return text + members(type, depth);
  }

  std::string members(const Type& type, size_t depth) const {
    if (type.members.empty() && type.attributes.empty()) return {};
    std::string text =
        "<div class=\"scroll\"><table>\n<thead><tr><th scope=\"col\">name</th><th scope=\"col\">type</th><th "
        "scope=\"col\">occurs</th><th scope=\"col\">notes</th></tr></thead>\n<tbody>\n";
    for (const Member& one : type.members) {
      const std::string name =
          one.any ? "any of " + std::string(one.any->space) : std::string(one.name.local);
      std::string notes = one.nillable ? "may be nil" : "";
      const auto note = [&notes](const std::string& more) { notes += (notes.empty() ? "" : ", ") + more; };
      if (!one.choice.empty()) note("choice " + std::string(one.choice));
      if (one.defaultValue) note("default " + std::string(*one.defaultValue));
      if (one.fixedValue) note("always " + std::string(*one.fixedValue));
      if (!one.error.empty()) note("cannot be resolved: " + std::string(one.error));
      text += member(name, one.any ? "XML" : link(one.type), boundsOf(one.min, one.max), notes,
                     one.type.anonymous, depth);
    }
    for (const Attribute& one : type.attributes) {
      std::string notes;
      if (one.defaultValue) notes = "default " + std::string(*one.defaultValue);
      if (one.fixedValue) notes = "always " + std::string(*one.fixedValue);
      if (!one.error.empty()) notes = "cannot be resolved: " + std::string(one.error);
      text += member('@' + std::string(one.name.local), link(one.type),
                     one.required ? "required" : "optional", notes, one.type.anonymous, depth);
    }
    return text + "</tbody></table></div>\n";
  }

  std::string member(const std::string& name, const std::string& type, const std::string& occurs,
                     const std::string& notes, const Type* anonymous, size_t depth) const {
    return "<tr><td><code>" + escaped(name) + "</code></td><td>" + type +
           (anonymous ? inside(*anonymous, depth + 1) : "") + "</td><td>" + occurs + "</td><td>" +
           escaped(notes) + "</td></tr>\n";
  }

  std::string section(const Type& type, size_t place) const {
    std::string text = "<section data-row id=\"" + idOf(place) + "\"><h3>" + escaped(type.name.local) +
                       "</h3>\n<p class=\"quiet\"><code>" + escaped(type.name.space) + "</code> " +
                       escaped(type.file) + ':' + std::to_string(type.line) + "</p>\n";
    if (!type.base.empty()) text += "<p>From " + link(TypeReference{type.base}) + "</p>\n";
    if (type.isAbstract) {
      text += "<p>Abstract; in its place";
      for (const Name& one : type.derived) text += ' ' + link(TypeReference{one});
      text += "</p>\n";
    }
    text += inside(type, 0);
    const auto users = users_.find(type.name);
    if (users != users_.end()) {
      text += "<p>Used by";
      for (size_t i = 0; i < std::min(users->second.size(), mostUsers); ++i)
        text += (i > 0 ? ", <a href=\"#" : " <a href=\"#") + users->second[i].id + "\">" +
                escaped(users->second[i].name) + "</a>";
      if (users->second.size() > mostUsers)
        text += " and " + std::to_string(users->second.size() - mostUsers) + " more";
      text += "</p>\n";
    }
    return text + "</section>\n";
  }

  const ztservice::Service& service_;
  std::map<Name, size_t> places_;
  std::map<Name, std::vector<User>> users_;
};

}  // namespace

std::string servicePage(const ztservice::Service& service, const std::string& name) {
  return page::of(name, Manual(service).body());
}
