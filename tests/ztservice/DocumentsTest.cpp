#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/ztservice/Answers.h"
#include "ztclient/answers/ServiceJson.h"

namespace {

const std::string folder = ZTB_TEST_DATA "/services/";

// The texts of errors are free, and so are warnings.
void forgetTexts(Json& json) {
  if (json.is_object() && json.contains("error")) json["error"] = "";
  if (json.is_object() && json.contains("warnings")) json["warnings"] = !json["warnings"].empty();
  if (!json.is_structured()) return;
  for (Json& inside : json) forgetTexts(inside);
}

std::string answer(const std::string& document) {
  try {
    Json json = testsupport::answerOf(ztservice::load(document));
    forgetTexts(json);
    return json.dump(1);
  } catch (const ztservice::Error&) {
    return Json{{"error", ""}}.dump(1);
  }
}

TEST(RealServices, AreToldWhole) {
  std::ifstream table(folder + "services.txt");
  size_t count = 0;
  for (std::string name, document; std::getline(table, name, '\t') && std::getline(table, document);
       ++count) {
    std::ifstream expectedFile(folder + "expected/" + name + ".json");
    Json expected = Json::parse(expectedFile);
    forgetTexts(expected);
    EXPECT_EQ(answer(folder + "documents/" + name + "/" + document), expected.dump(1)) << name;
  }
  EXPECT_EQ(count, 46u);
}

// Definitions of several target namespaces have one in one document.
void forgetNamespaces(Json& json) {
  json["targetNamespace"] = "";
  for (Json& service : json["services"]) {
    service["namespace"] = "";
    for (Json& port : service["ports"]) {
      port["bindingNamespace"] = port["portTypeNamespace"] = "";
      for (Json& operation : port["operations"]) {
        for (const char* side : {"input", "output"}) {
          if (!operation[side].is_null()) operation[side]["messageNamespace"] = "";
        }
        for (Json& fault : operation["faults"]) fault["messageNamespace"] = "";
      }
    }
  }
}

TEST(RealServices, ComeIntoOneFileWithTheSameAnswer) {
  std::ifstream table(folder + "services.txt");
  size_t merged = 0;
  for (std::string name, document; std::getline(table, name, '\t') && std::getline(table, document);) {
    const std::string path = folder + "documents/" + name + "/" + document;
    if (name == "no-definitions") continue;
    Json before = testsupport::answerOf(ztservice::load(path));
    Json after = testsupport::answerOf(testsupport::loadFiles({{"main.wsdl", ztservice::flatten(path)}}));
    before.erase("warnings");
    after.erase("warnings");
    if (before != after) {
      ++merged;
      forgetNamespaces(before);
      forgetNamespaces(after);
    }
    EXPECT_EQ(before.dump(1), after.dump(1)) << name;
  }
  EXPECT_EQ(merged, 6u);
}

}  // namespace
