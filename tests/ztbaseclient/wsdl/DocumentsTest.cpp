// Documents of public tool kits, with what an independent program read in them: tests/data/wsdl/SOURCES.md.
#include <filesystem>
#include <fstream>

#include "tests/ztbaseclient/wsdl/Wsdl.h"
#include "ztbaseclient/wsdl/ExternalSchemaRecord.h"
#include "ztclient/answers/ByteText.h"

namespace {

namespace fs = std::filesystem;

const fs::path data = fs::path(ZTB_TEST_DATA) / "wsdl";

// What the command prints for one document.
Json answer(CWsdlParser& parser, const std::string& file, bool types) {
  try {
    parser.Parse(tovin::WideString(tovin::utf8ToWide(file)));
    return wsdl::toJson(parser, types);
  } catch (const tovin::Exception& e) {
    return {{"error", bytesOf(e.getMessage())}};
  }
}

Json readSchemata(CWsdlParser& parser, const fs::path& document) {
  Json records = Json::array();
  try {
    parser.Parse(tovin::WideString(tovin::utf8ToWide(document.generic_string())));
    parser.GetSchemaInfo();
  } catch (const tovin::Exception& e) {
    return {{"error", bytesOf(e.getMessage())}};
  }
  for (const CWsdlParser::ExternalSchemaRecord& record : parser.GetExternalSchemas()) {
    EXPECT_TRUE(record.loaded);
    const fs::path file = tovin::wideToUtf8(record.fileName);
    records.push_back({{"file", file.lexically_relative(document.parent_path()).generic_string()},
                       {"namespace", bytesOf(record.schemaNamespace.getProtocol()) +
                                         bytesOf(record.schemaNamespace.getUrl())}});
  }
  return records;
}

// Reads each document of an "expected" folder anew and compares.
template <class Read>
void compareAll(const char* folder, Read&& read) {
  size_t count = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(data / folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = entry.path().lexically_relative(data / folder).generic_string();
    std::ifstream in(entry.path());
    const Json expected = Json::parse(in);
    CWsdlParser parser;
    EXPECT_EQ(toText(read(parser, data / "documents" / name.substr(0, name.size() - 5)), 1),
              toText(expected, 1))
        << name;
    ++count;
  }
  EXPECT_EQ(count, 26u);
}

TEST(Documents, ServicesAreReadAsExpected) {
  compareAll("expected", [](CWsdlParser& parser, const fs::path& document) {
    return answer(parser, document.generic_string(), false);
  });
}

TEST(Documents, TypesAreResolvedAsExpected) {
  compareAll("expected-types", [](CWsdlParser& parser, const fs::path& document) {
    return answer(parser, document.generic_string(), true);
  });
}

TEST(Documents, ExternalSchemasAreLoadedAsExpected) {
  compareAll("expected-schemata",
             [](CWsdlParser& parser, const fs::path& document) { return readSchemata(parser, document); });
}

// Cut off anywhere, a document gives an error or a part of itself.
TEST(Documents, CutOffAnywhereAreAnsweredOrRefused) {
  std::ifstream in(data / "documents/apache+axis-axis1-java/axis-ant/src/test/wsdl/clash/clash.wsdl",
                   std::ios::binary);
  const std::string whole(std::istreambuf_iterator<char>(in), {});
  size_t answered = 0;
  for (size_t size = 0; size <= whole.size(); size += 7) {
    CWsdlParser parser;
    wsdl::parse(parser, whole.substr(0, size));
    try {
      wsdl::toJson(parser, true);
      ++answered;
    } catch (const tovin::Exception& e) {
      EXPECT_NE(*e.getMessage(), L'\0') << size;
    }
  }
  EXPECT_GT(answered, 0u);
}

}  // namespace
