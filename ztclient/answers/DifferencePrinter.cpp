#include "ztclient/answers/DifferencePrinter.h"

#include <iostream>
#include <string_view>

#include "ztclient/answers/DifferenceText.h"
#include "ztclient/answers/Json.h"
#include "ztclient/terminal/Terminal.h"

using differences::Field;
using differences::Line;
using differenceText::counted;
using differenceText::measuresOf;
using differenceText::nameOf;
using differenceText::rounded;

namespace {

constexpr int64_t firstLines = 10;

Json toJson(const Line& line, const Field& field) {
  Json json = {{"kind", field.kind == Field::Kind::Number ? "number" : "text"},
               {"line1", line.line1},
               {"line2", line.line2},
               {"field1", field.field1},
               {"field2", field.field2},
               {"column", field.column ? Json(*field.column) : Json()},
               {"text1", field.text1},
               {"text2", field.text2}};
  if (field.kind != Field::Kind::Number) return json;
  json["absolute"] = numberOf(field.absolute);
  json["relative"] = numberOf(field.relative);
  json["digits"] = field.digits;
  json["within"] = field.within;
  return json;
}

void printJson(const Line& line) {
  if (line.kind == Line::Kind::Added)
    std::cout << toText({{"kind", "added"}, {"line2", line.line2}, {"text2", line.text2}}) << '\n';
  else if (line.kind == Line::Kind::Removed)
    std::cout << toText({{"kind", "removed"}, {"line1", line.line1}, {"text1", line.text1}}) << '\n';
  else
    for (const Field& field : line.fields) std::cout << toText(toJson(line, field)) << '\n';
}

// A line with the fields that differ in colour.
template <class TextOf, class PlaceOf>
void printMarked(std::string_view text, std::span<const Field> fields, terminal::Colour colour,
                 TextOf&& textOf, PlaceOf&& placeOf) {
  size_t at = 0;
  for (const Field& field : fields) {
    const size_t begin = placeOf(field);
    if (begin < at) continue;  // of a field that the line does not have
    std::cout << text.substr(at, begin - at) << terminal::Coloured{colour, textOf(field)};
    at = begin + textOf(field).size();
  }
  std::cout << text.substr(at) << '\n';
}

void printNumber(const Field& field) {
  std::cout << "    " << nameOf(field) << ": " << measuresOf(field) << '\n';
}

void printChanged(const Line& line) {
  using terminal::Colour;
  std::cout << "- " << line.line1 << ": ";
  printMarked(
      line.text1, line.fields, Colour::red, [](const Field& field) { return field.text1; },
      [](const Field& field) { return field.at1; });
  std::cout << "+ " << line.line2 << ": ";
  printMarked(
      line.text2, line.fields, Colour::green, [](const Field& field) { return field.text2; },
      [](const Field& field) { return field.at2; });
  for (const Field& field : line.fields) {
    if (field.kind == Field::Kind::Number) printNumber(field);
  }
}

}  // namespace

void DifferencePrinter::print(const Line& line) {
  if (form_ == Form::json)
    printJson(line);
  else if (form_ == Form::list)
    list(line);
  else if (form_ == Form::summary)
    gather(line);
}

void DifferencePrinter::finish(const differences::Summary& summary) {
  if (form_ == Form::json || form_ == Form::jsonSummary)
    std::cout << toText({{"summary", differenceText::toJson(summary)}}) << '\n';
  else
    printSums(summary);
}

// Lines of context that do not follow each other are divided.
void DifferencePrinter::list(const Line& line) {
  using terminal::Colour;
  using terminal::Coloured;
  if (line.kind == Line::Kind::Equal && lastLine1_ > 0 && line.line1 != lastLine1_ + 1) std::cout << "--\n";
  if (line.line1 > 0) lastLine1_ = line.line1;
  switch (line.kind) {
    case Line::Kind::Changed:
      return printChanged(line);
    case Line::Kind::Added:
      std::cout << "+ " << line.line2 << ": " << Coloured{Colour::green, line.text2} << '\n';
      return;
    case Line::Kind::Removed:
      std::cout << "- " << line.line1 << ": " << Coloured{Colour::red, line.text1} << '\n';
      return;
    case Line::Kind::Equal:
      std::cout << "  " << line.line1 << ": " << line.text1 << '\n';
  }
}

void DifferencePrinter::gather(const Line& line) {
  if (line.kind != Line::Kind::Equal && gathered_++ < firstLines) list(line);
  columns_.add(line);
}

void DifferencePrinter::printSums(const differences::Summary& summary) const {
  if (gathered_ > firstLines)
    std::cout << counted(gathered_ - firstLines, "more line differs", "more lines differ") << '\n';
  for (const auto& [number, column] : columns_.columns()) {
    std::cout << column.name << ": " << column.different << " different, " << column.within
              << " within tolerance, largest absolute " << rounded(column.largestAbsolute)
              << ", largest relative " << rounded(column.largestRelative) << '\n';
  }
  if (summary.within == 0 && !summary.isDifferent()) return;
  std::cout << differenceText::of(summary) << '\n';
  if (summary.alignedByBlocks) std::cout << "Some lines were taken in pairs as they came\n";
}
