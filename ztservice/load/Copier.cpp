#include "ztservice/load/Copier.h"

#include <string_view>
#include <vector>

#include "ztservice/Error.h"
#include "ztservice/load/Escape.h"
#include "ztservice/load/Expat.h"

namespace ztservice::parse {

namespace {

bool isDeclaration(std::string_view name) { return name == "xmlns" || name.starts_with("xmlns:"); }

class Copier {
 public:
  explicit Copier(const CopyPlan& plan) : plan_(plan), expat_(XML_ParserCreate(nullptr)) {
    XML_SetUserData(expat_.get(), this);
    XML_SetElementHandler(expat_.get(), &onStart, &onEnd);
    XML_SetCharacterDataHandler(expat_.get(), &onText);
    XML_SetCommentHandler(expat_.get(), &onComment);
  }

  std::string copy() {
    if (!expat_.feed(*plan_.bytes)) throw Error({}, expat_.fault());
    return std::move(out_);
  }

 private:
  using Declarations = std::map<std::string, std::string>;
  struct Open {
    CopyPlan::Position position;
    // Those of this element, for what is copied below.
    Declarations declarations;
    bool unwrapped = false;
  };

  static Copier& self(void* data) { return *static_cast<Copier*>(data); }

  static void XMLCALL onStart(void* data, const char* name, const char** attributes) {
    self(data).expat_.guarded([&] { self(data).start(name, attributes); });
  }
  static void XMLCALL onEnd(void* data, const char* name) {
    self(data).expat_.guarded([&] { self(data).end(name); });
  }
  static void XMLCALL onText(void* data, const char* text, int length) {
    self(data).expat_.guarded([&] {
      if (self(data).copies()) appendEscaped(self(data).out_, {text, static_cast<size_t>(length)}, false);
    });
  }
  static void XMLCALL onComment(void* data, const char* text) {
    self(data).expat_.guarded([&] {
      if (self(data).copies()) self(data).out_ += "<!--" + std::string(text) + "-->";
    });
  }

  bool copies() const { return copying_ && dropped_ == 0; }

  void start(const char* name, const char** attributes) {
    const CopyPlan::Position position{expat_.line(), expat_.column()};
    const auto action = plan_.actions.find(position);
    if (dropped_ > 0 || (action != plan_.actions.end() && action->second == CopyAction::drop)) {
      ++dropped_;
      return;
    }
    const bool begins = !copying_ && position == plan_.begin;
    if (begins) begin_ = open_.size();
    copying_ = copying_ || begins;
    const bool isTop = copying_ && open_.size() == begin_ + (plan_.childrenOnly ? 1 : 0);
    const bool isHidden = begins && plan_.childrenOnly;
    const bool unwraps = action != plan_.actions.end() && action->second == CopyAction::unwrap;
    open_.push_back({position, {}, unwraps});
    // What is inside the copy has its declarations with it.
    if (!copying_ || isHidden || isTop) noteDeclarations(attributes);
    if (!copying_ || isHidden || unwraps) return;
    out_ += '<';
    out_ += name;
    const bool unlocates = action != plan_.actions.end();
    const auto changed = plan_.changes.find(position);
    const bool takes = isTop && plan_.targetNamespace;
    for (; *attributes; attributes += 2) {
      const std::string_view key = attributes[0];
      if (isTop && plan_.addsDeclarations && isDeclaration(key)) continue;
      if ((unlocates && key == "schemaLocation") || (takes && key == "targetNamespace")) continue;
      const std::string* value = changed == plan_.changes.end() ? nullptr : newValue(changed->second, key);
      attribute(key, value ? *value : attributes[1]);
    }
    if (begins) {
      for (const auto& [key, uri] : plan_.declarations) attribute(key, uri);
    }
    if (takes) attribute("targetNamespace", *plan_.targetNamespace);
    if (isTop && plan_.addsDeclarations) addDeclarations();
    out_ += '>';
    if (begins) out_ += plan_.behindStart;
  }

  void noteDeclarations(const char** attributes) {
    for (; *attributes; attributes += 2) {
      if (isDeclaration(attributes[0])) open_.back().declarations[attributes[0]] = attributes[1];
    }
  }

  void addDeclarations() {
    // Where nothing is said of names without prefix, they belong to none, or to what was taken on.
    Declarations all{{"xmlns", plan_.targetNamespace.value_or("")}};
    for (const Open& one : open_) {
      for (const auto& [key, uri] : one.declarations) all[key] = uri;
    }
    for (const auto& [key, uri] : all) attribute(key, uri);
  }

  static const std::string* newValue(const std::map<std::string, std::string, std::less<>>& changes,
                                     std::string_view key) {
    const auto found = changes.find(key);
    return found == changes.end() ? nullptr : &found->second;
  }

  void attribute(std::string_view key, std::string_view value) {
    out_ += ' ';
    out_ += key;
    out_ += "=\"";
    appendEscaped(out_, value, true);
    out_ += '"';
  }

  void end(const char* name) {
    if (dropped_ > 0) {
      --dropped_;
      return;
    }
    const Open closed = std::move(open_.back());
    open_.pop_back();
    if (!copying_) return;
    const bool ends = open_.size() == begin_;
    if (ends) copying_ = false;
    const auto insertion = plan_.insertions.find(closed.position);
    if (insertion != plan_.insertions.end()) out_ += insertion->second;
    if ((ends && plan_.childrenOnly) || closed.unwrapped) return;
    out_ += "</";
    out_ += name;
    out_ += '>';
  }

  const CopyPlan& plan_;
  Expat expat_;
  std::string out_;
  std::vector<Open> open_;
  // How many were open when it began.
  size_t begin_ = 0;
  bool copying_ = false;
  size_t dropped_ = 0;
};

}  // namespace

std::string copyOf(const CopyPlan& plan) { return Copier(plan).copy(); }

}  // namespace ztservice::parse
