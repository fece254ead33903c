#include "tests/support/Bytes.h"
#include "tovin/HashMap.h"
#include "tovin/Ptr.h"
#include "tovin/values/DoubleValue.h"
#include "ztbaseclient/data/CPropertyCollectionData.h"
#include "ztcore/ztUniqueStrings.h"

namespace {

using namespace testsupport;

// A storage with one property a letter of the text, by that name.
struct Storage {
  explicit Storage(const std::wstring& names) {
    for (wchar_t name : names) data.MakeNewPropertyWithCopiedValue(std::wstring(1, name).c_str(), nullptr);
  }
  std::wstring order() const {
    std::wstring names;
    for (unsigned i = 0; i < data.GetNumProperties(); ++i)
      names += data.GetProperty(static_cast<int>(i))->getName();
    return names;
  }
  CPropertyCollectionData data;
};

TEST(PropertyStorage, UpToNineAnswerWithTheFirstOfEqualNamesAndTenWithTheLast) {
  Storage nine(L"axAyzbcde");
  EXPECT_EQ(nine.data.GetIndex(L"A"), 0);
  EXPECT_EQ(nine.data.GetNumHashBuckets(), 0u);
  Storage ten(L"axAyzbcdef");
  EXPECT_EQ(ten.data.GetIndex(L"a"), 2);
  EXPECT_EQ(ten.data.GetNumHashBuckets(), 31u);
  ten.data.RemoveProperty(9);
  EXPECT_EQ(ten.data.GetIndex(L"a"), 0);
}

TEST(PropertyStorage, FoldsOnlyAsciiLettersInBothPaths) {
  for (const wchar_t* rest : {L"", L"0123456789"}) {
    Storage storage(std::wstring(L"B\xC9") + rest);
    EXPECT_EQ(storage.data.GetIndex(L"b"), 0);
    EXPECT_EQ(storage.data.GetIndex(L"\xC9"), 1);
    EXPECT_EQ(storage.data.GetIndex(L"\xE9"), -1);
    EXPECT_EQ(storage.data.GetIndex(nullptr), -1);
    storage.data.MakeNewPropertyWithCopiedValue(nullptr, nullptr);
    EXPECT_EQ(storage.data.GetIndex(nullptr), static_cast<int>(storage.data.GetNumProperties()) - 1);
  }
}

TEST(PropertyStorage, TheIndexFollowsEveryChange) {
  Storage storage(L"abcdefghijkl");
  EXPECT_EQ(storage.data.GetIndex(L"l"), 11);
  storage.data.RemoveProperty(0);
  EXPECT_EQ(storage.data.GetIndex(L"l"), 10);
  storage.data.ReorderProperty(10, 0);
  EXPECT_EQ(storage.data.GetIndex(L"l"), 0);
  storage.data.SetName(0, L"z");
  EXPECT_EQ(storage.data.GetIndex(L"l"), -1);
  EXPECT_EQ(storage.data.GetIndex(L"Z"), 0);
  storage.data.MakeNewPropertyWithCopiedValue(L"new", nullptr);
  EXPECT_TRUE(storage.data.HashUpToDate());
  EXPECT_EQ(storage.data.GetIndex(L"NEW"), 11);
}

TEST(PropertyStorage, FindsByNameWhateverWasRenamedRemovedAndMovedBetween) {
  constexpr unsigned size = 3000;
  Storage storage(L"");
  const size_t names = ztUniqueStrings::GetCount();
  std::vector<std::wstring> model;
  for (unsigned i = 0; i < size; ++i) {
    model.push_back(L"gone" + std::to_wstring(i));
    storage.data.MakeNewPropertyWithCopiedValue(model.back().c_str(), nullptr);
  }
  // Every look-up between two changes: made anew each time, the index would take hours.
  uint32_t random = 1;
  for (unsigned step = 0; model.size() > 5; ++step) {
    random = random * 1664525 + 1013904223;
    const unsigned at = step % 4 == 0 ? 0 : (random >> 8) % static_cast<unsigned>(model.size());
    ASSERT_EQ(storage.data.GetIndex(model[at].c_str()), static_cast<int>(at)) << step;
    if (step % 3 == 0) {
      const std::wstring renamed = model[at] + L"!";
      if (step % 1000 == 0)
        storage.data.GetProperty(static_cast<int>(at))->SetName(renamed.c_str());
      else
        storage.data.SetName(at, renamed.c_str());
      ASSERT_EQ(storage.data.GetIndex(model[at].c_str()), -1) << step;
      model[at] = renamed;
      ASSERT_EQ(storage.data.GetIndex(renamed.c_str()), static_cast<int>(at)) << step;
    } else {
      storage.data.RemoveProperty(at);
      ASSERT_EQ(storage.data.GetIndex(model[at].c_str()), -1) << step;
      model.erase(model.begin() + at);
    }
  }
  storage.data.Clear();
  // The first names that properties bring into a process are kept on purpose, but no changed ones beyond.
  EXPECT_LE(ztUniqueStrings::GetCount(), names + 10'000);
}

TEST(PropertyStorage, AnEntryBeyondTheEndIsNobodys) {
  Storage storage(L"abcdefghijkl");
  EXPECT_EQ(storage.data.GetIndex(L"a"), 0);
  storage.data.AddToHash(L"ghost", 5000);
  EXPECT_EQ(storage.data.GetProperty(L"ghost"), nullptr);
  storage.data.AddToHash(L"alias", 3);
  EXPECT_EQ(storage.data.GetIndex(L"alias"), 3);
}

TEST(PropertyStorage, The24thNameGrowsTheIndexTo67Buckets) {
  tovin::HashMap<int, int> map;
  for (int i = 0; i < 23; ++i) map.put(i, i);
  EXPECT_EQ(map.getNumBuckets(), 31u);
  map.put(22, 0);  // replaces, so nothing grows
  EXPECT_EQ(map.getNumBuckets(), 31u);
  map.put(23, 23);
  EXPECT_EQ(map.getNumBuckets(), 67u);
  for (int i = 24; i < 51; ++i) map.put(i, i);
  EXPECT_EQ(map.getNumBuckets(), 137u);
}

TEST(PropertyStorage, ReordersBySwapping) {
  const std::tuple<const wchar_t*, CPropertyCollectionData::NameList, bool, bool, const wchar_t*> rows[] = {
      {L"abc", {L"c", L"a"}, false, true, L"ca"},
      {L"abcd", {L"d"}, false, false, L"dbca"},
      {L"abcd", {L"d", L"c"}, false, false, L"dcba"},
      {L"abc", {L"c", L"C", L"a"}, false, false, L"cab"},
      {L"abc", {L"x", L"b"}, false, true, L"b"},
      {L"a", {L"x"}, true, false, L"xa"},
      {L"abc", {L"x", L"b"}, true, true, L"xb"},
      {L"abcdefghijkl", {L"l", L"a", L"x"}, true, false, L"laxdefghijkbc"},
      {L"abc", {}, false, true, L""}};
  for (const auto& [before, names, createMissing, removeOthers, after] : rows) {
    Storage storage(before);
    storage.data.GetIndex(L"a");
    storage.data.ReorderProperties(names, createMissing, removeOthers);
    EXPECT_EQ(storage.order(), after) << before;
    for (unsigned i = 0; i < storage.data.GetNumProperties(); ++i) {
      EXPECT_EQ(storage.data.GetIndex(storage.data.GetProperty(static_cast<int>(i))->getName()),
                static_cast<int>(i));
    }
  }
}

TEST(PropertyStorage, AnIndexBeyondTheEndNamesTheLastValidOne) {
  Storage storage(L"ab");
  const auto expectIndex = [](int index, auto&& body) {
    expectMessage(tovin::format(L"Invalid index %d, the last valid index is 1", index), body);
  };
  expectIndex(2, [&] { storage.data.GetProperty(2); });
  expectIndex(-1, [&] { storage.data.GetProperty(-1); });
  expectIndex(2, [&] { storage.data.GetValue(2); });
  expectIndex(2, [&] { storage.data.RemoveProperty(2); });
  expectIndex(5, [&] { storage.data.ReorderProperty(5, 0); });
  expectIndex(9, [&] { storage.data.SetName(9, L"x"); });
  storage.data.ReorderProperty(7, 7);
  storage.data.ReorderProperty(0, 1);
  EXPECT_EQ(storage.order(), L"ba");
}

TEST(PropertyStorage, CopyingCopiesTheValues) {
  Storage storage(L"ab");
  storage.data.GetProperty(L"a")->setValue(1.5);
  CPropertyCollectionData copy(storage.data);
  storage.data.GetProperty(L"a")->setValue(2.5);
  EXPECT_TRUE(copy.GetValue(0).equals(tovin::DoubleValue(1.5)));
  copy = copy;
  EXPECT_EQ(copy.GetNumProperties(), 2u);
}

TEST(HashMap, WithoutBucketsRefusesEveryOperation) {
  tovin::HashMap<int, int> map(0);
  expectMessage(L"Tried to find in a hash map with 0 buckets", [&] { map.find(1); });
  expectMessage(L"Tried to put into a hash map with 0 buckets", [&] { map.put(1, 1); });
  expectMessage(L"Tried to remove from hash map with 0 buckets", [&] { map.remove(1); });
  expectMessage(L"Cannot resize a hash map to 0", [&] { map.resize(0); });
  map.resize(1);
  map.put(1, 5);
  EXPECT_EQ(*map.find(1), 5);
}

// Every name of "ba" and "a\x80" pieces has the same name hash.
TEST(HashMap, FindsNamesThatWereChosenToCollide) {
  tovin::HashMap<tovin::WideString, int, tovin::FoldedNameTraits> map;
  const auto name = [](int number) {
    std::wstring text;
    for (int bit = 0; bit < 12; ++bit) text += number >> bit & 1 ? L"ba" : L"a\x80";
    return tovin::WideString(text);
  };
  ASSERT_EQ(tovin::hashFolded(name(0).c_str()), tovin::hashFolded(name(4095).c_str()));
  for (int i = 0; i < 4096; ++i) EXPECT_TRUE(map.put(name(i), i));
  for (int i = 0; i < 4096; ++i) ASSERT_EQ(*map.find(name(i)), i);
  EXPECT_TRUE(map.remove(name(7)));
  EXPECT_EQ(map.find(name(7)), nullptr);
  map.clear();
  EXPECT_TRUE(map.put(L"plain", 1));
  EXPECT_TRUE(map.find(L"PLAIN"));
}

TEST(HashMap, KeepsTheOthersWhenEntriesComeAndGo) {
  tovin::HashMap<unsigned, unsigned> map;
  std::vector<bool> there(200);
  unsigned random = 1;
  for (int step = 0; step < 20'000; ++step) {
    random = random * 1664525 + 1013904223;
    const unsigned key = random >> 16 & 0x7F;
    const bool put = random & 1;
    const bool changed = put ? map.put(key, key * 3) : map.remove(key);
    EXPECT_EQ(changed, put != there[key]);
    there[key] = put;
    if (step % 1000 == 0) map.resize(17 + static_cast<unsigned>(step % 90));
  }
  size_t count = 0;
  for (unsigned key = 0; key < 128; ++key) {
    const unsigned* value = map.find(key);
    EXPECT_EQ(value != nullptr, there[key]);
    EXPECT_EQ(value ? *value : key * 3, key * 3);
    count += there[key];
  }
  EXPECT_EQ(map.getSize(), count);
  size_t seen = 0;
  map.forEach([&](unsigned, unsigned) { ++seen; });
  EXPECT_EQ(seen, count);
}

}  // namespace
