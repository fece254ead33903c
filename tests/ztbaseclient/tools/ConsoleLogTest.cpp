#include <random>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "tovin/Constants.h"
#include "ztbaseclient/tools/CConsoleEntry.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztcore/ztMemoryStringFile.h"

namespace {

using namespace testsupport;

std::wstring textOf(const CConsoleEntry& entry) {
  std::wstring text;
  for (const auto& pair : entry.GetPairs())
    text += std::wstring(pair.name) + L"=" + std::wstring(pair.value) + L"|";
  return text;
}

const std::wstring begin = std::wstring(L"at 12:00 ") + tovin::DRV_ConsoleEntryBegin + L" 7\n";
const std::wstring end = std::wstring(tovin::DRV_ConsoleEntryEnd) + L"\n";

struct ConsoleLog : FolderTest {
  static std::wstring rest(CConsoleReader& reader) {
    std::wstring text;
    CConsoleEntry entry;
    while (reader.GetNextEntry(entry)) text += L"[" + textOf(entry) + L"]";
    return text;
  }
  static std::wstring readAll(const std::wstring& log) {
    ztMemoryStringFile file(log.c_str());
    CConsoleReader reader(file, 0);
    const std::wstring text = rest(reader);
    EXPECT_EQ(reader.GetPosition(), file.GetLength());
    return text;
  }
};

TEST_F(ConsoleLog, EntriesStandBetweenTheirMarkers) {
  const std::pair<std::wstring, const wchar_t*> cases[] = {
      {L"", L""},
      {L"noise\nname\tvalue\n", L""},
      {L"noise\n" + begin + L"a\t1\nA\t2\n" + end + L"b\t3\n" + begin + end, L"[a=1|A=2|][]"},
      {begin + L"a\t1", L"[a=1|]"},
      {begin + L"a\t1\n" + begin + L"b\t2\n" + end, L"[a=1|b=2|]"},
      {begin + L"\tvalue\nno tab\n\t \nname\t\n" + end, L"[]"},
      {begin + L" \xA0 a\tb\tc \r\n\t\xA0x y\tz\xA0\n" + end, L"[a=b\tc|x y=z|]"},
      {begin + L"a%tb\t%p%n%%n%\nc%x\t%\n" + end, L"[a\tb=%\n%\n%|c%x=%|]"},
      {L"x" + begin.substr(0, begin.size() - 1) + end + L"a\t1\n" + end, L"[a=1|]"}};
  for (const auto& [log, entries] : cases) EXPECT_EQ(readAll(log), entries);
}

TEST_F(ConsoleLog, DecodingTakesBothEndsIn) {
  struct Reader : CConsoleReader {
    Reader() : CConsoleReader(nullptr, 0) {}
    using CConsoleReader::Decode;
  } reader;
  const std::tuple<unsigned, unsigned, const wchar_t*> cases[] = {
      {0, 5, L"a%b\n"}, {0, 4, L"a%b%"}, {3, 3, L"b"}, {4, 99, L"\n"}, {6, 6, L""}, {3, 2, L""}};
  for (const auto& [from, to, text] : cases) {
    tovin::WideString out(L"before");
    reader.Decode(L"a%pb%n", from, to, out);
    EXPECT_EQ(out, text) << from;
  }
}

// The log is cut at every byte, read, completed, and read on from where to resume.
TEST_F(ConsoleLog, AGrowingLogLosesAndRepeatsNothing) {
  const std::wstring log = L"x\n" + begin + L"a\t1\x20AC\r\n" + end + L"noise\n" + begin + L"b\t2\n" + end;
  for (const std::string& bytes : {tovin::wideToUtf8(log), "\xFF\xFE" + utf16(log)}) {
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
      const std::wstring name = file("log", bytes.substr(0, cut));
      CConsoleReader reader(name.c_str(), 0);
      std::wstring text;
      CConsoleEntry entry;
      while (reader.GetNextEntry(entry)) {
        if (!reader.WasEntryComplete()) continue;
        text += L"[" + textOf(entry) + L"]";
        EXPECT_EQ(reader.GetPosition(), reader.GetResumePosition());
      }
      EXPECT_EQ(reader.GetPosition(), static_cast<int64_t>(cut));
      folder_.append("log", bytes.substr(cut));
      CConsoleReader resumed(name.c_str(), reader.GetResumePosition());
      EXPECT_EQ(text + rest(resumed), L"[a=1\x20AC|][b=2|]") << cut;
    }
  }
}

TEST_F(ConsoleLog, ACutOffEntryIsGivenOnceAndAMarkerCutInTwoIsFound) {
  ztMemoryStringFile log((begin + L"a\t1\nb").c_str());
  CConsoleReader reader(log, 0);
  EXPECT_EQ(rest(reader), L"[a=1|]");
  EXPECT_FALSE(reader.WasEntryComplete());
  log.Append((L"\t2\n" + end + begin.substr(0, 14)).c_str());
  EXPECT_EQ(rest(reader), L"");
  EXPECT_EQ(reader.GetPosition(), log.GetLength());
  log.Append((begin.substr(14) + L"c\t3\n" + end).c_str());
  EXPECT_EQ(rest(reader), L"[c=3|]");
}

// Of lines at random, over several pieces of the file: as wide text, as it is visited, and in memory.
TEST_F(ConsoleLog, AFileReadsLikeItsTextInMemory) {
  const std::wstring lines[] = {begin,          end,         L"a\t1\n",     L"b%n\t50%p\n", L"noise\n",
                                L"x\t\x20AC\n", L"c\tw\r\n", L" d \t e \n", L"f\t%q%\n",    L"\n",
                                L"\tg\n",       end};
  std::minstd_rand random(7);
  std::wstring log;
  while (log.size() < 600'000) log += lines[random() % std::size(lines)];
  const std::wstring name = file("log", tovin::wideToUtf8(log));
  CConsoleReader reader(name.c_str(), 0), visited(name.c_str(), 0);
  std::string visits;
  const auto visit = [&](std::string_view n, std::string_view v) { ((visits += n) += "=").append(v) += "|"; };
  std::wstring inMemory = readAll(log);
  EXPECT_EQ(rest(reader), inMemory);
  for (visits = "["; visited.VisitNextEntry(visit); visits += "][") continue;
  EXPECT_EQ(visits, tovin::wideToUtf8(inMemory) + "[");
  EXPECT_EQ(visited.GetResumePosition(), reader.GetResumePosition());
}

// Outside of entries it is noise like any other line.
TEST_F(ConsoleLog, ALineThatIsTooLongGivesItsEntryUpOnce) {
  const std::string entry = tovin::wideToUtf8(begin + L"a\t1\n" + end), tooLong((1 << 24) + 1, 'x');
  const std::string cut = tovin::wideToUtf8(begin) + tooLong + "\n" + tovin::wideToUtf8(end);
  const std::wstring name = file("long.log", entry + tooLong + "\n" + cut + entry);
  CConsoleReader reader(name.c_str(), 0);
  EXPECT_ANY_THROW(rest(reader));
  CConsoleReader other(name.c_str(), reader.GetResumePosition());
  EXPECT_EQ(rest(reader), L"[a=1|]");
  EXPECT_EQ(rest(other), L"[a=1|]");
}

TEST_F(ConsoleLog, ACopyTakesTheSourceOver) {
  ztMemoryStringFile log((begin + L"a\t1\n" + end + begin + L"b\t2\n" + end).c_str());
  CConsoleReader first(log, 0);
  CConsoleEntry entry;
  EXPECT_TRUE(first.GetNextEntry(entry));
  CConsoleReader second(first);
  EXPECT_FALSE(first.GetNextEntry(entry));
  EXPECT_EQ(first.GetPosition(), 0);
  first = second;
  EXPECT_EQ(rest(second), L"");
  EXPECT_EQ(rest(first), L"[b=2|]");
}

TEST_F(ConsoleLog, WithoutAFileThereAreNoEntries) {
  for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L"/no/such/file"}) {
    CConsoleReader reader(name, 5);
    CConsoleEntry entry;
    EXPECT_FALSE(reader.GetNextEntry(entry));
    EXPECT_EQ(reader.GetPosition(), 0);
  }
}

TEST(ConsoleEntry, NamesFoldAsciiAndNullIsAName) {
  CConsoleEntry entry;
  entry.SetValue(L"State", L"one");
  entry.SetValue(L"\xC4", L"umlaut");
  entry.SetValue(nullptr, nullptr);
  entry.SetValue(L"sTATE", entry.FindValue(L"\xC4"));
  EXPECT_EQ(entry.GetPairs().getSize(), 3u);
  EXPECT_STREQ(entry.FindValue(L"state"), L"umlaut");
  EXPECT_EQ(entry.FindValue(L"\xE4"), nullptr);
  entry.SetValue(nullptr, L"of null");
  EXPECT_STREQ(entry.FindValue(nullptr), L"of null");
  EXPECT_EQ(entry.FindValue(L""), nullptr);
  entry.RemoveValue(L"STATE");
  entry.RemoveValue(L"STATE");
  EXPECT_EQ(entry.FindValue(L"state"), nullptr);
  EXPECT_EQ(entry.GetPairs().getSize(), 2u);
}

}  // namespace
