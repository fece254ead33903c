#include "ztservice/call/Template.h"

#include <algorithm>
#include <map>
#include <set>

#include "ztservice/call/Lexical.h"
#include "ztservice/call/MessageWriter.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

// Inside each other; a request may be as deep.
constexpr size_t deepest = 190;
constexpr uint64_t mostCopies = 100;

std::string quoted(std::string_view text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\')
      out += {'\\', c};
    else if (byte < 0x20)
      out += std::string("\\u00") + digits[byte >> 4] + digits[byte & 15];
    else
      out += c;
  }
  return out + '"';
}

// A comment ends with its line.
std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  return text;
}

std::string occurrence(uint64_t min, uint64_t max) {
  if (max == 1) return min == 0 ? "optional" : "";
  if (max == Member::unbounded) return min == 0 ? "any number" : std::to_string(min) + " or more";
  return min == max ? std::to_string(min) : std::to_string(min) + " to " + std::to_string(max);
}

class TemplateWriter {
 public:
  TemplateWriter(const Service& service, const TemplateOptions& options)
      : service_(service), simple_(service), options_(options) {}

  std::string write(const Port& port, const Operation& operation) {
    comment(std::string(operation.name()) + " of " + std::string(port.name()));
    line("{");
    ++depth_;
    if (const auto& content = options_.isAnswer ? operation.output() : operation.input()) {
      if (port.protocol() != Protocol::http) {
        headers(*content);
        attachments(*content);
      }
      message(*content, operation.style() == "document" && port.protocol() != Protocol::http);
    }
    --depth_;
    line("}");
    std::string text;
    for (const Line& one : lines_) {
      text.append(2 * one.depth, ' ').append(one.text);
      if (!one.comment.empty()) text.append(one.text.empty() ? "// " : "  // ").append(one.comment);
      text += '\n';
    }
    return text;
  }

 private:
  struct Line {
    size_t depth;
    std::string text;
    std::string comment;
  };

  void line(std::string text, std::string comment = {}) {
    if (lines_.size() >= options_.lines)
      throw Error({}, "the template would have more than " + std::to_string(options_.lines) + " lines");
    lines_.push_back({depth_, std::move(text), onOneLine(std::move(comment))});
  }
  void comment(std::string text) { line({}, std::move(text)); }
  // Before one more member or item: a comma behind the last one of those that are open.
  void next(bool& isFirst) {
    if (!isFirst) {
      auto last =
          std::find_if(lines_.rbegin(), lines_.rend(), [](const Line& one) { return !one.text.empty(); });
      last->text += ',';
    }
    isFirst = false;
  }

  void headers(const Message& message) {
    if (!options_.isFull || message.headers.empty()) return;
    next(isFirstMember_);
    line("\"$headers\": {");
    ++depth_;
    bool isFirst = true;
    for (const Header& header : message.headers) {
      if (!header.part || !header.error.empty()) continue;
      next(isFirst);
      part(*header.part, header.part->element.empty() ? header.part->name : header.part->element.local);
    }
    --depth_;
    line("}");
  }

  void attachments(const Message& message) {
    if (options_.isAnswer || message.attachments.empty()) return;
    next(isFirstMember_);
    line("\"$attachments\": {", "each a text, or {\"$file\": \"NAME\"}");
    ++depth_;
    bool isFirst = true;
    for (const Attachment& one : message.attachments) {
      next(isFirst);
      std::string types;
      for (const std::string_view type : one.mediaTypes)
        types.append(types.empty() ? "" : " or ").append(type);
      part(one.part, one.part.name, types);
    }
    --depth_;
    line("}");
  }

  void message(const Message& message, bool isDocument) {
    if (isDocument && message.parts.size() == 1) {
      const Part& part = message.parts[0];
      const Element* element = part.element.empty() ? nullptr : service_.element(part.element);
      const TypeReference reference = element ? element->type : TypeReference{part.type};
      const Type* type = simple_.typeOf(reference);
      if (!type) return;
      if (SimpleValues::isSimple(*type)) {
        next(isFirstMember_);
        line("\"$\": " + json(*type, sampleOf(*type)), describe(reference, *type));
      } else {
        wholeMembers(*type, isFirstMember_);
      }
      return;
    }
    for (const Part& one : message.parts) {
      next(isFirstMember_);
      part(one, one.name);
    }
  }

  void part(const Part& part, std::string_view key, const std::string& about = {}) {
    const Element* element = part.element.empty() ? nullptr : service_.element(part.element);
    Declared what;
    if (element)
      what = Declared::of(*element);
    else
      what.type = TypeReference{part.type};
    value(quoted(key) + ": ", what, about);
  }

  // A value behind its key.
  void value(const std::string& key, const Declared& what, const std::string& occurrence) {
    const Type* type = simple_.typeOf(what.type);
    std::string about = type ? describe(what.type, *type) : "unknown type";
    if (!occurrence.empty()) about += ", " + occurrence;
    if (what.nillable) about += ", may be null";
    if (what.fixedValue) about += ", fixed";
    if (what.defaultValue) about += ", default " + std::string(*what.defaultValue);
    if (!type || SimpleValues::isSimple(*type)) {
      const std::optional<std::string_view> given = what.fixedValue ? what.fixedValue : what.defaultValue;
      const std::string text = given ? std::string(*given) : type ? sampleOf(*type) : "text";
      line(key + (type ? json(*type, text) : quoted(text)), about);
      return;
    }
    if (type->kind == Type::Kind::array) {
      array(key, *type, *type->item, type->dimensions, about);
      return;
    }
    if (schema::isAnyType(*type)) {
      line(key + "\"text\"", about);
      return;
    }
    if (open_.contains(type) || depth_ > deepest) {
      line(key + "{}", about + ", as above");
      return;
    }
    line(key + '{', about);
    object(*type);
  }

  void object(const Type& type) {
    ++depth_;
    bool isFirst = true;
    wholeMembers(type, isFirst);
    --depth_;
    line("}");
  }

  // Of an abstract type those of the first that stands in for it.
  void wholeMembers(const Type& type, bool& isFirst) {
    const Type* whole = &type;
    if (type.isAbstract) {
      if (const Type* other = standIn(type)) {
        whole = other;
        next(isFirst);
        line("\"$type\": " + quoted(whole->name.local), "of " + std::to_string(type.derived.size()) +
                                                            " that stand in for " +
                                                            std::string(type.name.local));
      }
    }
    members(*whole, isFirst);
  }

  const Type* standIn(const Type& type) {
    for (const Name& name : type.derived) {
      const Type* one = service_.type(name);
      if (one && !one->isAbstract) return one;
    }
    return nullptr;
  }

  void array(const std::string& key, const Type& type, const TypeReference& item, std::string_view dimensions,
             const std::string& about) {
    const size_t last = dimensions.rfind('[');
    const std::string_view outer = last == std::string_view::npos ? "" : dimensions.substr(0, last);
    const auto commas =
        last == std::string_view::npos
            ? 0
            : std::count(dimensions.begin() + static_cast<ptrdiff_t>(last), dimensions.end(), ',');
    if (depth_ > deepest || open_.contains(&type)) {
      line(key + "[]", about);
      return;
    }
    open_.insert(&type);
    for (ptrdiff_t i = 0; i <= commas; ++i) {
      line((i == 0 ? key : std::string()) + '[', i == 0 ? about : "");
      ++depth_;
    }
    open_.erase(&type);
    if (!outer.empty()) {
      array("", type, item, outer, "");
    } else {
      open_.insert(&type);
      Declared what;
      what.type = item;
      value("", what, "");
      open_.erase(&type);
    }
    for (ptrdiff_t i = 0; i <= commas; ++i) {
      --depth_;
      line("]");
    }
  }

  // All that is inside an object of a type.
  void members(const Type& type, bool& isFirst) {
    if (!open_.insert(&type).second) return;
    attributes(type, isFirst);
    if (type.content) {
      const Type* content = simple_.typeOf(*type.content);
      next(isFirst);
      line("\"$\": " + (content ? json(*content, sampleOf(*content)) : quoted("text")),
           content ? describe(*type.content, *content) : "text");
    } else if (type.mixed && options_.isFull) {
      next(isFirst);
      line("\"$\": \"text\"", "text between the elements, or a list of texts and elements in their order");
    }
    const std::set<const Member*> chosen = choose(type);
    std::map<std::string_view, std::vector<const Member*>> byName;
    for (const Member& one : type.members) {
      if (!one.any && chosen.contains(&one)) byName[one.name.local].push_back(&one);
    }
    for (const Member& one : type.members) {
      if (one.any)
        wildcard(one, isFirst);
      else if (!chosen.contains(&one))
        leftOut(one);
      else if (const auto& all = byName[one.name.local]; all.front() == &one)
        member(all, isFirst);
    }
    if (type.anyAttribute && options_.isFull)
      comment("\"@NAME\" or \"@{NAMESPACE}NAME\": any other attribute");
    open_.erase(&type);
  }

  void attributes(const Type& type, bool& isFirst) {
    for (const Attribute& attribute : type.attributes) {
      if (!attribute.required && !options_.isFull) continue;
      if (!attribute.required && attribute.name.space == schema::xmlNamespace) continue;
      const Type* of = simple_.typeOf(attribute.type);
      const auto given = attribute.fixedValue ? attribute.fixedValue : attribute.defaultValue;
      const std::string text = given ? std::string(*given) : of ? sampleOf(*of) : "text";
      std::string about = of ? describe(attribute.type, *of) : "unknown type";
      if (!attribute.required) about += ", optional";
      if (attribute.fixedValue) about += ", fixed";
      if (attribute.defaultValue) about += ", default " + std::string(*attribute.defaultValue);
      next(isFirst);
      line(quoted('@' + std::string(attribute.name.local)) + ": " + (of ? json(*of, text) : quoted(text)),
           about);
    }
  }

  // The members that are written: of each choice those of the first alternative that ends.
  std::set<const Member*> choose(const Type& type) {
    std::map<unsigned, std::map<unsigned, bool>> endless;  // choice, alternative
    const auto stepsOf = [](const Member& one) { return Content::stepsOf(one.choice); };
    for (const Member& one : type.members) {
      for (const auto& [choice, alternative] : stepsOf(one)) {
        bool& isEndless = endless[choice][alternative];
        isEndless = isEndless || (one.min > 0 && !one.any && isOpen(one)) || (one.any && one.min > 0);
      }
    }
    std::map<unsigned, unsigned> taken;
    for (const auto& [choice, alternatives] : endless) {
      const auto first =
          std::find_if(alternatives.begin(), alternatives.end(), [](const auto& one) { return !one.second; });
      taken[choice] = first == alternatives.end() ? alternatives.begin()->first : first->first;
    }
    std::set<const Member*> chosen;
    for (const Member& one : type.members) {
      const auto steps = stepsOf(one);
      const bool isTaken = std::all_of(steps.begin(), steps.end(),
                                       [&](const auto& step) { return taken[step.first] == step.second; });
      const bool isWanted = one.min > 0 || (options_.isFull && one.error.empty() && !isOpen(one));
      if (isTaken && isWanted) chosen.insert(&one);
    }
    return chosen;
  }

  // Of what is abstract the first that stands in for it.
  Declared declared(const Member& member) {
    const Declared what = Declared::of(member, service_);
    if (!what.isAbstract) return what;
    for (const Name& name : what.substitutes) {
      const Element* standIn = service_.element(name);
      if (standIn && !standIn->isAbstract) return Declared::of(*standIn);
    }
    return what;
  }

  // Whether it is of a type that it stands in already.
  bool isOpen(const Member& member) {
    const Type* type = simple_.typeOf(declared(member).type);
    if (!type) return false;
    if (open_.contains(type) || depth_ > deepest) return true;
    const Type* other = type->isAbstract ? standIn(*type) : nullptr;
    return other && open_.contains(other);
  }

  // All members of one name.
  void member(const std::vector<const Member*>& all, bool& isFirst) {
    uint64_t count = 0, max = 0, min = 0;
    for (const Member* one : all) {
      count += std::min(mostCopies, std::max<uint64_t>(one->min, 1));
      min += one->min;
      max = one->max > Member::unbounded - max ? Member::unbounded : max + one->max;
    }
    const Member& first = *all.front();
    const Declared what = declared(first);
    next(isFirst);
    const std::string key = quoted(what.name.local) + ": ";
    if (max == 1) {
      value(key, what, occurrence(min, max));
      return;
    }
    line(key + '[', occurrence(min, max));
    ++depth_;
    bool isFirstItem = true;
    for (uint64_t i = 0; i < count; ++i) {
      next(isFirstItem);
      value("", what, "");
    }
    --depth_;
    line("]");
  }

  void wildcard(const Member& member, bool& isFirst) {
    const std::string about =
        "XML of " + std::string(member.any->space) + ", " + occurrence(member.min, member.max);
    if (member.min == 0) {
      if (options_.isFull) comment("\"$any\": \"<x:any xmlns:x='urn:example'/>\"  // " + about);
      return;
    }
    next(isFirst);
    line("\"$any\": \"<x:any xmlns:x='urn:example'/>\"", about);
  }

  // What stands there instead, or would have no end.
  void leftOut(const Member& member) {
    if (!options_.isFull) return;
    const Type* type = simple_.typeOf(declared(member).type);
    const std::string name = type ? describe(member.type, *type)
                                  : std::string(member.error.empty() ? "unknown type" : member.error);
    const std::string count = occurrence(member.min, member.max);
    comment(quoted(member.name.local) + (member.choice.empty() ? ": " : " (another choice): ") + name +
            (count.empty() ? "" : ", " + count));
  }

  // No two IDs of a document are alike.
  std::string sampleOf(const Type& type) {
    const std::string text = simple_.sampleOf(type);
    if (type.name.local != "ID" || ++ids_ == 1) return text;
    return text + std::to_string(ids_);
  }

  std::string json(const Type& type, const std::string& text) {
    if (type.variety != Type::Variety::atomic) return quoted(text);
    const bool isNumber =
        type.primitive == "decimal" || type.primitive == "double" || type.primitive == "float";
    if (isNumber && lexical::isJsonNumber(text)) return text;
    if (type.primitive == "boolean" && (text == "true" || text == "false")) return text;
    return quoted(text);
  }

  std::string describe(const TypeReference& reference, const Type& type) {
    std::string text(type.name.empty() ? reference.name.local : type.name.local);
    if (text.empty()) text = type.primitive.empty() ? "an object" : std::string(type.primitive);
    if (type.kind == Type::Kind::array && type.item) text += " of " + std::string(type.item->name.local);
    constexpr size_t mostValues = 12;
    for (size_t i = 0; i < std::min(type.values.size(), mostValues); ++i)
      text.append(i ? " | " : ": ").append(type.values[i]);
    if (type.values.size() > mostValues) text += " | …";
    for (const Facet& facet : type.facets) {
      if (facet.name != "whiteSpace") text.append(", ").append(facet.name).append(" ").append(facet.value);
    }
    return text;
  }

  const Service& service_;
  SimpleValues simple_;
  const TemplateOptions& options_;
  std::vector<Line> lines_;
  std::set<const Type*> open_;
  size_t depth_ = 0;
  size_t ids_ = 0;
  bool isFirstMember_ = true;
};

}  // namespace

std::string makeTemplate(const Service& service, const Port& port, const Operation& operation,
                         const TemplateOptions& options) {
  if (!operation.error().empty()) throw Error({}, operation.error());
  return TemplateWriter(service, options).write(port, operation);
}

}  // namespace ztservice::call
