#include "ztbaseclient/client/CCacheRequest.h"

#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/WebText.h"
#include "ztbaseclient/client/CacheNames.h"

using tovin::guarded;
using tovin::WideString;

namespace {

constexpr const char* ClassName = "CCacheReuqest";  // the name that the server's messages have it under

constexpr const char* recordTypeName = "recordtype";
constexpr const char* displayedRecsName = "displayedRecs";

int numberIn(const WideString& text) { return tovin::util::stringToInteger(text.view()); }

// Parameters with their values percent-encoded.
class ParameterWriter {
 public:
  explicit ParameterWriter(unsigned mask) : mask_(mask) {}

  void add(unsigned bit, const wchar_t* before, const char* name, const wchar_t* value) {
    if (!(mask_ & bit)) return;
    text_.append(before).append(tovin::utf8ToWide(name)).append(L"=");
    if (value) tovin::util::urlEncode(value, text_);
  }
  void add(unsigned bit, const wchar_t* before, const char* name, int value) {
    add(bit, before, name, tovin::util::integerToString(value).c_str());
  }
  const std::wstring& text() const { return text_; }

 private:
  unsigned mask_;
  std::wstring text_;
};

}  // namespace

struct CCacheRequest::Rule {
  const char* name;
  unsigned bit;
  const wchar_t* whenEmpty;  // null where an empty value is one like any other
  void (*store)(CCacheRequest& request, const WideString& value);
};

const CCacheRequest::Rule CCacheRequest::rules[] = {
    {pszUser, User, L"The user name is empty",
     [](CCacheRequest& request, const WideString& value) { request.userName_ = value; }},
    {pszJobID, JobID, L"The job id is empty",
     [](CCacheRequest& request, const WideString& value) { request.jobId_ = value; }},
    {pszCacheID, CacheID, L"The cache id is empty",
     [](CCacheRequest& request, const WideString& value) { request.cacheId_ = value; }},
    {pszRecNum, RecordNumber, L"The cache record number is empty",
     [](CCacheRequest& request, const WideString& value) { request.recordIndex_ = numberIn(value); }},
    {pszNodeVector, NodeVector, nullptr,
     [](CCacheRequest& request, const WideString& value) { request.nodeVector_ = value; }},
    {pszPropertyName, Property, L"The property name is empty",
     [](CCacheRequest& request, const WideString& value) { request.propertyIndex_ = numberIn(value); }},
    {pszComponentAttr, ComponentAttr, L"The component attributes are empty",
     [](CCacheRequest& request, const WideString& value) { request.componentAttr_.Parse(value); }},
    {pszDisplayAttr, DisplayAttr, L"The display attributes are empty",
     [](CCacheRequest& request, const WideString& value) { request.displayAttr_.SetDisplayAttr(value); }},
    {recordTypeName, RecordType, L"The record type is empty",
     [](CCacheRequest& request, const WideString& value) { request.recordType_ = value; }},
    {displayedRecsName, 0, nullptr,
     [](CCacheRequest& request, const WideString& value) { request.displayedRecs_ = value; }}};

const CCacheRequest::Rule* CCacheRequest::findRule(std::wstring_view name) {
  for (const Rule& rule : rules) {
    if (tovin::equalFolded(name, std::wstring_view(tovin::utf8ToWide(rule.name)))) return &rule;
  }
  return nullptr;
}

bool CCacheRequest::take(const Rule& rule, const WideString& value, WideString& error) {
  if (rule.whenEmpty && value.isEmpty()) {
    error = rule.whenEmpty;
    return false;
  }
  rule.store(*this, value);
  taken_ |= rule.bit;
  return true;
}

bool CCacheRequest::PopulateFromArguments(const Arguments& arguments, unsigned required, WideString& error) {
  return guarded({ClassName, "PopulateFromArguments"}, [&] {
    bool accepted = true;
    arguments.forEach([&](const WideString& name, const WideString& value) {
      const Rule* rule = accepted ? findRule(name.view()) : nullptr;
      if (!rule) return;
      accepted = take(*rule, value, error);
      required &= ~rule->bit;
    });
    if (!accepted || required == 0) return accepted;
    error = L"Missing argument(s):";
    MakeFieldList(required, error);
    return false;
  });
}

// The property has no place in this list: a request that lacks only that is refused without naming it.
void CCacheRequest::MakeFieldList(unsigned mask, WideString& out) const {
  guarded({ClassName, "MakeFieldList"}, [&] {
    const std::pair<unsigned, const char*> fields[] = {{User, pszUser},
                                                       {JobID, pszJobID},
                                                       {CacheID, pszCacheID},
                                                       {RecordNumber, pszRecNum},
                                                       {NodeVector, pszNodeVector},
                                                       {DisplayAttr, pszDisplayAttr},
                                                       {ComponentAttr, pszComponentAttr},
                                                       {RecordType, recordTypeName}};
    for (const auto& [bit, name] : fields) {
      if (mask & bit) out.append(L" ").append(tovin::utf8ToWide(name));
    }
  });
}

void CCacheRequest::AddToURLParameterBuffer(WideString& buffer, unsigned mask) const {
  guarded({ClassName, "AddToURLParameterBuffer"}, [&] {
    ParameterWriter writer(mask);
    writer.add(User, L"", pszUser, userName_);
    writer.add(JobID, L"&", pszJobID, jobId_);
    writer.add(CacheID, L"&", pszCacheID, cacheId_);
    writer.add(ComponentAttr, L"&", pszComponentAttr, componentAttr_.Serialize());
    writer.add(DisplayAttr, L"&", pszDisplayAttr, displayAttr_.Serialize());
    writer.add(RecordNumber, L"&", pszRecNum, recordIndex_);
    writer.add(NodeVector, L"&", pszNodeVector, nodeVector_);
    writer.add(Property, L"&", pszPropertyName, propertyIndex_);
    buffer += writer.text();
  });
}

WideString CCacheRequest::GetJobParams() const {
  return guarded({ClassName, "GetJobParams"}, [&] {
    WideString parameters;
    AddToURLParameterBuffer(parameters, User | JobID | CacheID);
    return parameters;
  });
}

void CCacheRequest::SetUserName(const wchar_t* name) {
  guarded({ClassName, "SetUserName"}, [&] { userName_ = name; });
}

void CCacheRequest::SetJobID(const wchar_t* id) {
  guarded({ClassName, "SetJobID"}, [&] { jobId_ = id; });
}

void CCacheRequest::SetCacheID(const wchar_t* id) {
  guarded({ClassName, "SetCacheID"}, [&] { cacheId_ = id; });
}

void CCacheRequest::SetDisplayedRecs(const wchar_t* records) {
  guarded({ClassName, "SetDisplayedRecs"}, [&] { displayedRecs_ = records; });
}

void CCacheRequest::ResetItem(int recordIndex, const wchar_t* nodeVector, int propertyIndex) {
  guarded({ClassName, "ResetItem"}, [&] {
    nodeVector_ = nodeVector;
    recordIndex_ = recordIndex;
    propertyIndex_ = propertyIndex;
  });
}
