#include "ztclient/input/Document.h"

#include <vector>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/data/DocumentTexts.h"
#include "ztbaseclient/node/NodeRecord.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztclient/input/Source.h"
#include "ztclient/terminal/Messages.h"

namespace {

// The long forms of a compact integer: every node record begins with one.
bool beginsRecord(std::string_view head) { return !head.empty() && head[0] >= 1 && head[0] <= 3; }

// What comes out of a pipe may have no end.
void refuseRest(Source& source) {
  constexpr size_t mostCounted = size_t{1} << 20;
  std::vector<char> rest(mostCounted);
  const size_t count = source.read(rest.data(), rest.size());
  if (count == mostCounted)
    throw tovin::Exception(L"More than %d bytes stand behind the record", mostCounted - 1);
  if (count > 0) throw tovin::Exception(L"%d bytes stand behind the record", count);
}

tovin::Ptr<tovin::iNode> readRecord(Source& source) {
  tovin::Ptr<tovin::iNode> root = ReadNodeRecord(source);
  refuseRest(source);
  return root;
}

tovin::Ptr<tovin::iNode> readXml(Source& source) {
  CWsdlParser::XMLParser parser;
  tovin::Ptr<tovin::iNode> root(parser.parse(source));
  if (!root) throw tovin::Exception(L"There is no document in the file");
  DocumentTexts::makeCharacters(*root);
  return root;
}

// Calls read; a failure that does not say what file it is about gets the name.
template <class Read>
auto naming(const std::string& file, Read&& read) {
  try {
    return read();
  } catch (tovin::Exception& e) {
    if (e.getFile().empty()) e.setFile(tovin::platform::fileName(file));
    throw;
  }
}

}  // namespace

tovin::Ptr<tovin::iNode> readDocument(const std::string& file) {
  return naming(file, [&] {
    Source source(file);
    return beginsRecord(source.head(1)) ? readRecord(source) : readXml(source);
  });
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

void loadWsdl(CWsdlParser& parser, const std::string& file) {
  if (file != "-") {
    messages::note("reads " + file);
    return parser.Parse(tovin::WideString(tovin::platform::fileName(file)));
  }
  naming(file, [&] {
    Source source(file);
    parser.Parse(source);
  });
}

tovin::Exception withCharacters(const tovin::Exception& e) {
  tovin::Exception out(tovin::charactersOfBytes(e.getMessage()).c_str());
  out.setFile(e.getFile())
      .setPlace(e.getLine(), e.getColumn())
      .setReason(e.getReason())
      .setOrigin(e.getOrigin());
  for (const tovin::CatchEntry& entry : e.getTrail())
    out.appendMessage(entry.catchClass, entry.className, entry.method);
  return out;
}
