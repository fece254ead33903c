#include "ztclient/pages/TreePage.h"

#include <algorithm>

#include "ztclient/answers/Markup.h"
#include "ztclient/pages/Page.h"

using markup::escaped;

namespace {

constexpr size_t mostNodes = 1'000'000;
// What is there without script.
constexpr size_t outlined = 200;

}  // namespace

void TreePage::add(size_t depth, std::string_view name, const std::vector<Property>& properties) {
  if (nodes_.size() == mostNodes) {
    ++leftOut_;
    return;
  }
  while (!open_.empty() && open_.back().depth >= depth) {
    below_[open_.back().index] = nodes_.size() - open_.back().index - 1;
    open_.pop_back();
  }
  open_.push_back({depth, nodes_.size()});
  std::string data = markup::scriptText(name) + ",[";
  std::string line = std::string(2 * std::min<size_t>(depth, 40), ' ') + std::string(name);
  for (const Property& one : properties) {
    if (data.back() != '[') data += ',';
    data += '[' + markup::scriptText(one.name) + ',' + markup::scriptText(one.type) + ',' +
            markup::scriptText(one.value) + ']';
    if (nodes_.size() < outlined) line += ' ' + one.name + '=' + one.value;
  }
  if (nodes_.size() < outlined) outline_ += escaped(line) + '\n';
  nodes_.push_back(data + ']');
  below_.push_back(0);
}

std::string TreePage::text() {
  for (const Open& one : open_) below_[one.index] = nodes_.size() - one.index - 1;
  open_.clear();
  std::string body = "<p>" + std::to_string(nodes_.size() + leftOut_) +
                     (nodes_.size() + leftOut_ == 1 ? " node" : " nodes") +
                     (leftOut_ > 0 ? ", the first " + std::to_string(nodes_.size()) + " shown" : "") +
                     "</p>\n";
  body +=
      "<div class=\"tools\" hidden><label for=\"search\">Nodes with</label> <input id=\"search\" "
      "type=\"search\"> <output id=\"said\" for=\"search\"></output></div>\n<ul "
      "id=\"found\"></ul>\n<h2>Tree</h2>\n<div id=\"tree\"><pre tabindex=\"0\">" +
      outline_ + (nodes_.size() > outlined ? "…\n" : "") +
      "</pre></div>\n<script type=\"application/json\" id=\"nodes\">[";
  for (size_t i = 0; i < nodes_.size(); ++i)
    body.append(i > 0 ? ",\n[" : "[")
        .append(std::to_string(below_[i]))
        .append(",")
        .append(nodes_[i])
        .append("]");
  return page::of(title_, body + "]</script>\n");
}
