#include "ztclient/answers/ServiceChanges.h"

#include <algorithm>
#include <array>
#include <map>
#include <ostream>

#include "ztclient/answers/JsonWriter.h"

namespace {

using ztservice::Attribute;
using ztservice::Element;
using ztservice::Member;
using ztservice::Message;
using ztservice::Name;
using ztservice::Operation;
using ztservice::Part;
using ztservice::Port;
using ztservice::Type;
using ztservice::TypeReference;
using Kind = ServiceChange::Kind;

std::string text(std::string_view view) { return std::string(view); }
std::string text(const Name& name) {
  return name.space.empty() ? text(name.local) : '{' + text(name.space) + '}' + text(name.local);
}
std::string fromTo(const std::string& from, const std::string& to) {
  return " from " + (from.empty() ? "none" : from) + " to " + (to.empty() ? "none" : to);
}

class Comparison {
 public:
  std::vector<ServiceChange> changes;

  void services(const ztservice::Service& older, const ztservice::Service& newer) {
    named(
        older.ports(), newer.ports(), "", "port", [](const Port& port) { return text(port.name()); },
        [](const Port&) { return false; },
        [&](const std::string& where, const Port& a, const Port& b) { port(where, a, b); });
    common(older.elements(), newer.elements(), "element ",
           [&](const std::string& where, const Element& a, const Element& b) { element(where, a, b); });
    common(older.types(), newer.types(), "type ",
           [&](const std::string& where, const Type& a, const Type& b) { type(where, a, b); });
  }

 private:
  void add(const std::string& where, Kind kind, const std::string& what, bool breaks) {
    changes.push_back({where, kind, what, breaks});
  }
  template <class Value>
  void value(const std::string& where, const std::string& what, const Value& a, const Value& b, bool breaks) {
    if (a == b) return;
    add(where, Kind::changed, what + fromTo(text(a), text(b)), breaks);
  }

  // Things that have names: what is gone breaks, what is new breaks where `needed` says so. Of several with
  // one name the first is compared with the first, and so on.
  template <class List, class NameOf, class Needed, class Compare>
  void named(const List& older, const List& newer, const std::string& where, const std::string& kind,
             const NameOf& nameOf, const Needed& needed, const Compare& compare) {
    using Thing = typename List::value_type;
    std::map<std::string, std::vector<const Thing*>> left;
    for (const Thing& one : newer) left[nameOf(one)].push_back(&one);
    for (auto& [name, things] : left) std::reverse(things.begin(), things.end());
    const std::string before = where.empty() ? "" : where + ", ";
    for (const Thing& one : older) {
      std::vector<const Thing*>& same = left[nameOf(one)];
      if (same.empty()) {
        add(where, Kind::removed, kind + ' ' + nameOf(one), true);
      } else {
        compare(before + kind + ' ' + nameOf(one), one, *same.back());
        same.pop_back();
      }
    }
    for (const Thing& one : newer) {
      std::vector<const Thing*>& same = left[nameOf(one)];
      if (std::find(same.begin(), same.end(), &one) == same.end()) continue;
      const bool breaks = needed(one);
      add(where, Kind::added, kind + ' ' + nameOf(one) + (breaks ? ", required" : ""), breaks);
    }
  }

  // What both versions need; what only one of them does shows where it is named.
  template <class Thing, class Compare>
  static void common(std::span<const Thing* const> older, std::span<const Thing* const> newer,
                     const std::string& kind, const Compare& compare) {
    auto other = newer.begin();
    for (const Thing* one : older) {
      while (other != newer.end() && (*other)->name < one->name) ++other;
      if (other != newer.end() && (*other)->name == one->name) compare(kind + text(one->name), *one, **other);
    }
  }

  void port(const std::string& where, const Port& a, const Port& b) {
    value(where, "address", a.address(), b.address(), false);
    if (a.protocol() != b.protocol()) add(where, Kind::changed, "protocol", true);
    value(where, "verb", a.verb(), b.verb(), true);
    named(
        a.operations(), b.operations(), where, "operation",
        [](const Operation& one) { return text(one.name()); }, [](const Operation&) { return false; },
        [&](const std::string& at, const Operation& x, const Operation& y) { operation(at, x, y); });
  }

  void operation(const std::string& where, const Operation& a, const Operation& b) {
    value(where, "style", a.style(), b.style(), true);
    value(where, "action", a.soapAction(), b.soapAction(), true);
    value(where, "location", a.location(), b.location(), true);
    message(where, "input", a.input(), b.input(), true);
    message(where, "output", a.output(), b.output(), false);
    named(
        a.faults(), b.faults(), where, "fault", [](const ztservice::Fault& one) { return text(one.name); },
        [](const ztservice::Fault&) { return false; },
        [&](const std::string& at, const ztservice::Fault& x, const ztservice::Fault& y) {
          parts(at, x.parts, y.parts, false);
        });
  }

  void message(const std::string& where, const std::string& side, const std::optional<Message>& a,
               const std::optional<Message>& b, bool isInput) {
    if (!a && !b) return;
    if (!a || !b) {
      add(where, a ? Kind::removed : Kind::added, side, true);
      return;
    }
    const std::string at = where + ", " + side;
    value(at, "use", a->use, b->use, true);
    value(at, "namespace", a->space, b->space, true);
    value(at, "content", a->content, b->content, true);
    parts(at, a->parts, b->parts, isInput);
    std::vector<Part> headers[2];
    for (const auto& [message, out] : {std::pair{&*a, &headers[0]}, std::pair{&*b, &headers[1]}}) {
      for (const ztservice::Header& header : message->headers) {
        if (header.part) out->push_back(*header.part);
      }
    }
    parts(at, headers[0], headers[1], isInput, "header");
    std::vector<Part> attachments[2];
    for (const auto& one : a->attachments) attachments[0].push_back(one.part);
    for (const auto& one : b->attachments) attachments[1].push_back(one.part);
    parts(at, attachments[0], attachments[1], isInput, "attachment");
  }

  // What goes in must be sent; what comes out may be passed over.
  void parts(const std::string& where, const std::vector<Part>& a, const std::vector<Part>& b, bool needed,
             const std::string& kind = "part") {
    named(
        a, b, where, kind, [](const Part& one) { return text(one.name); },
        [&](const Part&) { return needed; },
        [&](const std::string& at, const Part& x, const Part& y) {
          if (x.element != y.element)
            add(at, Kind::changed, "element" + fromTo(text(x.element), text(y.element)), true);
          else if (x.type != y.type)
            add(at, Kind::changed, "type" + fromTo(text(x.type), text(y.type)), true);
        });
  }

  void element(const std::string& where, const Element& a, const Element& b) {
    reference(where, a.type, b.type);
    facts(where, a, b);
  }

  template <class Thing>
  void facts(const std::string& where, const Thing& a, const Thing& b) {
    if constexpr (requires { a.nillable; }) {
      if (a.nillable != b.nillable)
        add(where, Kind::changed, b.nillable ? "may be nil" : "may no longer be nil", a.nillable);
    }
    value(where, "default", a.defaultValue.value_or(""), b.defaultValue.value_or(""), false);
    value(where, "fixed value", a.fixedValue.value_or(""), b.fixedValue.value_or(""),
          b.fixedValue.has_value());
  }

  void reference(const std::string& where, const TypeReference& a, const TypeReference& b) {
    if (a.anonymous && b.anonymous) {
      type(where, *a.anonymous, *b.anonymous);
    } else if (a.name != b.name || a.anonymous || b.anonymous) {
      add(where, Kind::changed,
          "type" + fromTo(a.anonymous ? "one of its own" : text(a.name),
                          b.anonymous ? "one of its own" : text(b.name)),
          true);
    }
  }
  void reference(const std::string& where, const std::optional<TypeReference>& a,
                 const std::optional<TypeReference>& b) {
    if (a && b) return reference(where, *a, *b);
    if (a || b) add(where, b ? Kind::added : Kind::removed, "content", true);
  }

  void type(const std::string& where, const Type& a, const Type& b) {
    const auto isSimple = [](const Type& one) {
      return one.kind != Type::Kind::complex && one.kind != Type::Kind::array;
    };
    if (a.error.empty() != b.error.empty()) {
      add(where, Kind::changed, b.error.empty() ? "can be resolved" : "can no longer be resolved",
          !b.error.empty());
      return;
    }
    if (isSimple(a) != isSimple(b) || (!isSimple(a) && a.kind != b.kind)) {
      add(where, Kind::changed, "kind", true);
      return;
    }
    if (isSimple(a)) {
      simple(where, a, b);
      return;
    }
    if (a.isAbstract != b.isAbstract)
      add(where, Kind::changed, b.isAbstract ? "abstract" : "no longer abstract", b.isAbstract);
    value(where, "item name", a.itemName, b.itemName, true);
    reference(where + ", item", a.item, b.item);
    reference(where + ", text", a.content, b.content);
    named(
        a.members, b.members, where, "member",
        [](const Member& one) { return one.any ? "of " + text(one.any->space) : text(one.name); },
        [](const Member& one) { return one.min > 0 && one.choice.empty() && !one.any; },
        [&](const std::string& at, const Member& x, const Member& y) { member(at, x, y); });
    named(
        a.attributes, b.attributes, where, "attribute", [](const Attribute& one) { return text(one.name); },
        [](const Attribute& one) { return one.required; },
        [&](const std::string& at, const Attribute& x, const Attribute& y) {
          if (x.required != y.required)
            add(at, Kind::changed, y.required ? "required" : "no longer required", y.required);
          reference(at, x.type, y.type);
          facts(at, x, y);
        });
  }

  void member(const std::string& where, const Member& a, const Member& b) {
    const auto bound = [](uint64_t max) { return max == Member::unbounded ? "many" : std::to_string(max); };
    if (a.min != b.min)
      add(where, Kind::changed, "least" + fromTo(bound(a.min), bound(b.min)), b.min > a.min);
    if (a.max != b.max) add(where, Kind::changed, "most" + fromTo(bound(a.max), bound(b.max)), b.max < a.max);
    if (a.choice.empty() != b.choice.empty())
      add(where, Kind::changed, b.choice.empty() ? "no longer in a choice" : "in a choice", true);
    reference(where, a.type, b.type);
    facts(where, a, b);
  }

  void simple(const std::string& where, const Type& a, const Type& b) {
    value(where, "primitive type", a.primitive, b.primitive, true);
    if (a.variety != b.variety) add(where, Kind::changed, "variety", true);
    reference(where + ", item", a.item, b.item);
    listed(
        where, "value", a.values, b.values, [](std::string_view one) { return text(one); }, false);
    listed(
        where, "limit", a.facets, b.facets,
        [](const ztservice::Facet& one) { return text(one.name) + ' ' + text(one.value); }, true);
    listed(
        where, "alternative", a.memberTypes, b.memberTypes,
        [](const TypeReference& one) { return text(one.name); }, false);
  }

  // A value that is gone can no longer be sent, a limit that is new no longer be passed.
  template <class List, class TextOf>
  void listed(const std::string& where, const std::string& kind, const List& a, const List& b,
              const TextOf& textOf, bool addingBreaks) {
    const auto texts = [&](const List& list) {
      std::vector<std::string> out;
      for (const auto& one : list) out.push_back(textOf(one));
      std::sort(out.begin(), out.end());
      return out;
    };
    const std::vector<std::string> older = texts(a);
    const std::vector<std::string> newer = texts(b);
    const bool opened = newer.empty() && !addingBreaks;
    const bool closed = older.empty() && !addingBreaks;
    for (const std::string& one : older) {
      if (!std::binary_search(newer.begin(), newer.end(), one))
        add(where, Kind::removed, kind + ' ' + one, !addingBreaks && !opened);
    }
    for (const std::string& one : newer) {
      if (!std::binary_search(older.begin(), older.end(), one))
        add(where, Kind::added, kind + ' ' + one, addingBreaks || closed);
    }
  }
};

constexpr std::array<const char*, 3> kindNames = {"added", "removed", "changed"};

}  // namespace

std::vector<ServiceChange> changesOf(const ztservice::Service& older, const ztservice::Service& newer) {
  Comparison comparison;
  comparison.services(older, newer);
  return std::move(comparison.changes);
}

void writeChangesJson(const std::vector<ServiceChange>& changes, std::ostream& out) {
  {
    JsonWriter json(out);
    json.beginObject();
    json.flag("breaks", std::any_of(changes.begin(), changes.end(),
                                    [](const ServiceChange& one) { return one.breaks; }));
    json.key("changes");
    json.beginArray();
    for (const ServiceChange& one : changes) {
      json.beginObject();
      json.text("where", one.where);
      json.text("change", kindNames[static_cast<size_t>(one.kind)]);
      json.text("what", one.what);
      json.flag("breaks", one.breaks);
      json.endObject();
    }
    json.endArray();
    json.endObject();
  }
  out << '\n';
}

void writeChangesText(const std::vector<ServiceChange>& changes, std::ostream& out) {
  for (const ServiceChange& one : changes) {
    out << (one.breaks ? "breaks callers: " : "harmless: ") << one.where << (one.where.empty() ? "" : ": ")
        << kindNames[static_cast<size_t>(one.kind)] << ' ' << one.what << '\n';
  }
}
