#include "ztclient/log/LiveTable.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "tovinCore/platform/Console.h"
#include "ztclient/terminal/Output.h"
#include "ztclient/terminal/Terminal.h"

void LiveTable::add(const EntryPairs& entry) {
  ++count_;
  isDrawn_ = false;
  last_.push_back(entry);
  if (last_.size() > mostKept) last_.pop_front();
}

void LiveTable::draw() {
  if (isDrawn_) return;
  // The line above, the heading and the rule, and the one that the cursor is in.
  constexpr size_t others = 4;
  const auto height = static_cast<size_t>(std::max(tovin::platform::terminalHeight(), 10));
  const size_t rows = std::min(last_.size(), height - others);
  const auto first = last_.end() - static_cast<ptrdiff_t>(rows);
  LogColumns columns;
  std::for_each(first, last_.end(), [&columns](const EntryPairs& entry) { columns.see(entry); });
  tableText::Aligned table;
  const TableRow heading = tableText::headingOf(columns.names());
  table.see(heading);
  std::vector<TableRow> shown;
  std::for_each(first, last_.end(), [&](const EntryPairs& entry) { shown.push_back(columns.rowOf(entry)); });
  for (const TableRow& row : shown) table.see(row);
  table.fit(terminal::width());

  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
  std::ostringstream text;
  text.precision(3);
  text << count_ << (count_ == 1 ? " entry" : " entries") << ", "
       << static_cast<double>(count_) / std::max(time.count(), 1.0) << " a second\n";
  table.write(text, heading);
  table.writeRule(text);
  for (const TableRow& row : shown) table.write(text, row);
  const std::string drawn = text.str();

  // Up to where it began the last time, and all below gone.
  if (drawnLines_ > 0) Output::paint(std::cout, "\x1b[" + std::to_string(drawnLines_) + "A");
  Output::paint(std::cout, "\r\x1b[J");
  std::cout << drawn << std::flush;
  drawnLines_ = static_cast<size_t>(std::count(drawn.begin(), drawn.end(), '\n'));
  isDrawn_ = true;
}
