#include "ztclient/pages/LogPage.h"

#include <algorithm>

#include "ztclient/answers/Markup.h"
#include "ztclient/log/EntryTime.h"
#include "ztclient/pages/Page.h"

using markup::escaped;

namespace {

constexpr size_t mostEntries = 5000;
constexpr int64_t columns = 60;

}  // namespace

void LogPage::add(const EntryPairs& entry) {
  ++count_;
  for (const auto& [name, value] : entry) {
    const std::optional<int64_t> time = entryTime::isName(name) ? entryTime::parse(value) : std::nullopt;
    if (!time) continue;
    times_.push_back(*time);
    break;
  }
  entries_.push_back(entry);
  if (entries_.size() > mostEntries) entries_.pop_front();
}

// How many entries came in each sixtieth of the time.
std::string LogPage::bars() const {
  if (times_.empty()) return {};
  const auto [first, last] = std::minmax_element(times_.begin(), times_.end());
  // Times of documents may be as far apart as numbers can say.
  const auto span = static_cast<uint64_t>(*last) - static_cast<uint64_t>(*first);
  std::vector<size_t> counts(columns);
  for (const int64_t time : times_) {
    const auto since = static_cast<uint64_t>(time) - static_cast<uint64_t>(*first);
    const size_t place =
        span == 0
            ? 0
            : static_cast<size_t>(static_cast<double>(since) / static_cast<double>(span) * (columns - 1));
    ++counts[std::min<size_t>(place, columns - 1)];
  }
  const size_t most = *std::max_element(counts.begin(), counts.end());
  const std::string from = entryTime::text(*first), to = entryTime::text(*last);
  std::string svg =
      "<h2>When they came</h2>\n<svg viewBox=\"0 0 720 130\" width=\"720\" height=\"130\" role=\"img\" "
      "aria-label=\"Entries from " +
      escaped(from) + " to " + escaped(to) + ", at most " + std::to_string(most) + " at a time\">\n";
  for (size_t i = 0; i < counts.size(); ++i) {
    const size_t height = (counts[i] * 100 + most - 1) / most;
    svg += "<rect class=\"bar\" x=\"" + std::to_string(12 * i) + "\" y=\"" + std::to_string(100 - height) +
           "\" width=\"10\" height=\"" + std::to_string(height) + "\"><title>" + std::to_string(counts[i]) +
           "</title></rect>\n";
  }
  return svg + "<text x=\"0\" y=\"120\">" + escaped(from) +
         "</text><text x=\"718\" y=\"120\" text-anchor=\"end\">" + escaped(to) + "</text>\n</svg>\n";
}

std::string LogPage::text() {
  LogColumns known;
  for (const EntryPairs& entry : entries_) known.see(entry);
  std::string body = "<p>" + std::to_string(count_) + (count_ == 1 ? " entry" : " entries") +
                     (count_ > entries_.size() ? ", the last " + std::to_string(entries_.size()) + " shown"
                                               : std::string()) +
                     "</p>\n" + bars();
  if (entries_.empty()) return page::of(name_, body);
  body += "<h2>Entries</h2>\n" + page::filterOf("Entries with", "#entries", "filter") +
          "<div class=\"scroll\"><table id=\"entries\" class=\"data\">\n<thead><tr>";
  for (const std::string& name : known.names()) body += "<th scope=\"col\">" + escaped(name) + "</th>";
  body += "</tr></thead>\n<tbody>\n";
  for (const EntryPairs& entry : entries_) {
    body += "<tr data-row>";
    for (const std::optional<std::string>& value : known.rowOf(entry))
      body += "<td>" + escaped(value.value_or("")) + "</td>";
    body += "</tr>\n";
  }
  return page::of(name_, body + "</tbody></table></div>\n");
}
