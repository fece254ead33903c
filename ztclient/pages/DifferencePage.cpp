#include "ztclient/pages/DifferencePage.h"

#include <algorithm>
#include <cmath>

#include "ztclient/answers/DifferenceText.h"
#include "ztclient/answers/Markup.h"
#include "ztclient/pages/Page.h"

using differences::Field;
using differences::Line;
using differenceText::counted;
using differenceText::rounded;
using markup::escaped;

namespace {

constexpr int64_t mostLines = 1000;
constexpr size_t mostPoints = 2000;
constexpr size_t longestText = 2000;
constexpr size_t mostBars = 40;

// By the size of a difference: within tolerance, up to a millionth, a thousandth, a tenth, and more.
const char* classOf(const Field& field) {
  if (field.kind != Field::Kind::Number) return "d4";
  if (field.within) return "d0";
  if (field.relative < 1e-6) return "d1";
  if (field.relative < 1e-3) return "d2";
  return field.relative < 0.1 ? "d3" : "d4";
}

// A line with what differs marked; long ones are cut.
template <class TextOf, class PlaceOf>
std::string marked(std::string_view text, std::span<const Field> fields, TextOf&& textOf, PlaceOf&& placeOf) {
  std::string out;
  size_t at = 0;
  for (const Field& field : fields) {
    const size_t begin = placeOf(field);
    const std::string_view differing = textOf(field);
    if (begin < at || differing.empty() || begin + differing.size() > longestText) continue;
    out += escaped(text.substr(at, begin - at)) + "<mark class=\"" + classOf(field) + "\">" +
           escaped(differing) + "</mark>";
    at = begin + differing.size();
  }
  size_t end = std::min(text.size(), std::max(at, longestText));
  while (end < text.size() && end > at && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return out + escaped(text.substr(at, end - at)) + (end < text.size() ? "…" : "");
}

std::string cell(int64_t line, const std::string& content, const char* ofClass) {
  const std::string number = line > 0 ? std::to_string(line) : "";
  return "<td class=\"number quiet\">" + number + "</td><td class=\"" + ofClass + "\">" + content + "</td>";
}

std::string fixed(double number) { return rounded(std::round(number * 10) / 10); }

// A number of a logarithmic scale: 0 and what is smaller than all that can be told apart at its bottom.
double exponentOf(double number) {
  if (std::isnan(number) || number > 1e3) return 3;
  return number < 1e-17 ? -17 : std::log10(number);
}

std::string opened(int width, int height, const std::string& label) {
  return "<svg viewBox=\"0 0 " + std::to_string(width) + ' ' + std::to_string(height) + "\" width=\"" +
         std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" role=\"img\" aria-label=\"" +
         escaped(label) + "\">\n";
}

std::string label(double x, double y, const char* anchor, const std::string& text) {
  return "<text x=\"" + fixed(x) + "\" y=\"" + fixed(y) + "\" text-anchor=\"" + anchor + "\">" +
         escaped(text) + "</text>\n";
}

}  // namespace

DifferencePage::DifferencePage(std::string name1, std::string name2, std::string tolerance, std::string back)
    : name1_(std::move(name1)),
      name2_(std::move(name2)),
      tolerance_(std::move(tolerance)),
      back_(std::move(back)) {}

void DifferencePage::add(const Line& line) {
  columns_.add(line);
  double largest = -1;
  for (const Field& field : line.fields) {
    if (field.kind == Field::Kind::Number)
      largest = std::isnan(field.relative) ? 1e3 : std::max(largest, field.relative);
  }
  if (largest >= 0) addPoint(line.line1, largest);
  const bool isDifference = line.kind != Line::Kind::Equal;
  if (shown_ >= mostLines) {
    more_ += isDifference;
    return;
  }
  shown_ += isDifference;
  rows_ += "<tr data-row>";
  if (line.kind == Line::Kind::Changed) {
    rows_ += cell(line.line1,
                  marked(
                      line.text1, line.fields, [](const Field& f) { return f.text1; },
                      [](const Field& f) { return f.at1; }),
                  "");
    rows_ += cell(line.line2,
                  marked(
                      line.text2, line.fields, [](const Field& f) { return f.text2; },
                      [](const Field& f) { return f.at2; }),
                  "");
  } else {
    const bool isEqual = line.kind == Line::Kind::Equal;
    rows_ += cell(
        line.line1,
        marked(
            line.text1, {}, [](const Field& f) { return f.text1; }, [](const Field& f) { return f.at1; }),
        line.kind == Line::Kind::Removed ? "removed" : "");
    rows_ += cell(line.line2,
                  marked(
                      isEqual ? line.text1 : line.text2, {}, [](const Field& f) { return f.text2; },
                      [](const Field& f) { return f.at2; }),
                  line.kind == Line::Kind::Added ? "added" : "");
  }
  rows_ += "<td>";
  for (const Field& field : line.fields) {
    if (field.kind == Field::Kind::Number)
      rows_ += "<div>" + escaped(differenceText::nameOf(field) + ": " + differenceText::measuresOf(field)) +
               "</div>";
  }
  if (line.kind == Line::Kind::Added) rows_ += "added";
  if (line.kind == Line::Kind::Removed) rows_ += "removed";
  rows_ += "</td></tr>\n";
}

// Neighbours are put together when there are too many.
void DifferencePage::addPoint(int64_t line, double relative) {
  const int64_t place = line / linesAPoint_ * linesAPoint_;
  if (!points_.empty() && points_.back().line == place) {
    points_.back().relative = std::max(points_.back().relative, relative);
    return;
  }
  points_.push_back({place, relative});
  while (points_.size() > mostPoints) {
    linesAPoint_ *= 2;
    std::vector<Point> fewer;
    for (const Point& point : points_) {
      const int64_t common = point.line / linesAPoint_ * linesAPoint_;
      if (!fewer.empty() && fewer.back().line == common)
        fewer.back().relative = std::max(fewer.back().relative, point.relative);
      else
        fewer.push_back({common, point.relative});
    }
    points_ = std::move(fewer);
  }
}

std::string DifferencePage::plotOverLines() const {
  if (points_.empty()) return {};
  constexpr double left = 60, right = 780, top = 10, bottom = 190;
  double low = 3, high = -17;
  int64_t last = 1;
  for (const Point& point : points_) {
    low = std::min(low, std::floor(exponentOf(point.relative)));
    high = std::max(high, std::ceil(exponentOf(point.relative)));
    last = std::max(last, point.line);
  }
  if (high <= low) high = low + 1;
  std::string svg = "<h3>Relative differences over the lines</h3>\n" +
                    opened(800, 220, "Relative differences over the lines, on a logarithmic scale");
  const double step = std::max(1.0, std::ceil((high - low) / 6));
  for (double exponent = low; exponent <= high; exponent += step) {
    const double y = bottom - (exponent - low) / (high - low) * (bottom - top);
    svg += "<line class=\"axis\" x1=\"60\" x2=\"780\" y1=\"" + fixed(y) + "\" y2=\"" + fixed(y) + "\"/>\n" +
           label(left - 6, y + 4, "end", "1e" + std::to_string(static_cast<int>(exponent)));
  }
  for (const Point& point : points_) {
    const double x = left + static_cast<double>(point.line) / static_cast<double>(last) * (right - left);
    const double y = bottom - (exponentOf(point.relative) - low) / (high - low) * (bottom - top);
    svg += "<circle class=\"dot\" cx=\"" + fixed(x) + "\" cy=\"" + fixed(y) + "\" r=\"2\"/>\n";
  }
  return svg + label(left, 210, "start", "line 1") +
         label(right, 210, "end", "line " + std::to_string(last)) + "</svg>\n";
}

std::string DifferencePage::plotByColumn() const {
  const auto& columns = columns_.columns();
  if (columns.empty()) return {};
  std::string table =
      "<h3>By column</h3>\n<div class=\"scroll\"><table>\n<thead><tr><th scope=\"col\">column</th><th "
      "scope=\"col\">different</th>"
      "<th scope=\"col\">within tolerance</th><th scope=\"col\">largest absolute</th><th "
      "scope=\"col\">largest relative</th><th scope=\"col\">share of the "
      "differences</th></tr></thead>\n<tbody>\n";
  int64_t most = 1;
  for (const auto& [number, column] : columns) most = std::max(most, column.different + column.within);
  size_t count = 0;
  for (const auto& [number, column] : columns) {
    if (++count > mostBars) break;
    const double share = static_cast<double>(column.different + column.within) / static_cast<double>(most);
    table += "<tr><th scope=\"row\">" + escaped(column.name) + "</th><td class=\"number\">" +
             std::to_string(column.different) + "</td><td class=\"number\">" + std::to_string(column.within) +
             "</td><td class=\"number\">" + escaped(rounded(column.largestAbsolute)) +
             "</td><td class=\"number\">" + escaped(rounded(column.largestRelative)) + "</td><td>" +
             opened(200, 12, fixed(100 * share) + " % of the largest") + "<rect class=\"bar\" width=\"" +
             fixed(std::max(1.0, 200 * share)) + "\" height=\"12\"/></svg></td></tr>\n";
  }
  table += "</tbody></table></div>\n";
  if (columns.size() > mostBars)
    table += "<p>" + counted(static_cast<int64_t>(columns.size() - mostBars), "more column", "more columns") +
             ".</p>\n";
  return table;
}

std::string DifferencePage::text(const differences::Summary& sums) const {
  const char* verdict = sums.isDifferent() ? "different" : sums.within > 0 ? "within tolerance" : "equal";
  std::string body;
  if (!back_.empty()) body += "<p><a href=\"" + escaped(back_) + "\">All files</a></p>\n";
  body += "<h2>Sums</h2>\n<table>\n" + page::row("verdict", verdict) + page::row("tolerance", tolerance_) +
          page::row("fields that differ", std::to_string(sums.different)) +
          page::row("fields within tolerance", std::to_string(sums.within)) +
          page::row("lines added", std::to_string(sums.added)) +
          page::row("lines removed", std::to_string(sums.removed)) +
          page::row("largest absolute difference", rounded(sums.largestAbsolute)) +
          page::row("largest relative difference", rounded(sums.largestRelative)) + "</table>\n";
  if (sums.alignedByBlocks) body += "<p class=\"warning\">Some lines were taken in pairs as they came.</p>\n";
  body += plotOverLines() + plotByColumn() + "<h2>Lines</h2>\n";
  if (rows_.empty()) return page::of(name1_ + " and " + name2_, body + "<p>Nothing differs.</p>\n");
  if (more_ > 0)
    body += "<p class=\"warning\">The first " + std::to_string(mostLines) + "; " +
            counted(more_, "more line differs", "more lines differ") + ".</p>\n";
  body += page::filterOf("Lines with", "#lines", "filter");
  body +=
      "<div class=\"scroll\"><table id=\"lines\" class=\"data\">\n<caption class=\"quiet\">Numbers are "
      "marked by the size of their difference</caption>\n<thead><tr><th scope=\"col\">line</th><th "
      "scope=\"col\">" +
      escaped(name1_) + "</th><th scope=\"col\">line</th><th scope=\"col\">" + escaped(name2_) +
      "</th><th scope=\"col\">difference</th></tr></thead>\n<tbody>\n";
  return page::of(name1_ + " and " + name2_, body + rows_ + "</tbody></table></div>\n");
}

void FolderPage::add(const std::string& path, const PairResult& result, const std::string& page) {
  using Verdict = PairResult::Verdict;
  const bool isFine = result.verdict == Verdict::equal || result.verdict == Verdict::within;
  std::string about = result.reason;
  if (about.empty() && result.verdict == Verdict::different) about = differenceText::of(result.sums);
  rows_ += "<tr data-row><td>" +
           (page.empty() ? escaped(path) : "<a href=\"" + escaped(page) + "\">" + escaped(path) + "</a>") +
           "</td><td" + (isFine ? "" : " class=\"removed\"") + '>' + wordOf(result.verdict) + "</td><td>" +
           escaped(about) + "</td></tr>\n";
}

std::string FolderPage::text(const std::string& sums) const {
  return page::of(folder1_ + " and " + folder2_,
                  "<p>" + escaped(sums) + "</p>\n" + page::filterOf("Files with", "#files", "filter") +
                      "<div class=\"scroll\"><table id=\"files\" class=\"data\">\n<thead><tr><th "
                      "scope=\"col\">file</th><th scope=\"col\">verdict</th><th "
                      "scope=\"col\">what</th></tr></thead>\n<tbody>\n" +
                      rows_ + "</tbody></table></div>\n");
}
