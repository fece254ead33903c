#include "ztclient/answers/DifferenceText.h"

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"

namespace differenceText {

std::string counted(int64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string rounded(double number) { return tovin::wideToUtf8(tovin::format(L"%.4g", number)); }

int64_t columnOf(const differences::Field& field) { return field.field1 ? field.field1 : field.field2; }

std::string nameOf(const differences::Field& field) {
  return field.column ? std::string(*field.column) : "field " + std::to_string(columnOf(field));
}

std::string measuresOf(const differences::Field& field) {
  return "absolute " + rounded(field.absolute) + ", relative " + rounded(field.relative) + ", " +
         counted(field.digits, "digit agrees", "digits agree") + (field.within ? ", within tolerance" : "");
}

std::string of(const differences::Summary& sums) {
  return counted(sums.different, "field differs", "fields differ") + ", " + std::to_string(sums.within) +
         " within tolerance; " + counted(sums.added, "line added", "lines added") + ", " +
         std::to_string(sums.removed) + " removed; largest absolute " + rounded(sums.largestAbsolute) +
         ", largest relative " + rounded(sums.largestRelative);
}

Json toJson(const differences::Summary& sums) {
  Json json = {{"within", sums.within},
               {"different", sums.different},
               {"added", sums.added},
               {"removed", sums.removed},
               {"largestAbsolute", numberOf(sums.largestAbsolute)},
               {"largestRelative", numberOf(sums.largestRelative)}};
  if (sums.alignedByBlocks) json["alignedByBlocks"] = true;
  return json;
}

std::string toleranceOf(const differences::Options& how) {
  std::string text;
  const auto add = [&](const std::string& measure) { text += (text.empty() ? "" : " or ") + measure; };
  if (how.absolute) add("absolute " + rounded(*how.absolute));
  if (how.relative) add("relative " + rounded(*how.relative));
  if (how.tolerance || text.empty()) {
    const int digits = how.tolerance.value_or(CDiffFiles::DefaultTolerance);
    add(digits == 0 ? "none" : counted(digits, "significant digit", "significant digits"));
  }
  return text;
}

}  // namespace differenceText
