#include "tovinCore/Exception.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tovinCore/Guard.h"

namespace {

using tovin::CatchClass;
using tovin::Exception;
using tovin::guarded;

TEST(Guard, NamesEachCallOnTheWayOutAndKeepsTheClass) {
  try {
    guarded({"Outer", "call"}, [] {
      guarded({"Inner", "step(txt)"}, [] { throw tovin::InvalidIndexException(7, 3); });
    });
    FAIL();
  } catch (const tovin::InvalidIndexException& e) {
    EXPECT_EQ(e.getIndex(), 7);
    EXPECT_EQ(e.getLastIndex(), 3);
    ASSERT_EQ(e.getTrail().size(), 2u);
    EXPECT_STREQ(e.getTrail()[0].className, "Inner");
    EXPECT_STREQ(e.getTrail()[0].method, "step(txt)");
    EXPECT_EQ(e.getTrail()[1].catchClass, CatchClass::framework);
    EXPECT_STREQ(e.what(),
                 "Invalid index 7, the last valid index is 3\n  in Inner::step(txt)\n  in Outer::call");
  }
}

TEST(Guard, TurnsAForeignExceptionIntoASevereOne) {
  const auto expectSevere = [](auto&& thrown, const wchar_t* message) {
    try {
      guarded({"C", "m"}, [&] { throw thrown; });
      FAIL();
    } catch (const Exception& e) {
      EXPECT_STREQ(e.getMessage(), message);
      ASSERT_EQ(e.getTrail().size(), 1u);
      EXPECT_EQ(e.getTrail()[0].catchClass, CatchClass::severe);
    }
  };
  expectSevere(std::runtime_error("broken"), L"broken");
  expectSevere(42, L"Unknown exception");
}

TEST(Guard, NothingPassesOutOfADestruction) {
  tovin::guardedDestruction("C", [] { throw Exception(L"x"); });
  tovin::guardedDestruction("C", [] { throw 1; });
}

TEST(Exception, CopiesShareUntilOneChanges) {
  Exception original(L"Property %ls already exists\n", L"a");
  const Exception copy(original);
  original.appendMessage(std::wstring(L"more"));
  original.appendMessage(CatchClass::framework, "C", "m");
  EXPECT_STREQ(copy.getMessage(), L"Property a already exists\n");
  EXPECT_TRUE(copy.getTrail().empty());
  EXPECT_STREQ(original.getMessage(), L"Property a already exists\n\nmore");
  original.clear();
  EXPECT_STREQ(original.what(), "");
}

TEST(Exception, APlainTextIsNoPattern) { EXPECT_STREQ(Exception(L"100%d").getMessage(), L"100%d"); }

TEST(Exception, WarningsGoToTheHandler) {
  std::wstring heard;
  const auto before = Exception::setWarningHandler([&](const wchar_t* message) { heard = message; });
  Exception::warn(L"ignoring port %ls", L"P");
  Exception::setWarningHandler(before);
  EXPECT_EQ(heard, L"ignoring port P");
}

}  // namespace
