#include "ztclient/input/Document.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztcore/ztFile.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

constexpr size_t pieceSize = 1 << 16;

std::string readStandardInput() {
  std::string bytes;
  char piece[pieceSize];
  while (const size_t count = std::fread(piece, 1, sizeof piece, stdin)) bytes.append(piece, count);
  return bytes;
}

// The long forms of a compact integer: every node record begins with one.
bool beginsRecord(const std::string& bytes) { return !bytes.empty() && bytes[0] >= 1 && bytes[0] <= 3; }

tovin::Ptr<tovin::iNode> makeNodeFor(const std::string& record) {
  ztMemoryByteInputStream stream(record.data(), record.size());
  int32_t version = 0;
  ReadCompactInt(stream, version);
  const bool transport = version == CObjectTransportNode::OBJECT_TRANSPORT_NODE_VERSION ||
                         version == CObjectTransportNode::OLD_OBJECT_TRANSPORT_NODE_VERSION;
  if (transport) return CObjectTransportNode::allocate();
  return CBaseNode::allocate();
}

tovin::Ptr<tovin::iNode> readRecord(const std::string& record) {
  tovin::Ptr<tovin::iNode> root = makeNodeFor(record);
  ztMemoryByteInputStream stream(record.data(), record.size());
  root->deserialize(stream);
  if (stream.GetRemaining() > 0) {
    throw tovin::Exception(L"%d bytes stand behind the record", stream.GetRemaining());
  }
  return root;
}

tovin::Ptr<tovin::iNode> readXml(const std::string& bytes) {
  ztMemoryByteInputStream stream(bytes.data(), bytes.size());
  CWsdlParser::XMLParser parser;
  return parser.parse(stream);
}

// Broken sequences and surrogates without their other half, which parts of texts can begin or end with, as
// U+FFFD.
std::string repaired(const std::string& bytes) {
  std::wstring text = tovin::utf8ToWide(bytes);
  for (size_t i = 0; i < text.size(); ++i) {
    const auto unit = static_cast<char16_t>(text[i]);
    const bool paired = tovin::isHighSurrogate(unit) && i + 1 < text.size() &&
                        tovin::isLowSurrogate(static_cast<char16_t>(text[i + 1]));
    if (paired)
      ++i;
    else if (tovin::isHighSurrogate(unit) || tovin::isLowSurrogate(unit))
      text[i] = L'\uFFFD';
  }
  return tovin::wideToUtf8(text);
}

}  // namespace

std::string bytesOf(std::wstring_view text) {
  std::string bytes(text.size(), '\0');
  std::transform(text.begin(), text.end(), bytes.begin(), [](wchar_t c) { return static_cast<char>(c); });
  return bytes;
}

std::string Document::utf8(std::wstring_view text) const {
  if (!bytesAsCharacters) return tovin::wideToUtf8(text);
  const std::string bytes = bytesOf(text);
  bool cutShort = false;
  return tovin::isValidUtf8(bytes, cutShort) ? bytes : repaired(bytes);
}

std::wstring Document::wide(const std::string& utf8) const {
  if (!bytesAsCharacters) return tovin::utf8ToWide(utf8);
  std::wstring characters;
  for (char byte : utf8) characters += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return characters;
}

std::string readBytes(const std::string& file) {
  if (file == "-") return readStandardInput();
  ztFile in;
  if (!in.Open(tovin::utf8ToWide(file).c_str(), ztFile::ForReading))
    throw tovin::Exception(L"Unable to open file");
  std::string bytes;
  std::vector<unsigned char> piece(pieceSize);
  while (const unsigned count = in.Read(piece.data(), pieceSize)) {
    bytes.append(reinterpret_cast<const char*>(piece.data()), count);
  }
  return bytes;
}

Document readDocument(const std::string& file) {
  const std::string bytes = readBytes(file);
  if (beginsRecord(bytes)) return {readRecord(bytes), false};
  return {readXml(bytes), true};
}

void walk(const tovin::iNode& root, const std::function<void(const tovin::iNode&, size_t)>& visit) {
  struct Step {
    const tovin::iNode* node;
    unsigned next;
  };
  std::vector<Step> steps{{&root, 0}};
  visit(root, 0);
  while (!steps.empty()) {
    Step& step = steps.back();
    if (step.next == step.node->getNumberOfChildren()) {
      steps.pop_back();
      continue;
    }
    const tovin::iNode* child = step.node->getChildAt(step.next++);
    visit(*child, steps.size());
    steps.push_back({child, 0});
  }
}
