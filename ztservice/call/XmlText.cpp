#include "ztservice/call/XmlText.h"

#include "ztservice/call/Lexical.h"
#include "ztservice/load/Escape.h"
#include "ztservice/load/Expat.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

const char* wellKnownPrefix(std::string_view space) {
  if (space == soap11Space || space == soap12Space) return "soap";
  if (space == encoding11Space) return "soapenc";
  if (space == encoding12Space) return "enc";
  if (space == instanceSpace) return "xsi";
  if (space == schema::schemaNamespace) return "xsd";
  return nullptr;
}

}  // namespace

void XmlText::begin(const Name& name) {
  endTag();
  out_ += '<';
  put(name);
  isInTag_ = true;
}

void XmlText::attribute(const Name& name, std::string_view value) {
  out_ += ' ';
  put(name);
  out_ += "=\"";
  parse::appendEscaped(out_, value, true);
  out_ += '"';
}

void XmlText::text(std::string_view value) {
  if (value.empty()) return;
  endTag();
  parse::appendEscaped(out_, value, false);
}

void XmlText::raw(std::string_view xml) {
  endTag();
  out_ += xml;
}

void XmlText::end(const Name& name) {
  if (isInTag_) {
    out_ += "/>";
    isInTag_ = false;
    return;
  }
  out_ += "</";
  put(name);
  out_ += '>';
}

std::string XmlText::qualified(const Name& name) {
  std::string text(prefixOf(name.space));
  if (!text.empty()) text += ':';
  return text.append(name.local);
}

std::string XmlText::declarations() const {
  std::string text;
  for (const std::string* space : order_) {
    text += " xmlns:" + prefixes_.find(*space)->second + "=\"";
    parse::appendEscaped(text, *space, true);
    text += '"';
  }
  return text;
}

std::string XmlText::take() { return std::move(out_); }

void XmlText::endTag() {
  if (isInTag_) out_ += '>';
  isInTag_ = false;
}

void XmlText::put(const Name& name) {
  const std::string_view prefix = prefixOf(name.space);
  out_ += prefix;
  if (!prefix.empty()) out_ += ':';
  out_ += name.local;
}

std::string_view XmlText::prefixOf(std::string_view space) {
  if (space.empty()) return {};
  if (space == lastSpace_) return lastPrefix_;
  if (space == schema::xmlNamespace) return "xml";
  auto known = prefixes_.find(space);
  if (known == prefixes_.end()) {
    const char* wellKnown = wellKnownPrefix(space);
    known = prefixes_.emplace(space, wellKnown ? wellKnown : "ns" + std::to_string(++own_)).first;
    order_.push_back(&known->first);
  }
  lastSpace_ = known->first;
  lastPrefix_ = known->second;
  return lastPrefix_;
}

size_t unfitAt(std::string_view text) {
  constexpr std::string_view replacement = "\xEF\xBF\xBD";
  for (size_t at = 0; at < text.size();) {
    const size_t from = at;
    const uint32_t c = lexical::nextCharacter(text, at);
    if (c < 0x20 ? c != '\t' && c != '\n' && c != '\r' : c == 0xFFFE || c == 0xFFFF) return from;
    if (c == 0xFFFD && text.substr(from, 3) != replacement) return from;
  }
  return std::string_view::npos;
}

std::string faultOfXml(std::string_view xml) {
  constexpr size_t most = size_t{1} << 30;
  if (xml.size() > most) return "more than 1 GiB";
  parse::Expat expat(XML_ParserCreateNS("UTF-8", ' '));
  std::string document = "<x>";
  document.append(xml).append("</x>");
  if (expat.feed(document)) return {};
  const size_t column = expat.line() == 1 ? expat.column() - 3 : expat.column();
  return std::string(expat.fault()) + " at " + std::to_string(expat.line()) + ':' + std::to_string(column);
}

}  // namespace ztservice::call
