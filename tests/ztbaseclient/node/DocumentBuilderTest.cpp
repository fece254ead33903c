#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "ztbaseclient/wsdl/XMLParser.h"

namespace {

using namespace testsupport;

// A tree as text: name, attributes in brackets, children in parentheses.
std::wstring shape(const tovin::iNode* node) {
  if (!node) return L"null";
  std::wstring text = node->getName();
  if (node->hasProperties()) {
    text += L'[';
    for (unsigned i = 0; i < node->getProperties()->getSize(); ++i) {
      const tovin::iProperty* property = node->getProperties()->get(i);
      text += (i ? L" " : L"") + std::wstring(property->getName()) + L"=" +
              property->getValue().getText().c_str();
    }
    text += L']';
  }
  if (!node->hasChildren()) return text;
  text += L'(';
  for (unsigned i = 0; i < node->getNumberOfChildren(); ++i) {
    text += (i ? L" " : L"") + shape(node->getChildAt(i));
  }
  return text + L')';
}

class DocumentBuilder : public testing::Test {
 protected:
  std::wstring fromBytes(const std::string& text) { return shape(parser_.parse(arrayOf(text))); }
  std::wstring fromFile(const std::string& text) {
    return shape(parser_.parse(tovin::utf8ToWide(folder_.write("document.xml", text)).c_str()));
  }

  TempFolder folder_;
  CWsdlParser::XMLParser parser_;
};

TEST_F(DocumentBuilder, KeepsElementsAndAttributesOnly) {
  EXPECT_EQ(
      fromBytes(
          "<?xml version='1.0'?><!-- c --><a x='1' y='&lt;2'>text<b/><?pi?><c:d><![CDATA[<e/>]]></c:d></a>"),
      L"a[x=1 y=<2](b c:d)");
}

TEST_F(DocumentBuilder, WidensUtf8ByteByByte) {
  const tovin::iNode* root = parser_.parse(arrayOf("<\xC3\xA9l a='\xE2\x82\xAC'/>"));
  EXPECT_EQ(shape(root), L"\xC3\xA9l[a=\xE2\x82\xAC]");
  EXPECT_EQ(root->getProperties()->get(0u)->getInfo()->getMetaDataFlags().getBits(), 0u);
  parser_.reset();
  EXPECT_EQ(fromBytes("<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xE9'/>"), L"a[b=\xC3\xA9]");
}

TEST_F(DocumentBuilder, FilesOfEverySizeAroundThePiecesAreReadWhole) {
  for (size_t size : {2047u, 2048u, 2049u, 6144u, 6145u, 70000u}) {
    parser_.reset();
    const std::string text = "<a>" + std::string(size - 7, ' ') + "</a>";
    EXPECT_EQ(fromFile(text), L"a") << size;
    EXPECT_EQ(parser_.getRawBytes().getSize(), size);
    EXPECT_EQ(std::string(parser_.getRawBytes().begin(), parser_.getRawBytes().end()), text);
  }
}

// To a collection they are one name.
TEST_F(DocumentBuilder, AttributesThatDifferOnlyInCaseAreRefused) {
  expectMessage(L"Property xmlns:B already exists\n", [&] { fromBytes("<a xmlns:b='u' xmlns:B='v'/>"); });
  parser_.reset();
  expectMessage(L"Property ID already exists\n", [&] { fromFile("<a><b id='1' ID='2'/></a>"); });
}

TEST_F(DocumentBuilder, TagsOutsideOfARootAreRefused) {
  const char* none[] = {nullptr};
  const auto end = [&] { CWsdlParser::XMLParser::endElement(&parser_, "a"); };
  const auto start = [&] { CWsdlParser::XMLParser::startElement(&parser_, "a", none); };
  expectMessage(L"Cannot dereference a NULL pointer", end);
  start();
  end();
  expectMessage(L"Cannot dereference a NULL pointer", start);
}

TEST_F(DocumentBuilder, EntityBombsAreRefused) {
  std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'boom boom boom boom'>";
  for (int i = 1; i < 20; ++i) {
    const std::string entity = "&e" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY e" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) bomb += entity;
    bomb += "'>";
  }
  EXPECT_THROW(fromFile(bomb + "]><a>&e19;</a>"), tovin::Exception);
}

}  // namespace
