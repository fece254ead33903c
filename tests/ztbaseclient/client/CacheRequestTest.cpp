#include "ztbaseclient/client/CCacheRequest.h"

#include <gtest/gtest.h>

#include "tovinCore/Format.h"

namespace {

using tovin::WideString;

using Given = std::vector<std::pair<const wchar_t*, const wchar_t*>>;

// Takes them, and returns the error, "" for none.
std::wstring populate(CCacheRequest& request, const Given& given, unsigned required = 0) {
  CCacheRequest::Arguments arguments;
  for (const auto& [name, value] : given) arguments.put(WideString(name), WideString(value));
  WideString error;
  const bool accepted = request.PopulateFromArguments(arguments, required, error);
  EXPECT_EQ(accepted, error.isEmpty());
  return std::wstring(error.view());
}

std::wstring parameters(const CCacheRequest& request, unsigned mask) {
  WideString buffer(L"?");
  request.AddToURLParameterBuffer(buffer, mask);
  return std::wstring(buffer.view());
}

TEST(CacheRequest, ArgumentsAreCheckedAgainstTheRequired) {
  const std::tuple<Given, unsigned, const wchar_t*> rows[] = {
      {{}, 0, L""},
      {{{L"USER", L"alice"}, {L"JobID", L"7"}}, 0x3, L""},
      {{{L"unknown", L""}, {nullptr, L"x"}}, 0, L""},
      {{{L"user", L""}}, 0, L"The user name is empty"},
      {{{L"user", nullptr}}, 0, L"The user name is empty"},
      {{{L"jobid", L""}, {L"user", L""}}, 0, L"The job id is empty"},
      {{{L"cacheid", L""}}, 0, L"The cache id is empty"},
      {{{L"recnum", L""}}, 0, L"The cache record number is empty"},
      {{{L"prop", L""}}, 0, L"The property name is empty"},
      {{{L"compattr", L""}}, 0, L"The component attributes are empty"},
      {{{L"displayattr", L""}}, 0, L"The display attributes are empty"},
      {{{L"recordtype", L""}}, 0, L"The record type is empty"},
      {{{L"node", L""}, {L"DISPLAYEDRECS", L""}}, 0x100, L""},
      {{{L"user", L"a"}}, 0x43, L"Missing argument(s): jobid recnum"},
      {{}, 0x777, L"Missing argument(s): user jobid cacheid recnum node displayattr compattr recordtype"},
      // These have no name in the list.
      {{}, 0x200, L"Missing argument(s):"},
      {{{L"prop", L"0"}}, 0x208, L"Missing argument(s):"}};
  for (const auto& [given, required, error] : rows) {
    CCacheRequest request;
    EXPECT_EQ(populate(request, given, required), error);
  }
}

TEST(CacheRequest, ParametersKeepTheirOrderAndAreEncoded) {
  CCacheRequest request;
  ASSERT_EQ(populate(request, {{L"prop", L"-3"},
                               {L"node", L"0,1"},
                               {L"recnum", L"12x"},
                               {L"displayattr", L"2;4"},
                               {L"compattr", L"c 1;3;5:6;t"},
                               {L"cacheid", L"c&d"},
                               {L"jobid", L"7"},
                               {L"user", L"\xE9"}}),
            L"");
  EXPECT_EQ(parameters(request, ~0u),
            L"?user=%C3%A9&jobid=7&cacheid=c%26d&compattr=c%201%3B3%3B5%3A6%3Bt&displayattr=2%3B4&recnum=12"
            L"&node=0%2C1&prop=-3");
  EXPECT_EQ(parameters(request, CCacheRequest::JobID | CCacheRequest::Property), L"?&jobid=7&prop=-3");
  EXPECT_EQ(parameters(request, 0), L"?");
  EXPECT_TRUE(request.GetJobParams() == L"user=%C3%A9&jobid=7&cacheid=c%26d");
}

TEST(CacheRequest, WhatWasTakenBeforeTheErrorStays) {
  CCacheRequest request;
  populate(request, {{L"user", L"a"}, {L"jobid", L""}, {L"cacheid", L"c"}});
  EXPECT_EQ(request.GetArguments(), CCacheRequest::User);
  EXPECT_STREQ(request.GetUserNameW(), L"a");
  EXPECT_EQ(request.GetCacheID(), nullptr);
}

TEST(CacheRequest, ComponentAttributesAreReadAsFarAsTheyGo) {
  // Identifier, pass and fail port, sizes of their records, tag.
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"c1;3;5:6;t;u", L"c1 1 1 5 6 t;u"},
                                                            {L"c1;2;:6", L"c1 0 1 0 6 "},
                                                            {L"c1", L"c1 0 0 0 0 "},
                                                            {L";;;", L" 0 0 0 0 "}};
  for (const auto& [text, fields] : rows) {
    CCacheComponentAttr attr;
    attr.Parse(text);
    EXPECT_STREQ(attr.Serialize(), text);
    EXPECT_EQ(
        tovin::format(L"%ls %d %d %d %d %ls", attr.GetRunTimeID(), attr.HasPassPort(), attr.HasFailPort(),
                      attr.GetPassRecordSize(), attr.GetFailRecordSize(), attr.GetTagProp()),
        fields);
  }
}

TEST(DisplayAttr, FieldsAreTakenAsFarAsTheyGo) {
  // View type, data group, page size, page, image state; whether only pass or fail data or globals are shown.
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {{nullptr, L"1 2 10 1 1 1 0 0"},
                                                            {L"", L"1 2 10 1 1 1 0 0"},
                                                            {L"2;4", L"2 4 10 1 1 0 1 0"},
                                                            {L"3;8;20;4;text;7;9", L"3 8 20 4 7 1 1 1"},
                                                            {L";", L"0 0 10 1 1 1 1 0"},
                                                            {L"1;6;x;-2;;", L"1 6 0 -2 0 0 0 0"},
                                                            {L"99999999999", L"2147483647 2 10 1 1 1 0 0"}};
  CCacheDisplayAttr attr;
  for (const auto& [text, fields] : rows) {
    attr.SetDisplayAttr(text);
    EXPECT_STREQ(attr.Serialize(), text);
    EXPECT_EQ(tovin::format(L"%d %d %d %d %d %d %d %d", attr.GetViewType(), attr.GetDataGroup(),
                            attr.GetPageSize(), attr.GetDisplayPageNum(), attr.GetImageState(),
                            attr.DisplayPassDataOnly(), attr.DisplayFailDataOnly(), attr.DisplayGlobals()),
              fields);
  }
  attr.SetDisplayAttr(attr.Serialize());
  EXPECT_STREQ(attr.Serialize(), L"99999999999") << "out of itself";
  WideString all;
  CCacheDisplayAttr::GetDefaultDisplayAttr(25, all);
  EXPECT_EQ(all, L"1;6;25;1;;1");
}

}  // namespace
