#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/ztclient/Command.h"

namespace {

using Json = nlohmann::ordered_json;

std::string keysOf(const Json& object) {
  std::string keys;
  for (const auto& [key, value] : object.items()) keys += key + ' ';
  return keys;
}

// Of a document, or of the first of several that stand each on a line.
std::string keysIn(const testsupport::Outcome& outcome) {
  std::istringstream lines(outcome.out);
  std::string line;
  std::getline(lines, line);
  return keysOf(Json::parse(line == "{" ? outcome.out : line));
}

TEST(Json, OfAServiceHasItsKeysInOrder) {
  const testsupport::Shell shell;
  const auto outcome = shell.run("ztclient wsdl --json --types '" + testsupport::serviceFile() + "'");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const Json json = Json::parse(outcome.out);
  EXPECT_EQ(keysOf(json), "targetNamespace service ports warnings ");
  const Json& port = json["ports"][0];
  const Json& operation = port["binding"]["operations"][0];
  const Json& part = operation["input"]["parts"][0];
  EXPECT_EQ(keysOf(port), "name address soap11OrHttp binding ");
  EXPECT_EQ(keysOf(port["binding"]), "name type transport verb documentStyle operations ");
  EXPECT_EQ(keysOf(operation), "name soapAction documentStyle inputName outputName input output ");
  EXPECT_EQ(keysOf(operation["input"]), "name namespace parts ");
  EXPECT_EQ(keysOf(part), "name type element resolved ");
  EXPECT_EQ(keysOf(part["resolved"]), "kind name namespace itemName superClass elements ");
}

TEST(Json, OfATreeALogAndCredentialsHasItsKeysInOrder) {
  const testsupport::Shell shell;
  shell.folder().write("files/log", "<<<ConsoleEntry\nname\t\"v\\\nConsoleEntry>>>\n");
  shell.folder().write("files/a.xml", "<a b='&quot;&#x1F600;'/>");
  EXPECT_EQ(keysIn(shell.run("ztclient tree --json a.xml")), "depth class name properties ");
  EXPECT_EQ(keysOf(Json::parse(shell.run("ztclient tree --json a.xml").out)["properties"][0]),
            "name type value flags ");
  const std::string record = R"(\x02\x87\x23\x01\x7e\x10\x41\xed\xa0\x80\x42\x00\x00\x00\x00)";
  EXPECT_EQ(shell.run("printf '" + record + "' | ztclient tree --json -").out,
            "{\"depth\":0,\"class\":\"DraVolin.data.BaseNode\",\"name\":\"A\\ud800B\",\"properties\":[]}\n");
  EXPECT_EQ(keysIn(shell.run("ztclient log --json log")), "values position ");
  EXPECT_EQ(Json::parse(shell.run("ztclient log --json log").out)["values"][0][1], "\"v\\");
  const std::string header =
      "formatVersion randomNumber encryptedLength quickChecksum checksumOk headerFlags ";
  const std::string body =
      "clientDescription clientMachineName clientVersion domain xmlDbEndPoint logEndPoint locatorEndPoint "
      "roleBits roleBitCount ";
  const std::string show = "ztclient credentials make --user ann | ztclient credentials show --json";
  const std::string before = header + "bodyFlags serverIP clientIP loginTime userName ";
  EXPECT_EQ(keysIn(shell.run(show)), before + body);
  EXPECT_EQ(keysIn(shell.run(show + " --show-password")), before + "password " + body);
}

TEST(Json, OfATroubledServiceIsAnErrorAlone) {
  const testsupport::Shell shell;
  shell.folder().write("files/none.wsdl", "<definitions/>");
  const auto outcome = shell.run("ztclient wsdl --json none.wsdl");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(Json::parse(outcome.out), Json({{"error", "missing targetNamespace"}}));
}

TEST(Json, OfATreeIsTheSameOfItsRecord) {
  const testsupport::Shell shell;
  const std::string file = "'" + testsupport::serviceFile() + "'";
  const auto outcome =
      shell.run("ztclient tree --json " + file + " >before && ztclient tree --record r " + file +
                " && ztclient tree --json r >after && cmp before after && wc -l <after");
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_GT(std::stoi(outcome.out), 100);
}

}  // namespace
