// Any bytes as an XML document, as bytes and as a stream; the tree then travels as a record.
#include "tovin/Ptr.h"
#include "tovinCore/Exception.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztcore/ztMemoryStreams.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  tovin::Object::m_dontUsePools = true;
  CWsdlParser::XMLParser parser;
  try {
    const tovin::Array<unsigned char> document(std::vector<unsigned char>(bytes, bytes + size));
    if (const tovin::iNode* root = parser.parse(document)) {
      ztMemoryByteOutputStream out;
      root->serialize(out);
    }
  } catch (const tovin::Exception&) {
    // Attributes that differ only in case.
  }
  parser.reset();
  try {
    ztMemoryByteInputStream stream(bytes, size);
    parser.parse(stream);
  } catch (const tovin::Exception&) {
    // No document.
  }
  return 0;
}
