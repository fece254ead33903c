#include "ztbaseclient/client/CCacheRequest.h"

#include <gtest/gtest.h>

namespace {

using tovin::WideString;

struct Given {
  const wchar_t *name, *value;
};

CCacheRequest::Arguments toArguments(const std::vector<Given>& given) {
  CCacheRequest::Arguments arguments;
  for (const Given& each : given) arguments.put(WideString(each.name), WideString(each.value));
  return arguments;
}

std::wstring parameters(const CCacheRequest& request, unsigned mask) {
  WideString buffer(L"?");
  request.AddToURLParameterBuffer(buffer, mask);
  return std::wstring(buffer.view());
}

TEST(CacheRequest, ArgumentsAreCheckedAgainstTheRequired) {
  const struct {
    std::vector<Given> given;
    unsigned required;
    const wchar_t* error;  // null: accepted
  } rows[] = {
      {{}, 0, nullptr},
      {{{L"USER", L"alice"}, {L"JobID", L"7"}}, 0x3, nullptr},
      {{{L"unknown", L""}, {nullptr, L"x"}}, 0, nullptr},
      {{{L"user", L""}}, 0, L"The user name is empty"},
      {{{L"user", nullptr}}, 0, L"The user name is empty"},
      {{{L"jobid", L""}, {L"user", L""}}, 0, L"The job id is empty"},
      {{{L"cacheid", L""}}, 0, L"The cache id is empty"},
      {{{L"recnum", L""}}, 0, L"The cache record number is empty"},
      {{{L"prop", L""}}, 0, L"The property name is empty"},
      {{{L"compattr", L""}}, 0, L"The component attributes are empty"},
      {{{L"displayattr", L""}}, 0, L"The display attributes are empty"},
      {{{L"recordtype", L""}}, 0, L"The record type is empty"},
      {{{L"node", L""}, {L"DISPLAYEDRECS", L""}}, 0x100, nullptr},
      {{{L"user", L"a"}}, 0x43, L"Missing argument(s): jobid recnum"},
      {{}, 0x777, L"Missing argument(s): user jobid cacheid recnum node displayattr compattr recordtype"},
      // These have no name in the list.
      {{}, 0x200, L"Missing argument(s):"},
      {{{L"prop", L"0"}}, 0x208, L"Missing argument(s):"}};
  for (const auto& row : rows) {
    CCacheRequest request;
    WideString error;
    EXPECT_EQ(request.PopulateFromArguments(toArguments(row.given), row.required, error), !row.error);
    EXPECT_EQ(std::wstring(error.view()), row.error ? row.error : L"");
  }
}

TEST(CacheRequest, ParametersKeepTheirOrderAndAreEncoded) {
  CCacheRequest request;
  WideString error;
  ASSERT_TRUE(request.PopulateFromArguments(toArguments({{L"prop", L"-3"},
                                                         {L"node", L"0,1"},
                                                         {L"recnum", L"12x"},
                                                         {L"displayattr", L"2;4"},
                                                         {L"compattr", L"c 1;3;5:6;t"},
                                                         {L"cacheid", L"c&d"},
                                                         {L"jobid", L"7"},
                                                         {L"user", L"\xE9"}}),
                                            0, error));
  EXPECT_EQ(parameters(request, ~0u),
            L"?user=%C3%A9&jobid=7&cacheid=c%26d&compattr=c%201%3B3%3B5%3A6%3Bt&displayattr=2%3B4&recnum=12&"
            L"node=0%2C1"
            L"&prop=-3");
  EXPECT_EQ(parameters(request, CCacheRequest::JobID | CCacheRequest::Property), L"?&jobid=7&prop=-3");
  EXPECT_EQ(parameters(request, 0), L"?");
  EXPECT_TRUE(request.GetJobParams() == L"user=%C3%A9&jobid=7&cacheid=c%26d");
}

TEST(CacheRequest, WhatWasTakenBeforeTheErrorStays) {
  CCacheRequest request;
  WideString error;
  EXPECT_FALSE(request.PopulateFromArguments(
      toArguments({{L"user", L"a"}, {L"jobid", L""}, {L"cacheid", L"c"}}), 0, error));
  EXPECT_EQ(request.GetArguments(), CCacheRequest::User);
  EXPECT_STREQ(request.GetUserNameW(), L"a");
  EXPECT_EQ(request.GetCacheID(), nullptr);
}

TEST(CacheRequest, ComponentAttributesAreReadAsFarAsTheyGo) {
  const struct {
    const wchar_t *text, *id;
    bool pass, fail;
    int passSize, failSize;
    const wchar_t* tag;
  } rows[] = {{L"c1;3;5:6;t;u", L"c1", true, true, 5, 6, L"t;u"},
              {L"c1;2;:6", L"c1", false, true, 0, 6, L""},
              {L"c1", L"c1", false, false, 0, 0, L""},
              {L";;;", L"", false, false, 0, 0, L""}};
  for (const auto& row : rows) {
    CCacheComponentAttr attr;
    attr.Parse(row.text);
    EXPECT_STREQ(attr.Serialize(), row.text);
    EXPECT_STREQ(attr.GetRunTimeID(), row.id);
    EXPECT_EQ(attr.HasPassPort(), row.pass);
    EXPECT_EQ(attr.HasFailPort(), row.fail);
    EXPECT_EQ(attr.GetPassRecordSize(), row.passSize);
    EXPECT_EQ(attr.GetFailRecordSize(), row.failSize);
    EXPECT_STREQ(attr.GetTagProp(), row.tag);
  }
}

TEST(DisplayAttr, FieldsAreTakenAsFarAsTheyGo) {
  const struct {
    const wchar_t* text;
    int view, group, pageSize, page, image;
    bool passOnly, failOnly, globals;
  } rows[] = {{nullptr, 1, 2, 10, 1, 1, true, false, false},
              {L"", 1, 2, 10, 1, 1, true, false, false},
              {L"2;4", 2, 4, 10, 1, 1, false, true, false},
              {L"3;8;20;4;text;7;9", 3, 8, 20, 4, 7, true, true, true},
              {L";", 0, 0, 10, 1, 1, true, true, false},
              {L"1;6;x;-2;;", 1, 6, 0, -2, 0, false, false, false},
              {L"99999999999", 2147483647, 2, 10, 1, 1, true, false, false}};
  CCacheDisplayAttr attr;
  for (const auto& row : rows) {
    attr.SetDisplayAttr(row.text);
    EXPECT_STREQ(attr.Serialize(), row.text);
    EXPECT_EQ(attr.GetViewType(), row.view);
    EXPECT_EQ(attr.GetDataGroup(), row.group);
    EXPECT_EQ(attr.GetPageSize(), row.pageSize);
    EXPECT_EQ(attr.GetDisplayPageNum(), row.page);
    EXPECT_EQ(attr.GetImageState(), row.image);
    EXPECT_EQ(attr.DisplayPassDataOnly(), row.passOnly);
    EXPECT_EQ(attr.DisplayFailDataOnly(), row.failOnly);
    EXPECT_EQ(attr.DisplayGlobals(), row.globals);
  }
  attr.SetDisplayAttr(L"5");
  attr.SetDisplayAttr(attr.Serialize());
  EXPECT_STREQ(attr.Serialize(), L"5");
}

TEST(DisplayAttr, DefaultTextShowsAllData) {
  WideString text;
  CCacheDisplayAttr::GetDefaultDisplayAttr(25, text);
  EXPECT_TRUE(text == L"1;6;25;1;;1");
}

}  // namespace
