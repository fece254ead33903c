#include "ztbaseclient/tools/FileDifferences.h"

#include <random>

#include "tests/ztbaseclient/tools/DiffOutcome.h"

namespace {

using namespace testsupport;
using differences::Field;
using differences::Line;

// "3/2 mass 1.5|1.6 d1" for a number of line 3 and 2, "~" before the digits when it is within tolerance;
// "+2 text", "-3 text", " 3 text".
std::string shortly(const Line& line) {
  using Kind = Line::Kind;
  if (line.kind == Kind::Added)
    return "+" + std::to_string(line.line2) + " " + std::string(line.text2) + "\n";
  if (line.kind != Kind::Changed) {
    const char* mark = line.kind == Kind::Removed ? "-" : " ";
    return mark + std::to_string(line.line1) + " " + std::string(line.text1) + "\n";
  }
  std::string text;
  for (const Field& field : line.fields) {
    EXPECT_EQ(line.text1.substr(field.at1, field.text1.size()), field.text1);
    EXPECT_EQ(line.text2.substr(field.at2, field.text2.size()), field.text2);
    text += std::to_string(line.line1) + "/" + std::to_string(line.line2) + " ";
    text += field.column ? std::string(*field.column)
                         : std::to_string(field.field1) + "/" + std::to_string(field.field2);
    text += " " + std::string(field.text1) + "|" + std::string(field.text2);
    if (field.kind == Field::Kind::Number)
      text += (field.within ? " ~" : " d") + std::to_string(field.digits);
    text += "\n";
  }
  return text;
}

struct FileDifferences : DiffOutcome {
  std::string all(const std::string& a, const std::string& b, const differences::Options& options = {}) {
    text_.clear();
    sums_ = differences::find(file("a", a).c_str(), file("b", b).c_str(), options,
                              [&](const Line& line) { text_ += shortly(line); });
    return text_;
  }
  // What the plain comparison says: 0 equal, 1 within tolerance, 2 different.
  int plain(const std::string& a, const std::string& b, int tolerance) {
    const std::string outcome = compare(a, b, tolerance);
    const bool onlyWrittenOtherwise = outcome.find("(inf ") != outcome.npos;
    return outcome == "equal" || onlyWrittenOtherwise ? 0 : outcome.starts_with("warning") ? 1 : 2;
  }

  std::string text_;
  differences::Summary sums_;
};

TEST_F(FileDifferences, FieldsAndLines) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"", "", ""},
      {"a 1.5\n", "a 1.50\r\n", ""},
      {"1.00001\n", "1.00002", "1/1 1/1 1.00001|1.00002 ~5\n"},
      {"10\n", "11\n", "1/1 1/1 10|11 d1\n"},
      {"10\n", "1e1\n", "1/1 1/1 10|1e1 d17\n"},
      {"0.0 0.0\n", "1e-120 0.001\n", "1/1 1/1 0.0|1e-120 ~17\n1/1 2/2 0.0|0.001 d0\n"},
      {"1.0e999\n", "1.00e999\n", "1/1 1/1 1.0e999|1.00e999 d17\n"},
      {"x=1.5,inf\n", "x=-1.5,nan\n", "1/1 2/2 1.5|-1.5 d0\n1/1 3/3 inf|nan d0\n"},
      {"a  b\n", "a b\n", "1/1 2/2   | \n"},
      {"a\n", "a \n", "1/1 2/2 | \n"},
      {"a b c d\n", "a c d\n", "1/1 2/0 b|\n"},
      {"a b\n", "a b x y\n", "1/1 0/3 |x\n1/1 0/4 |y\n"},
      {"a\xC2\xA0z\xC3\xBC\n", "a\xC2\xA0zu\n", "1/1 2/2 z\xC3\xBC|zu\n"},
      {"id mass\n1 1.5\n", "id mass\n1 2.5\n", "2/2 mass 1.5|2.5 d0\n"},
      {"a b\nc d\n", "a b\nc e\n", "2/2 2/2 d|e\n"},
      {"1\n2\n3\n4\n", "1\n3\n4\n", "-2 2\n"},
      {"1\n3\n4\n5\n", "1\n2\n3\n4\n5\n", "+2 2\n"},
      {"a\nb\n", "a\nb\nc\nd\n", "+3 c\n+4 d\n"},
      {"r 1.0 x\nr 2.0 y\nr 3.0 z\nr 4.0 w\n", "r 2.5 y\nr 3.0 z\nr 4.0 w\n",
       "-1 r 1.0 x\n2/1 2/2 2.0|2.5 d0\n"}};
  for (const auto& [a, b, expected] : rows) {
    EXPECT_EQ(all(a, b), expected) << a << b;
    EXPECT_EQ(sums_.isDifferent(), plain(a, b, 5) == 2) << a << b;
  }
}

TEST_F(FileDifferences, Options) {
  using differences::Options;
  const std::string table = "id,mass,state\n1,1.5,ok\n2,2.5,ok\n3,3.5,ok\n";
  const std::string other = "id,mass,state\n3,3.5,OK\n1,1.6,ok\n4,2.5,ok\n";
  const std::tuple<Options, std::string, std::string, std::string> rows[] = {
      {{.absolute = 0.2}, "5 1.0\n", "6 1.09\n", "1/1 1/1 5|6 d0\n1/1 2/2 1.0|1.09 ~1\n"},
      {{.absolute = 1}, "5 1.0\n", "6 5.0\n", "1/1 1/1 5|6 ~0\n1/1 2/2 1.0|5.0 d0\n"},
      {{.relative = 0.25}, "4\n", "5\n", "1/1 1/1 4|5 ~0\n"},
      {{.tolerance = 1, .relative = 0}, "1.0\n", "1.05\n", "1/1 1/1 1.0|1.05 ~1\n"},
      {{.tolerance = 0}, "1.0\n", "1.00000001\n", "1/1 1/1 1.0|1.00000001 d8\n"},
      {{.tolerance = 0}, "1.5 2\n", "1.50 2\v\n", "1/1 1/1 1.5|1.50 d17\n1/1 2/2 2|2\v d17\n"},
      {{.ignoreCase = true}, "Ab \xC3\x84\n", "aB \xC3\xA4\n", "1/1 2/2 \xC3\x84|\xC3\xA4\n"},
      {{.ignoreBlankLines = true}, "a\n\n \nb\n", "a\nb\n\n", ""},
      {{.ignoredColumns = {"2", "state"}}, table, "id,mass,state\n1,9,x\n2,2,x\n7,3,x\n", "4/4 id 3|7 d0\n"},
      {{.key = "id", .delimiter = ','},
       table,
       other,
       "2/3 mass 1.5|1.6 d1\n-3 2,2.5,ok\n4/2 state ok|OK\n+4 4,2.5,ok\n"},
      {{.delimiter = ';'},
       "a b;\"x;y\";1\n",
       "a c;\"x;z\";1\n",
       "1/1 1/1 a b|a c\n1/1 2/2 \"x;y\"|\"x;z\"\n"},
      {{.context = 1},
       "1\n2\n3\n4\n5\n6\n7\n",
       "1\nx\n3\n4\n5\n6\ny\n",
       " 1 1\n2/2 1/1 2|x\n 3 3\n 6 6\n7/7 1/1 7|y\n"}};
  for (const auto& [options, a, b, expected] : rows) EXPECT_EQ(all(a, b, options), expected) << a << b;
  EXPECT_ANY_THROW(all(table, other, {.key = "none"}));
  EXPECT_ANY_THROW(all(table, other, {.ignoredColumns = {"0"}}));
  EXPECT_ANY_THROW(differences::find(L"/no/such/file", L"/no/such/file", {}, [](const Line&) {}));
}

// Tables with some lines changed, gone or new: the verdict is that of the plain comparison, and with all
// lines as context the second table comes out whole.
TEST_F(FileDifferences, AgreeWithThePlainComparisonAndMakeOneTableOfTheOther) {
  std::minstd_rand random(3);
  const auto pick = [&](unsigned most) { return static_cast<unsigned>(random() % most); };
  int verdicts[3] = {};
  for (int round = 0; round < 400; ++round) {
    const unsigned rate = 2 + pick(400), distinct = 2 + pick(300), kinds = round % 2 == 0 ? 2 : 8;
    std::string a, b;
    for (unsigned i = 0, count = pick(300); i < count; ++i) {
      const std::string line =
          "r" + std::to_string(pick(distinct)) + " 1.0000" + std::to_string(pick(9)) + "\n";
      a += line;
      const unsigned kind = pick(rate) == 0 ? pick(kinds) : 9;
      if (kind == 0) b += line.substr(0, line.size() - 2) + "5\n";
      if (kind == 1) b += line.substr(0, line.size() - 1) + "00\n";
      if (kind == 2) b += line.substr(0, line.size() - 4) + "77\n";
      if (kind == 3) b += "new" + line + line;
      if (kind == 4) b += "other text\n";
      if (kind == 5) b += line + "\n";
      if (kind > 6) b += line;
    }
    const int tolerance = round % 8 == 3 ? 0 : 5;
    const int verdict = plain(a, b, tolerance);
    ++verdicts[verdict];
    std::string made;
    const auto visit = [&](const Line& line) {
      if (line.kind != Line::Kind::Removed) (made += line.text2) += '\n';
    };
    const auto sums = differences::find(file("a", a).c_str(), file("b", b).c_str(),
                                        {.tolerance = tolerance, .context = 1000}, visit);
    EXPECT_EQ(sums.isDifferent() ? 2 : sums.within > 0, verdict) << a << "----\n" << b;
    EXPECT_FALSE(sums.alignedByBlocks);
    if (sums.within > 0 || sums.isDifferent()) {
      EXPECT_EQ(made, b) << a;
    }
  }
  for (const int count : verdicts) EXPECT_GT(count, 10);
}

TEST_F(FileDifferences, OfManyLinesAreFewWhereFewLinesDiffer) {
  std::string a, b, c;
  for (int i = 0; i < 20'000; ++i) {
    const std::string line = std::to_string(i) + " " + std::to_string(i * 7 % 100) + ".25";
    a += line + "\n";
    if (i < 5000 || i >= 6000) b += line + (i == 9000 ? "x" : "") + "\n";
    c += "other " + std::to_string(i) + "\n";
  }
  all(a, b);
  EXPECT_EQ(sums_.removed, 1000);
  EXPECT_EQ(sums_.added, 0);
  EXPECT_EQ(sums_.different, 1);
  EXPECT_FALSE(sums_.alignedByBlocks);
  all(a, c);
  EXPECT_TRUE(sums_.alignedByBlocks);
  EXPECT_EQ(sums_.different, 40'000);
}

}  // namespace
