#include "ztbaseclient/tools/CConsoleEntry.h"

#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"

using tovin::guarded;

int CConsoleEntry::FindIdx(const wchar_t* name) const {
  for (size_t i = 0; i < pairs_.getSize(); ++i) {
    if (tovin::equalFolded(pairs_[i].name.c_str(), name)) return static_cast<int>(i);
  }
  return -1;
}

const wchar_t* CConsoleEntry::FindValue(const wchar_t* name) const {
  return guarded({ClassName, "FindValue"}, [&]() -> const wchar_t* {
    const int index = FindIdx(name);
    return index < 0 ? nullptr : pairs_[static_cast<size_t>(index)].value.c_str();
  });
}

void CConsoleEntry::SetValue(const wchar_t* name, const wchar_t* value) {
  guarded({ClassName, "SetValue"}, [&] {
    tovin::WideString copy(value);  // both texts may lie in this entry
    const int index = FindIdx(name);
    if (index >= 0) {
      pairs_[static_cast<size_t>(index)].value = std::move(copy);
      return;
    }
    tovin::WideString newName(name);
    pairs_.add({std::move(newName), std::move(copy)});
  });
}

void CConsoleEntry::RemoveValue(const wchar_t* name) {
  guarded({ClassName, "RemoveValue"}, [&] {
    const int index = FindIdx(name);
    if (index >= 0) pairs_.removeAt(static_cast<size_t>(index));
  });
}

void CConsoleEntry::Clear() {
  guarded({ClassName, "Clear"}, [&] { pairs_.clear(); });
}

CConsoleEntry::NameValue& CConsoleEntry::Add() {
  return guarded({ClassName, "Add"}, [&]() -> NameValue& { return pairs_.add({}); });
}
