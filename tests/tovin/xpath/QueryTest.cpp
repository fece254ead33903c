#include <climits>
#include <cmath>
#include <fstream>
#include <random>

#include "tests/tovin/xpath/Trees.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/xpath/CXPathParser.h"

namespace {

using namespace testsupport;
using tovin::iNode;
using tovin::Ptr;

Ptr<iNode> withText(const wchar_t* name, const wchar_t* text) {
  Ptr<iNode> node(CBaseNode::allocate());
  node->setName(name);
  if (text) node->setValue(tovin::StringValue(text));
  return node;
}

TEST(QueryNames, FoldAsciiCaseAndKeepThePrefix) {
  const Ptr<iNode> root = treeOf("<r><p:Item p:Key='1'/><P:item/><q:item/><item/><p:a:b/></r>");
  expectPlaces(*root, {{L"/R/ITEM", {"/*[1]/*[4]/"}},
                       {L"/r/p:item", {"/*[1]/*[1]/", "/*[1]/*[2]/"}},
                       {L"/r/p:*", {"/*[1]/*[1]/", "/*[1]/*[2]/", "/*[1]/*[5]/"}},
                       {L"/r/pp:*", {}},
                       {L"/r/*[local-name() = 'item']", {"/*[1]/*[2]/", "/*[1]/*[3]/", "/*[1]/*[4]/"}},
                       {L"/r/*[local-name() = 'a:b']", {"/*[1]/*[5]/"}},
                       {L"/r/*[name() = 'p:Item']", {"/*[1]/*[1]/"}},
                       {L"//@P:KEY", {"/*[1]/*[1]/"}},
                       {L"//@p:*", {"/*[1]/*[1]/"}},
                       {L"/r/*[namespace-uri() != '']", {}},
                       {L"/r/or/and", {}}});
}

TEST(QueryNames, MeetASpaceAsItsMark) {
  const Ptr<iNode> root = withText(L"a", nullptr);
  for (const wchar_t* name : {L"my prop", L" ", L"a__white_space__b c", L"my_prop"})
    root->getProperties()->define(name, L"v", 0);
  EXPECT_EQ(selectProperties(*root, L"@My__white_space__prop"), Places{"my prop=v"});
  EXPECT_EQ(selectProperties(*root, L"@__WHITE_SPACE__"), Places{" =v"});
  EXPECT_EQ(selectProperties(*root, L"@a__white_space__b__white_space__c"), Places{"a__white_space__b c=v"});
  EXPECT_EQ(selectProperties(*root, L"@my__white_space__"), Places{});
}

TEST(QueryValues, AreTheTextOfANodeAndNoAttribute) {
  const Ptr<iNode> root = withText(L"r", L"one ");
  const Ptr<iNode> child = withText(L"c", L"two ");
  root->appendChild(child.get());
  child->appendChild(withText(L"d", nullptr).get());
  root->appendChild(withText(L"c", L"3").get());
  root->getProperties()->define(L"number", 2.5, 0);
  EXPECT_EQ(textOf(*root, L"string()"), "one two 3");
  EXPECT_EQ(textOf(*root, L"string(/)"), "one two 3");
  EXPECT_EQ(textOf(*root, L"sum(//c[last()]) + @number"), "5.5");
  EXPECT_EQ(select(*root, L"c[. = 'two ']"), Places{"/*[1]/*[1]/"});
  EXPECT_EQ(select(*root, L"//text()"), Places{});
  EXPECT_EQ(selectProperties(*root, L"@*"), Places{"number=2.5"});
  EXPECT_EQ(selectProperties(*root, L"@node()"), Places{"number=2.5"});
  EXPECT_EQ(selectProperties(*root, L"@text-content"), Places{"text-content=one "});
}

TEST(QueryTexts, CountSurrogatePairsAsTwo) {
  const Ptr<iNode> root = withText(L"r", L"a\U0001F600b");
  expectTexts(
      *root,
      {{L"string-length()", "4"}, {L"substring(., 4)", "b"}, {L"substring(., 2, 2)", "\xF0\x9F\x98\x80"}});
}

TEST(QueryNumbers, BecomeTextsWithoutExponent) {
  const Ptr<iNode> root = withText(L"r", nullptr);
  expectTexts(*root, {{L"1 div 3", "0.3333333333333333"},
                      {L"0.0000001", "0.0000001"},
                      {L"string(1000000000000000000000 * 10)", "10000000000000000000000"},
                      {L"-0", "0"},
                      {L"1 div -0", "-Infinity"},
                      {L"0.1 + 0.2", "0.30000000000000004"},
                      {L"12.", "12"},
                      {L".5", "0.5"},
                      {L"number('1e3')", "NaN"},
                      {L"123456789012345678", "123456789012345680"},
                      {L"round(0.49999999999999994)", "0"}});
}

TEST(QueryNumbers, ThatPropertiesHoldAreTakenAsTheyAre) {
  const Ptr<iNode> root = withText(L"r", nullptr);
  root->getProperties()->define(L"small", 1e-7, 0);
  root->getProperties()->define(L"big", 1e22, 0);
  root->getProperties()->define(L"endless", HUGE_VAL, 0);
  const Ptr<iNode> child = withText(L"c", nullptr);
  child->setValue(tovin::DoubleValue(2e-9));
  root->appendChild(child.get());
  expectTexts(*root, {{L"@small < 0.001", "true"},
                      {L"@small = 0.0000001 and @small = '0.0000001'", "true"},
                      {L"@small > /r/c and /r/c < 1", "true"},
                      {L"string(@small)", "0.0000001"},
                      {L"@big", "10000000000000000000000"},
                      {L"string()", "0.000000002"},
                      {L"c * 1000000000", "2"},
                      {L"-@endless", "-Infinity"},
                      {L"count(//c[../@endless > /r/@big])", "1"},
                      {L"sum(@small | c) > 0.0000001", "true"}});
}

TEST(QueryTexts, AreFoundAndTranslatedAtAnyLength) {
  const Ptr<iNode> root = withText(L"r", nullptr);
  std::mt19937 random(7);
  const auto letters = [&](size_t count) {
    std::wstring text;
    while (text.size() < count) text += random() % 8 ? L'a' : L'b';
    return text;
  };
  for (size_t length : {1, 32, 33, 60}) {
    for (int i = 0; i < 50; ++i) {
      const std::wstring text = letters(300), mark = i % 2 ? letters(length) : text.substr(200, length);
      const size_t place = text.find(mark);
      const std::wstring arguments = L"('" + text + L"', '" + mark + L"')";
      const std::wstring before = place == text.npos ? L"" : text.substr(0, place);
      const std::wstring after = place == text.npos ? L"" : text.substr(place + length);
      EXPECT_EQ(textOf(*root, (L"substring-before" + arguments).c_str()), tovin::wideToUtf8(before));
      EXPECT_EQ(textOf(*root, (L"substring-after" + arguments).c_str()), tovin::wideToUtf8(after));
      EXPECT_EQ(textOf(*root, (L"contains" + arguments).c_str()), place == text.npos ? "false" : "true");
    }
  }
  EXPECT_EQ(textOf(*root, L"translate('a\u00e9b\u20acc\u00e9', '\u00e9a\u20aca', 'X\u00fcZY')"),
            "\u00fcXbZcX");
}

// Rows of a query, whether it selects anything, and what it gives.
template <class T>
void expectResults(const iNode& root, std::initializer_list<std::tuple<const wchar_t*, bool, T>> rows,
                   T before) {
  for (const auto& [query, any, expected] : rows) {
    T result = before;
    EXPECT_EQ(root.query(query, 0, result), any) << tovin::wideToUtf8(query);
    EXPECT_EQ(result, expected) << tovin::wideToUtf8(query);
  }
}

TEST(QueryResults, SayWhetherAnythingWasSelected) {
  const Ptr<iNode> root = treeOf("<a n='-7.9' big='9e9' huge='99999999999' word='x'><b/></a>");
  expectResults<int>(*root,
                     {{L"@n", true, -7},
                      {L"@huge", true, INT_MAX},
                      {L"-@huge", true, INT_MIN},
                      {L"@word", false, 0},
                      {L"@big", false, 0},
                      {L"@none", false, 0},
                      {L"count(*)", true, 1},
                      {L"count(@none)", true, 0},
                      {L"1 = 1", true, 1},
                      {L"/", false, 0},
                      {L"number('x')", false, 0},
                      {L"b", false, 0}},
                     99);
  expectResults<bool>(
      *root, {{L"b", true, true}, {L"1 = 2", true, false}, {L"'x'", true, true}, {L"count(c)", true, false}},
      false);
  expectResults<bool>(*root, {{L"c", false, false}, {L"/", false, false}, {L"count(c)", true, false}}, true);
  expectResults<tovin::WideString>(*root, {{L"c", false, L""}, {L"b", true, L""}}, L"before");
}

TEST(QueryResults, TakeElementsOrOwnersOfAttributesByTheSelector) {
  const Ptr<iNode> root = treeOf("<a x='1' y='2'><b x='3'/><c/></a>");
  EXPECT_EQ(select(*root, L"//@* | //c", 1), Places{"/*[1]/*[2]/"});
  EXPECT_EQ(select(*root, L"//@* | //c", 0), Places{"/*[1]/*[2]/"});
  EXPECT_EQ(select(*root, L"//@* | //c | /a", 2), (Places{"/*[1]/", "/*[1]/*[1]/"}));
  EXPECT_EQ(select(*root, L"//@* | //c | /a", 3), (Places{"/*[1]/", "/*[1]/*[1]/", "/*[1]/*[2]/"}));
  EXPECT_EQ(select(*root, L"@x/following::*", 1), (Places{"/*[1]/*[1]/", "/*[1]/*[2]/"}));
  EXPECT_EQ(selectProperties(*root, L"//b/@x | //c | /a/@*"), (Places{"x=1", "y=2", "x=3"}));
}

TEST(QueryParser, AddsToASetFromItsBoundNode) {
  const Ptr<iNode> root = treeOf("<a><b/><c/></a>");
  const Ptr<tovin::CXPathParser> parser(tovin::CXPathParser::allocate());
  tovin::NodeReferenceSet nodes;
  expectMessage(L"A query needs a node to begin at", [&] { parser->select(L"b", 3, nodes); });
  parser->setNode(root.get());
  EXPECT_TRUE(parser->select(L"c", 3, nodes));
  EXPECT_TRUE(parser->select(L"b", 3, nodes));
  EXPECT_FALSE(parser->select(L"d", 3, nodes));
  EXPECT_EQ(placesOf(nodes), (Places{"/*[1]/*[2]/", "/*[1]/*[1]/"}));
  parser->reset();
  EXPECT_EQ(parser->getNode(), nullptr);
}

TEST(QueryFaults, QuoteTheQueryAndThePosition) {
  const Ptr<iNode> root = treeOf("<a/>");
  std::ifstream in(ZTB_TEST_DATA "/xpath/faults.txt");
  std::string query, fault, position;
  std::getline(in, query);  // a comment
  while (std::getline(in, query, '\t') && std::getline(in, fault, '\t') && std::getline(in, position)) {
    tovin::NodeReferenceSet nodes;
    const std::wstring wide = tovin::utf8ToWide(query);
    EXPECT_EQ(messageOf([&] { root->query(wide.c_str(), 3, nodes); }),
              "Query \"" + query + "\": " + fault + " at position " + position);
  }
  EXPECT_EQ(position, "1") << "all were read";
  bool truth = false;
  expectMessage(L"A query needs an expression", [&] { root->query(nullptr, 0, truth); });
}

TEST(QueryFaults, QuoteOnlyTheSurroundingsInALongQuery) {
  const Ptr<iNode> root = treeOf("<a/>");
  const std::wstring query = std::wstring(1'000'000, L' ') + L"$";
  bool truth = false;
  expectMessage(
      L"Query \"..." + std::wstring(120, L' ') + L"$\": there are no variables, at position 1000001",
      [&] { root->query(query.c_str(), 0, truth); });
}

std::wstring repeated(const wchar_t* text, size_t count) {
  std::wstring all;
  for (size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(QueryLimits, LetLengthGrowAndNestingNot) {
  const Ptr<iNode> root = treeOf("<a><a/></a>");
  bool truth = false;
  const std::pair<std::wstring, bool> rows[] = {
      {repeated(L"(", 100) + L"1" + repeated(L")", 100), true},
      {repeated(L"(", 100'000) + L"1", false},
      {L"a" + repeated(L"[a", 100'000), false},
      {repeated(L"not(", 100'000), false},
      {L"1" + repeated(L" = 1", 100'000), false},
      {L"1" + repeated(L" + 1", 100'000), true},
      {repeated(L"-", 100'001) + L"1", true},
      {L"a" + repeated(L" | a", 10'000), true},
      {L"false()" + repeated(L" or a", 100'000), true},
      {L"." + repeated(L"/..", 100'000) + L" or 1", true},
      {repeated(L"//a", 100'000) + L" or 1", true},
      {L"a" + repeated(L"[1]", 100'000), true},
      {L"concat('" + std::wstring(1'000'000, L'x') + L"', '')", true},
      {L"concat('a'" + repeated(L", 'a'", 100'000) + L")", true}};
  for (const auto& [query, allowed] : rows) {
    const wchar_t* const text = query.c_str();
    const std::string message = messageOf([&] { root->query(text, 0, truth); });
    const std::string expected = allowed ? "nothing was raised" : "the query nests too deep at position";
    EXPECT_NE(message.find(expected), std::string::npos) << tovin::wideToUtf8(query.substr(0, 20));
    EXPECT_TRUE(truth || !allowed) << tovin::wideToUtf8(query.substr(0, 20));
  }
}

TEST(QueryLimits, TakeNoStackByTheDepthOfTheTree) {
  constexpr unsigned depth = 1'000'000;
  const Ptr<iNode> root = withText(L"a", L"1");
  iNode* last = root.get();
  for (unsigned i = 1; i < depth; ++i) {
    const Ptr<iNode> child = withText(L"a", nullptr);
    last->appendChild(child.get());
    last = child.get();
  }
  last->setValue(tovin::StringValue(L"2"));
  int count = 0;
  for (const wchar_t* query :
       {L"count(//*)", L"count(//*//*) + 1", L"count(//*/*//*/..) + 2", L"count(//a/.)",
        L"count((//*)[last()]/ancestor-or-self::*)", L"count(//a[1])"}) {
    root->query(query, 0, count);
    EXPECT_EQ(count, static_cast<int>(depth)) << tovin::wideToUtf8(query);
  }
  EXPECT_EQ(textOf(*root, L"string(/)"), "12");
  EXPECT_EQ(textOf(*last, L"count(preceding::*) + count(following::*)"), "0");
}

// Each would take longer than anyone waits if nested predicates or steps were asked again for every way.
TEST(QueryLimits, DoNotMultiplyNestedQuestions) {
  std::string xml;
  for (int i = 0; i < 200; ++i) xml += i % 4 ? "<a><b/></a>" : "<a><a><b/></a></a>";
  const Ptr<iNode> root = treeOf("<r>" + xml + "</r>");
  bool truth = true;
  for (const wchar_t* query :
       {L"//*[.//*[.//*[.//*[.//*[.//c]]]]]", L"//*[..//*[..//*[..//*[..//*[..//*[c]]]]]]",
        L"//*//*//*//*//*//*//*//c", L"//*[//*[//*[//*[//*[//c]]]]]",
        L"//b/../*/../*/../*/../*/../*/../*/../*/c", L"//*/following::*/preceding::*/following::*/c",
        L"//b/preceding-sibling::*/following-sibling::*/ancestor::*/descendant::*/c"}) {
    EXPECT_FALSE(root->query(query, 0, truth)) << tovin::wideToUtf8(query);
  }
}

// Each would take longer than anyone waits if what is the same for all nodes were asked for again at each.
TEST(QueryLimits, DoNotRepeatWhatIsTheSameForAll) {
  constexpr int size = 40'000;
  std::string flat;
  for (int i = 0; i < size; ++i) flat += "<a x='" + std::to_string(i) + "'/>";
  const Ptr<iNode> wide = treeOf("<r>" + flat + "</r>");
  std::string open, close;
  for (int i = 0; i < size; ++i) open += "<a>", close += "</a>";
  const Ptr<iNode> deep = treeOf(open + close);
  const struct {
    const Ptr<iNode>& tree;
    const wchar_t* query;
    int count;
  } rows[] = {{wide, L"count(//a[@x = //a/@x])", size},
              {wide, L"count(//a[//a/@x = @x])", size},
              {wide, L"count(//a[@x != //a/@x])", size},
              {wide, L"count(//a[@x < //a/@x])", size - 1},
              {wide, L"count(//a[//a/@x >= @x + 1])", size - 1},
              {wide, L"count(//a[//a/@x = string(@x)])", size},
              {wide, L"count(//a[//a/@none = @x or //none != @x or //none < @x])", 0},
              {wide, L"count(//a[count(//a) = @x + 1])", 1},
              {wide, L"count(//a[sum(//a/@x) < string-length(//@x)])", 0},
              {wide, L"count(//a[(. | ../a[1])[2]])", size - 1},
              {deep, L"count(//*[(. | ..)])", size}};
  for (const auto& row : rows) {
    int count = 0;
    row.tree->query(row.query, 0, count);
    EXPECT_EQ(count, row.count) << tovin::wideToUtf8(row.query);
  }
}

}  // namespace
