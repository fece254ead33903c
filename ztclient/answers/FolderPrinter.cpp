#include "ztclient/answers/FolderPrinter.h"

#include <iostream>

#include "ztclient/answers/DifferenceText.h"
#include "ztclient/answers/Json.h"
#include "ztclient/terminal/Messages.h"

using Verdict = PairResult::Verdict;

namespace {

constexpr Verdict verdicts[] = {Verdict::equal,     Verdict::within,     Verdict::different,
                                Verdict::onlyFirst, Verdict::onlySecond, Verdict::unreadable};
constexpr const char* jsonWords[] = {"equal", "within", "different", "onlyFirst", "onlySecond", "unreadable"};

const char* jsonWordOf(Verdict verdict) { return jsonWords[static_cast<size_t>(verdict)]; }

Json toJson(const std::string& path, const PairResult& result) {
  Json json = {{"path", path}, {"verdict", jsonWordOf(result.verdict)}};
  if (!result.reason.empty())
    json["reason"] = result.reason;
  else if (result.verdict == Verdict::different || result.verdict == Verdict::within)
    json["summary"] = differenceText::toJson(result.sums);
  return json;
}

}  // namespace

std::string FolderPrinter::wordFor(Verdict verdict) const {
  if (verdict == Verdict::onlyFirst) return "only in " + folder1_;
  if (verdict == Verdict::onlySecond) return "only in " + folder2_;
  return wordOf(verdict);
}

void FolderPrinter::print(const std::string& path, const PairResult& result) {
  ++counts_[static_cast<size_t>(result.verdict)];
  if (result.verdict == Verdict::unreadable) messages::error(path + ": " + result.reason);
  if (json_) {
    std::cout << toText(toJson(path, result)) << '\n';
    return;
  }
  std::cout << wordFor(result.verdict) << ": " << onOneLine(path);
  if (result.verdict == Verdict::different || result.verdict == Verdict::within)
    std::cout << " (" << onOneLine(result.reason.empty() ? differenceText::of(result.sums) : result.reason)
              << ')';
  std::cout << '\n';
}

std::string FolderPrinter::sums() const {
  size_t all = 0;
  for (const size_t count : counts_) all += count;
  std::string text = differenceText::counted(static_cast<int64_t>(all), "file", "files");
  for (const Verdict verdict : verdicts) {
    text += (verdict == Verdict::equal ? ": " : ", ") + std::to_string(countOf(verdict)) + ' ';
    text += onOneLine(wordFor(verdict));
  }
  return text;
}

void FolderPrinter::finish() const {
  if (!json_) {
    std::cout << sums() << '\n';
    return;
  }
  Json counts;
  for (const Verdict verdict : verdicts) counts[jsonWordOf(verdict)] = countOf(verdict);
  std::cout << toText({{"summary", std::move(counts)}}) << '\n';
}
