#include "ztclient/answers/ServiceText.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <set>
#include <span>
#include <string>

#include "ztclient/terminal/Terminal.h"

namespace {

using ztservice::Attribute;
using ztservice::Member;
using ztservice::Message;
using ztservice::Name;
using ztservice::Operation;
using ztservice::Part;
using ztservice::Port;
using ztservice::Type;
using ztservice::TypeReference;

// Forms that are deeper are no longer read.
constexpr size_t deepest = 40;
// Of the values of an enumeration.
constexpr size_t mostValues = 12;

std::string text(std::string_view view) { return std::string(view); }

std::string boundsOf(const Member& member) {
  const std::string min = std::to_string(member.min);
  if (member.max == Member::unbounded) return min + " to many";
  if (member.max != 1)
    return member.max == member.min ? min + " times" : min + " to " + std::to_string(member.max);
  return member.min == 0 ? "" : member.choice.empty() ? "required" : "";
}

std::string factsOf(const std::optional<std::string_view>& defaultValue,
                    const std::optional<std::string_view>& fixedValue) {
  std::string out;
  if (defaultValue) out += ", \"" + text(*defaultValue) + "\" by default";
  if (fixedValue) out += ", always \"" + text(*fixedValue) + '"';
  return out;
}

class Form {
 public:
  Form(const ztservice::Service& service, std::ostream& out) : service_(service), out_(out) {}

  void port(const Port& port) {
    out_ << "  port " << port.name() << " at " << (port.address().empty() ? "no address" : port.address())
         << " (" << protocolName(port.protocol());
    if (!port.verb().empty()) out_ << ' ' << port.verb();
    out_ << ")\n";
    error(4, port.error());
    for (const Operation& one : port.operations()) operation(one);
  }

 private:
  std::ostream& line(size_t margin) { return out_ << std::string(margin, ' '); }
  void error(size_t margin, std::string_view what) {
    if (!what.empty()) line(margin) << terminal::alarm("cannot be resolved: " + text(what)) << '\n';
  }

  void operation(const Operation& operation) {
    opened_.clear();
    line(4) << "operation " << terminal::Heading{text(operation.name())};
    if (!operation.style().empty()) out_ << ", " << operation.style();
    if (!operation.soapAction().empty()) out_ << ", action " << operation.soapAction();
    if (!operation.location().empty()) out_ << " at " << operation.location();
    out_ << '\n';
    error(6, operation.error());
    if (operation.input()) message("in", *operation.input());
    if (operation.output()) message("out", *operation.output());
    for (const ztservice::Fault& fault : operation.faults()) {
      line(6) << "fault " << fault.name << '\n';
      error(8, fault.error);
      for (const Part& one : fault.parts) part("", one);
    }
  }

  void message(const char* direction, const Message& message) {
    line(6) << direction << ' ' << message.name;
    if (!message.use.empty() && message.use != "literal") out_ << ", " << message.use;
    if (!message.space.empty()) out_ << ", in " << message.space;
    if (!message.content.empty()) out_ << ", as " << message.content;
    out_ << '\n';
    error(8, message.error);
    for (const ztservice::Header& header : message.headers) {
      if (header.part) part("header ", *header.part);
      error(8, header.error);
    }
    for (const Part& one : message.parts) part("", one);
    for (const ztservice::Attachment& one : message.attachments) {
      std::string types;
      for (const std::string_view type : one.mediaTypes) types += (types.empty() ? " " : " or ") + text(type);
      part("attachment" + types + ' ', one.part);
    }
  }

  void part(const std::string& before, const Part& part) {
    line(8) << before << part.name << ": ";
    if (part.element.empty()) {
      reference(10, {part.type});
    } else {
      out_ << "element " << part.element.local << " in " << part.element.space;
      const ztservice::Element* element = service_.element(part.element);
      if (element && element->error.empty()) {
        out_ << ", ";
        reference(10, element->type);
        substitutes(10, *element);
      } else {
        out_ << '\n';
      }
    }
    error(10, part.error);
  }

  void substitutes(size_t margin, const ztservice::Element& element) {
    if (element.substitutes.empty()) return;
    line(margin) << (element.isAbstract ? "one of" : "or one of");
    const char* between = " ";
    for (const Name& name : element.substitutes) {
      out_ << between << name.local;
      between = ", ";
    }
    out_ << '\n';
  }

  const Type* typeOf(const TypeReference& reference) const {
    return reference.anonymous      ? reference.anonymous
           : reference.name.empty() ? nullptr
                                    : service_.type(reference.name);
  }

  // Ends the line with the type, and opens the type below it. \param facts what else there is to say of it.
  void reference(size_t margin, const TypeReference& reference, const std::string& facts = {}) {
    const Type* type = typeOf(reference);
    if (!reference.name.empty()) {
      out_ << reference.name.local;
    } else if (type && type->kind == Type::Kind::complex) {
      out_ << "fields";
    }
    if (!type) {
      out_ << facts << '\n';
      return;
    }
    out_ << limits(*type) << facts;
    const bool opens = type->kind == Type::Kind::complex || type->kind == Type::Kind::array;
    if (!opens || !type->error.empty() || isAnything(*type)) {
      out_ << '\n';
      error(margin, type->error);
      return;
    }
    if (!opened_.insert(type).second) {
      out_ << " (as above)\n";
    } else if (margin > 2 * deepest) {
      out_ << " (too deep to be shown)\n";
    } else {
      open(margin, *type);
    }
  }

  static bool isAnything(const Type& type) { return type.file.empty() && type.kind == Type::Kind::complex; }

  // "(string, maxLength 20, one of "a", "b")" of a simple type; nothing of a built-in one.
  std::string limits(const Type& type) const {
    if (type.kind != Type::Kind::simple && type.kind != Type::Kind::enumeration) return {};
    std::string out = type.variety == Type::Variety::atomic ? text(type.primitive)
                      : type.variety == Type::Variety::list ? "list of " + shortName(*type.item)
                                                            : "one of several types";
    for (const TypeReference& one : type.memberTypes) out += ' ' + shortName(one);
    const Type* at = &type;
    for (size_t steps = 0; at && steps < deepest; ++steps) {
      for (const ztservice::Facet& facet : at->facets)
        out += ", " + text(facet.name) + ' ' + text(facet.value);
      at = at->anonymousBase ? at->anonymousBase : at->base.empty() ? nullptr : service_.type(at->base);
    }
    for (size_t i = 0; i < type.values.size() && i < mostValues; ++i)
      out += (i == 0 ? ": \"" : "\", \"") + text(type.values[i]);
    if (!type.values.empty()) out += '"';
    if (type.values.size() > mostValues)
      out += " and " + std::to_string(type.values.size() - mostValues) + " more";
    return type.name.empty() ? out : " (" + out + ')';
  }

  static std::string shortName(const TypeReference& reference) {
    return reference.anonymous ? "a type of its own" : text(reference.name.local);
  }

  void open(size_t margin, const Type& type) {
    if (type.kind == Type::Kind::array) {
      out_ << ", array " << type.dimensions << '\n';
      line(margin) << type.itemName << ": ";
      reference(margin + 2, *type.item, ", 0 to many");
      return;
    }
    out_ << '\n';
    if (type.isAbstract) {
      line(margin) << "one of";
      for (const Name& name : type.derived) out_ << ' ' << name.local;
      out_ << " by xsi:type\n";
    }
    if (type.content) {
      line(margin) << "text: ";
      reference(margin + 2, *type.content);
    }
    if (type.mixed) line(margin) << "text between the fields\n";
    for (const Attribute& one : type.attributes) attribute(margin, one);
    members(margin, type.members);
  }

  // "1.2/3.1" is the first alternative of choice 3, which stands in the second one of choice 1.
  static std::vector<std::string_view> alternativesOf(std::string_view choice) {
    std::vector<std::string_view> out;
    while (!choice.empty()) {
      out.push_back(choice.substr(0, choice.find('/')));
      choice.remove_prefix(std::min(out.back().size() + 1, choice.size()));
    }
    return out;
  }

  static std::string_view choiceOf(std::string_view alternative) {
    return alternative.substr(0, alternative.find('.'));
  }

  // Whether a choice begins at a level, where two members stand in the same alternatives above `same`.
  static bool isNewChoice(const std::vector<std::string_view>& path,
                          const std::vector<std::string_view>& before, size_t same, size_t level) {
    return level > same || level >= before.size() || choiceOf(path[level]) != choiceOf(before[level]);
  }

  // Whether what repeats is a choice with all in it, and not one alternative only.
  static bool repeatsChoice(std::span<const Member> members, size_t level) {
    const unsigned group = members.front().group;
    const std::string choice(choiceOf(alternativesOf(members.front().choice)[level]));
    for (const Member& one : members) {
      const auto path = alternativesOf(one.choice);
      if (path.size() <= level || choiceOf(path[level]) != choice) return true;
      if (one.group != group) return false;
    }
    return true;
  }

  void members(size_t margin, const std::vector<Member>& members) {
    std::vector<std::string_view> before;
    unsigned group = 0;
    bool isInside = false;  // the group stands in one alternative
    for (size_t i = 0; i < members.size(); ++i) {
      const Member& one = members[i];
      const auto path = alternativesOf(one.choice);
      size_t same = 0;
      while (same < std::min(path.size(), before.size()) && path[same] == before[same]) ++same;
      const bool opensGroup = one.group != group && one.group > 0;
      if (opensGroup) {
        isInside = same < path.size() && (!isNewChoice(path, before, same, same) ||
                                          !repeatsChoice(std::span(members).subspan(i), same));
      }
      if (opensGroup && !isInside) line(margin + 2 * same) << "again and again:\n";
      const size_t left = margin + (one.group > 0 && !isInside ? 2 : 0);
      std::string mark = openChoices(left, path, before, same);
      size_t at = left + 2 * path.size() - (mark.empty() ? 0 : 2);
      if (opensGroup && isInside) {
        line(at) << mark << "again and again:\n";
        at += mark.size();
        mark.clear();
      }
      member(at + (one.group > 0 && isInside ? 2 : 0), mark, one);
      before = path;
      group = one.group;
    }
  }

  // Says where choices begin; what stands before the first line of a new alternative.
  std::string openChoices(size_t margin, const std::vector<std::string_view>& path,
                          const std::vector<std::string_view>& before, size_t same) {
    std::string mark;
    for (size_t level = same; level < path.size(); ++level) {
      if (isNewChoice(path, before, same, level))
        line(margin + 2 * level - mark.size()) << mark << "one of:\n";
      mark = "- ";
    }
    return mark;
  }

  void attribute(size_t margin, const Attribute& attribute) {
    line(margin) << '@' << attribute.name.local;
    if (!attribute.error.empty()) {
      out_ << '\n';
      error(margin + 2, attribute.error);
      return;
    }
    out_ << ": ";
    reference(
        margin + 2, attribute.type,
        (attribute.required ? ", required" : "") + factsOf(attribute.defaultValue, attribute.fixedValue));
  }

  void member(size_t margin, const std::string& mark, const Member& member) {
    const size_t below = margin + mark.size() + 2;
    if (!member.error.empty()) {
      line(margin) << mark << member.name.local << '\n';
      error(below, member.error);
      return;
    }
    const std::string bounds = boundsOf(member);
    const std::string facts = (bounds.empty() ? bounds : ", " + bounds) +
                              (member.nillable ? ", may be nil" : "") +
                              factsOf(member.defaultValue, member.fixedValue);
    line(margin) << mark;
    if (member.any) {
      out_ << "anything of " << member.any->space << facts << '\n';
      return;
    }
    out_ << member.name.local << ": ";
    const ztservice::Element* element = member.isReference ? service_.element(member.name) : nullptr;
    if (!element) {
      reference(below, member.type, facts);
      return;
    }
    reference(below, element->type, facts);
    substitutes(below, *element);
  }

  const ztservice::Service& service_;
  std::ostream& out_;
  std::set<const Type*> opened_;
};

}  // namespace

void writeServiceText(const ztservice::Service& service, std::ostream& out) {
  out << "target namespace " << service.targetNamespace() << '\n';
  Form form(service, out);
  for (const ztservice::PortGroup& group : service.services()) {
    out << "service " << terminal::Heading{text(group.name().local)} << '\n';
    for (const Port& port : group.ports()) form.port(port);
  }
}

size_t countUnresolved(const ztservice::Service& service) {
  size_t count = 0;
  const auto see = [&](std::string_view error) { count += !error.empty(); };
  const auto seeParts = [&](const std::vector<Part>& parts) {
    for (const Part& part : parts) see(part.error);
  };
  for (const Port& port : service.ports()) {
    see(port.error());
    for (const Operation& operation : port.operations()) {
      see(operation.error());
      for (const auto* message : {&operation.input(), &operation.output()}) {
        if (!*message) continue;
        see((*message)->error);
        seeParts((*message)->parts);
        for (const ztservice::Header& header : (*message)->headers) see(header.error);
      }
      for (const ztservice::Fault& fault : operation.faults()) {
        see(fault.error);
        seeParts(fault.parts);
      }
    }
  }
  for (const ztservice::Element* element : service.elements()) see(element->error);
  for (const Type* type : service.types()) {
    see(type->error);
    for (const Member& member : type->members) see(member.error);
    for (const Attribute& attribute : type->attributes) see(attribute.error);
  }
  return count;
}

const char* protocolName(ztservice::Protocol protocol) noexcept {
  static constexpr std::array<const char*, 4> names = {"SOAP 1.1", "SOAP 1.2", "HTTP", "another protocol"};
  return names[static_cast<size_t>(protocol)];
}
