#pragma once

#include "tovin/HashMap.h"
#include "ztbaseclient/client/CCacheComponentAttr.h"
#include "ztbaseclient/client/CCacheDisplayAttr.h"

/// One piece of a job's cached results: whose job, which cache, record, node and property, and how it is to
/// be displayed. Fills itself from a request's arguments and writes itself as URL parameters.
///
///     CCacheRequest request;
///     if (!request.PopulateFromArguments(arguments, CCacheRequest::User | CCacheRequest::JobID, error)) …
///     request.AddToURLParameterBuffer(url, request.GetArguments());
///
/// - Shape: a plain value. Names of arguments fold ASCII case. The values in the URL are percent-encoded
///   (tovin::util::urlEncode), the names are not.
/// - Errors: what is wrong with arguments is a false result and a text, never an exception.
class ZTBASECLIENT_API CCacheRequest {
 public:
  /// The bits of arguments in a mask.
  enum Argument : unsigned {
    User = 0x001,
    JobID = 0x002,
    CacheID = 0x004,
    ComponentAttr = 0x010,
    DisplayAttr = 0x020,
    RecordNumber = 0x040,
    NodeVector = 0x100,
    Property = 0x200,
    RecordType = 0x400
  };
  using Arguments = tovin::HashMap<tovin::WideString, tovin::WideString>;

  /// Takes the arguments in the map's order, up to the first that is empty and must not be. Unknown ones are
  /// passed over.
  /// \param required the arguments that must be there; a bit without a name in MakeFieldList counts too.
  /// \param error out: set when the result is false.
  bool PopulateFromArguments(const Arguments& arguments, unsigned required, tovin::WideString& error);
  /// The arguments that were taken so far.
  unsigned GetArguments() const noexcept { return taken_; }
  /// Appends a blank and the name of each argument of a mask.
  void MakeFieldList(unsigned mask, tovin::WideString& out) const;
  /// Appends the arguments of a mask, always in the same order. Only the user has no '&' before it, even
  /// where another comes first.
  void AddToURLParameterBuffer(tovin::WideString& buffer, unsigned mask) const;

  void SetUserName(const wchar_t* name);
  void SetJobID(const wchar_t* id);
  void SetCacheID(const wchar_t* id);
  void SetDisplayedRecs(const wchar_t* records);
  /// Turns to another piece of the same cache.
  void ResetItem(int recordIndex, const wchar_t* nodeVector, int propertyIndex);

  const wchar_t* GetUserNameW() const noexcept { return userName_.c_str(); }
  const wchar_t* GetJobID() const noexcept { return jobId_.c_str(); }
  const wchar_t* GetCacheID() const noexcept { return cacheId_.c_str(); }
  int GetRecordIndex() const noexcept { return recordIndex_; }
  int GetPropertyIndex() const noexcept { return propertyIndex_; }
  const wchar_t* GetNodeVector() const noexcept { return nodeVector_.c_str(); }
  const wchar_t* GetRecordType() const noexcept { return recordType_.c_str(); }
  const wchar_t* GetDisplayedRecs() const noexcept { return displayedRecs_.c_str(); }
  /// User, job and cache as URL parameters.
  tovin::WideString GetJobParams() const;

  const wchar_t* GetTagProp() const noexcept { return componentAttr_.GetTagProp(); }
  const wchar_t* GetCompRunTimeID() const noexcept { return componentAttr_.GetRunTimeID(); }
  int GetPassRecordSize() const noexcept { return componentAttr_.GetPassRecordSize(); }
  int GetFailRecordSize() const noexcept { return componentAttr_.GetFailRecordSize(); }
  bool HasPassPort() const noexcept { return componentAttr_.HasPassPort(); }
  bool HasFailPort() const noexcept { return componentAttr_.HasFailPort(); }

  int GetViewType() const noexcept { return displayAttr_.GetViewType(); }
  int GetPageSize() const noexcept { return displayAttr_.GetPageSize(); }
  int GetDisplayPageNum() const noexcept { return displayAttr_.GetDisplayPageNum(); }
  int GetImageState() const noexcept { return displayAttr_.GetImageState(); }
  int GetDisplayDataGroup() const noexcept { return displayAttr_.GetDataGroup(); }
  bool DisplayPassDataOnly() const noexcept { return displayAttr_.DisplayPassDataOnly(); }
  bool DisplayFailDataOnly() const noexcept { return displayAttr_.DisplayFailDataOnly(); }
  bool DisplayGlobals() const noexcept { return displayAttr_.DisplayGlobals(); }

 private:
  struct Rule;
  static const Rule rules[];

  static const Rule* findRule(std::wstring_view name);
  bool take(const Rule& rule, const tovin::WideString& value, tovin::WideString& error);

  tovin::WideString userName_;
  tovin::WideString jobId_;
  tovin::WideString cacheId_;
  int recordIndex_ = 0;
  tovin::WideString nodeVector_;
  int propertyIndex_ = 0;
  CCacheComponentAttr componentAttr_;
  CCacheDisplayAttr displayAttr_;
  tovin::WideString recordType_;
  tovin::WideString displayedRecs_;
  unsigned taken_ = 0;
};
