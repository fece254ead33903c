// Path queries, and tables out of them without a Python object a cell.
#include <pybind11/numpy.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "Errors.h"
#include "Module.h"
#include "NodeObject.h"
#include "Texts.h"
#include "Values.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/xpath/PathQuery.h"
#include "tovinCore/Numbers.h"

namespace {

using tovin::AttributeView;
using tovin::iNode;
using tovin::PathQuery;

py::object steal(PyObject* made) {
  if (!made) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(made);
}

struct Selected {
  tovin::Held<iNode> node;
  uint32_t attribute;
};

std::vector<Selected> select(PathQuery& query, const iNode& context) {
  std::vector<Selected> found;
  query.visit(context, [&](const iNode& node, uint32_t attribute) {
    found.push_back({tovin::Held<iNode>(const_cast<iNode*>(&node)), attribute});
    return true;
  });
  return found;
}

py::object itemOf(const Selected& selected, const TreeRef& tree) {
  if (selected.attribute == PathQuery::noAttribute) return wrap(*selected.node, tree);
  return steal(newValue(selected.node->viewAttribute(selected.attribute)));
}

py::object query(py::handle node, py::handle expression) {
  const std::wstring text = toWideWithoutNul(expression, "a query");
  NodeObject& self = nodeObject(node);
  return failingAs(Failure::query, [&]() -> py::object {
    std::optional<PathQuery> compiled;
    std::vector<Selected> found;
    double number = 0;
    bool truth = false;
    std::wstring words;
    {
      const Alone alone(node);
      compiled.emplace(text.c_str(), *self.node);
      switch (compiled->kind()) {
        case PathQuery::Kind::nodes:
          found = select(*compiled, *self.node);
          break;
        case PathQuery::Kind::boolean:
          truth = compiled->boolean(*self.node);
          break;
        case PathQuery::Kind::number:
          number = compiled->number(*self.node);
          break;
        case PathQuery::Kind::text:
          words = compiled->text(*self.node);
          break;
      }
    }
    switch (compiled->kind()) {
      case PathQuery::Kind::boolean:
        return py::bool_(truth);
      case PathQuery::Kind::number:
        return py::float_(number);
      case PathQuery::Kind::text:
        return toStr(std::wstring_view(words));
      case PathQuery::Kind::nodes:
        break;
    }
    py::list list(found.size());
    for (size_t i = 0; i < found.size(); ++i) list[i] = itemOf(found[i], self.tree);
    return list;
  });
}

// Null without a match; of an expression that gives a value, the value.
py::object queryOne(py::handle node, py::handle expression) {
  const std::wstring text = toWideWithoutNul(expression, "a query");
  NodeObject& self = nodeObject(node);
  return failingAs(Failure::query, [&]() -> py::object {
    PathQuery compiled(text.c_str(), *self.node);
    if (compiled.kind() != PathQuery::Kind::nodes) return query(node, expression);
    uint32_t attribute = PathQuery::noAttribute;
    const iNode* found = compiled.first(*self.node, attribute);
    if (!found) return py::none();
    return itemOf({tovin::Held<iNode>(const_cast<iNode*>(found)), attribute}, self.tree);
  });
}

// --- columns

enum class Wanted { whatFits, text, number, integer };

template <class Item>
py::array toArray(std::vector<Item>&& items) {
  auto* kept = new std::vector<Item>(std::move(items));
  const py::capsule owner(kept, [](void* vector) { delete static_cast<std::vector<Item>*>(vector); });
  return py::array_t<Item>(static_cast<py::ssize_t>(kept->size()), kept->data(), owner);
}

// Cells of one column as they come: numbers beside the texts that they were read from, because one cell that
// is no number makes texts of all.
class Column {
 public:
  explicit Column(Wanted wanted) : wanted_(wanted) {}

  void addMissing() {
    add(Cell::missing, std::numeric_limits<double>::quiet_NaN(), 0);
    allIntegers_ = false;
  }
  void add(bool truth) {
    allTexts_ = false;
    add(Cell::truth, truth ? 1 : 0, truth ? 1 : 0);
  }
  void add(double number) {
    allTruths_ = allTexts_ = allIntegers_ = false;
    add(Cell::number, number, 0);
  }
  void add(int64_t integer) {
    allTruths_ = allTexts_ = false;
    add(Cell::integer, static_cast<double>(integer), integer);
  }
  void add(std::wstring_view text) {
    allTruths_ = false;
    texts_.append(text);
    ends_.resize(cells_.size());
    ends_.push_back(texts_.size());
    addText(text);
  }
  void add(const AttributeView& view);

  py::object finish();
  bool fails() const {
    return wanted_ == Wanted::number ? !allNumbers_ : wanted_ == Wanted::integer && !allIntegers_;
  }
  size_t size() const { return cells_.size(); }

 private:
  enum class Cell : uint8_t { missing, truth, number, integer, text };

  void add(Cell cell, double number, int64_t integer) {
    cells_.push_back(cell);
    numbers_.push_back(number);
    integers_.push_back(integer);
  }
  void addText(std::wstring_view text);
  py::object cellAt(size_t i, size_t& begin) const;

  Wanted wanted_;
  std::vector<Cell> cells_;
  std::vector<double> numbers_;
  std::vector<int64_t> integers_;
  std::wstring texts_;
  // Where the text of a cell ends; of cells without one it does not count.
  std::vector<size_t> ends_;
  bool allIntegers_ = true;
  bool allNumbers_ = true;
  bool allTruths_ = true;
  bool allTexts_ = true;
};

// Decimal numbers as programs write them. What has a leading zero, as identifiers have, is a text.
bool readNumber(std::wstring_view text, double& number, int64_t& integer, bool& isInteger) {
  char room[64];
  if (text.empty() || text.size() >= sizeof room) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] >= 0x80) return false;
    room[i] = static_cast<char>(text[i]);
  }
  const char *begin = room, *end = room + text.size();
  const char* digits = begin + (*begin == '-');
  if (digits == end) return false;
  const std::string_view word(digits, static_cast<size_t>(end - digits));
  isInteger = false;
  if (word == "INF") {
    number = digits == begin ? HUGE_VAL : -HUGE_VAL;
    return true;
  }
  if (word == "NaN" && digits == begin) {
    number = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  const auto isDigit = [&](const char* at) { return at < end && *at >= '0' && *at <= '9'; };
  if (!isDigit(digits) || (*digits == '0' && isDigit(digits + 1))) return false;
  const auto whole = std::from_chars(begin, end, integer);
  if (whole.ec == std::errc() && whole.ptr == end && !(word == "0" && digits != begin)) {
    isInteger = true;
    number = static_cast<double>(integer);
    return true;
  }
  const auto real = std::from_chars(begin, end, number);
  return real.ec == std::errc() && real.ptr == end && isDigit(end - 1);
}

void Column::addText(std::wstring_view text) {
  double number = 0;
  int64_t integer = 0;
  bool isInteger = false;
  const bool isNumber = wanted_ != Wanted::text && readNumber(text, number, integer, isInteger);
  allNumbers_ = allNumbers_ && isNumber;
  allIntegers_ = allIntegers_ && isNumber && isInteger;
  add(Cell::text, number, integer);
}

void Column::add(const AttributeView& view) {
  switch (view.kind) {
    case AttributeView::Kind::text:
      return add(std::wstring_view(unitsOf(view)));
    case AttributeView::Kind::number:
      return add(view.number);
    case AttributeView::Kind::integer:
      return add(static_cast<int64_t>(view.integer));
    case AttributeView::Kind::nullText:
    case AttributeView::Kind::nullValue:
      return addMissing();
    case AttributeView::Kind::value:
    case AttributeView::Kind::property:
      break;
  }
  const auto* object = static_cast<const tovin::Object*>(&view.object());
  if (const auto* real = tovin::seek<tovin::DoubleValue>(object)) return add(real->getDouble());
  if (const auto* integer = tovin::seek<tovin::IntegerValue>(object))
    return add(static_cast<int64_t>(integer->getInteger()));
  const tovin::WideString text = view.object().getText();
  text.isNull() ? addMissing() : add(text.view());
}

py::object Column::cellAt(size_t i, size_t& begin) const {
  switch (cells_[i]) {
    case Cell::text: {
      const std::wstring_view text = std::wstring_view(texts_).substr(begin, ends_[i] - begin);
      begin = ends_[i];
      return toStr(text);
    }
    case Cell::truth:
      return py::bool_(integers_[i] != 0);
    case Cell::number:
      return py::float_(numbers_[i]);
    case Cell::integer:
      return py::int_(integers_[i]);
    case Cell::missing:
      break;
  }
  return py::none();
}

py::object Column::finish() {
  const bool asTexts = wanted_ == Wanted::text || !allNumbers_;
  if (!asTexts) {
    if (allTruths_ && !cells_.empty() && allIntegers_) {
      std::vector<uint8_t> truths(integers_.begin(), integers_.end());
      return toArray(std::move(truths)).attr("view")("bool");
    }
    if (wanted_ == Wanted::number) return toArray(std::move(numbers_));
    if (allIntegers_ && (!cells_.empty() || wanted_ == Wanted::integer)) return toArray(std::move(integers_));
    return toArray(std::move(numbers_));
  }
  py::array array(py::dtype("O"), std::vector<py::ssize_t>{static_cast<py::ssize_t>(cells_.size())});
  auto** items = static_cast<PyObject**>(array.mutable_data());
  size_t begin = 0;
  for (size_t i = 0; i < cells_.size(); ++i) {
    py::object cell = cellAt(i, begin);
    if (wanted_ == Wanted::text && !cell.is_none()) cell = py::str(cell);
    Py_XDECREF(items[i]);
    items[i] = cell.release().ptr();
  }
  return array;
}

// What an element says: its own value, or, above others, the texts of all.
void addElement(Column& column, const iNode& node, PathQuery& text) {
  if (!node.hasChildren())
    column.add(node.viewValue());
  else
    column.add(std::wstring_view(text.text(node)));
}

void addCell(Column& column, PathQuery& query, PathQuery& text, const iNode& row) {
  switch (query.kind()) {
    case PathQuery::Kind::boolean:
      return column.add(query.boolean(row));
    case PathQuery::Kind::number:
      return column.add(query.number(row));
    case PathQuery::Kind::text:
      return column.add(std::wstring_view(query.text(row)));
    case PathQuery::Kind::nodes:
      break;
  }
  uint32_t attribute = PathQuery::noAttribute;
  const iNode* found = query.first(row, attribute);
  if (!found) return column.addMissing();
  if (attribute != PathQuery::noAttribute) return column.add(found->viewAttribute(attribute));
  addElement(column, *found, text);
}

Wanted wantedOf(py::handle type) {
  if (type.is_none()) return Wanted::whatFits;
  if (type.is(py::handle(reinterpret_cast<PyObject*>(&PyUnicode_Type)))) return Wanted::text;
  if (type.is(py::handle(reinterpret_cast<PyObject*>(&PyFloat_Type)))) return Wanted::number;
  if (type.is(py::handle(reinterpret_cast<PyObject*>(&PyLong_Type)))) return Wanted::integer;
  throw py::type_error("the type of a column is str, float or int");
}

py::object finished(Column& column, const std::string& name) {
  if (column.fails()) throw py::value_error("not every cell of " + name + " is a number of that type");
  return column.finish();
}

// columns: a list of (name, expression, type or None).
py::dict table(py::handle node, py::handle rows, const py::list& columns) {
  NodeObject& self = nodeObject(node);
  const std::wstring rowText = toWideWithoutNul(rows, "the query for the rows");
  std::vector<std::wstring> expressions;
  std::vector<Column> made;
  for (const py::handle item : columns) {
    const auto column = py::cast<py::tuple>(item);
    expressions.push_back(toWideWithoutNul(column[1], "the query for a column"));
    made.emplace_back(wantedOf(column[2]));
  }
  failingAs(Failure::query, [&] {
    const Alone alone(node);
    PathQuery rowQuery(rowText.c_str(), *self.node), text(L"string(.)", *self.node);
    std::vector<PathQuery> queries;
    for (const std::wstring& expression : expressions) queries.emplace_back(expression.c_str(), *self.node);
    rowQuery.visit(*self.node, [&](const iNode& row, uint32_t) {
      for (size_t i = 0; i < queries.size(); ++i) addCell(made[i], queries[i], text, row);
      return true;
    });
  });
  py::dict result;
  for (size_t i = 0; i < made.size(); ++i) {
    const py::object name = py::cast<py::tuple>(columns[i])[0];
    result[name] = finished(made[i], py::cast<std::string>(py::repr(name)));
  }
  return result;
}

py::object toNumpy(py::handle node, py::handle expression, py::handle type) {
  NodeObject& self = nodeObject(node);
  const std::wstring wide = toWideWithoutNul(expression, "a query");
  Column column(wantedOf(type));
  // A list of integers on its own is the array.
  std::vector<int32_t> integers;
  bool isList = false;
  failingAs(Failure::query, [&] {
    const Alone alone(node);
    PathQuery query(wide.c_str(), *self.node), text(L"string(.)", *self.node);
    if (query.kind() != PathQuery::Kind::nodes) return addCell(column, query, text, *self.node);
    query.visit(*self.node, [&](const iNode& found, uint32_t attribute) {
      const bool isAttribute = attribute != PathQuery::noAttribute;
      const AttributeView view = isAttribute ? found.viewAttribute(attribute) : found.viewValue();
      if (column.size() == 0 && !isList && view.isObject()) {
        if (const auto* list =
                tovin::seek<tovin::IntegerArrayValue>(static_cast<const tovin::Object*>(&view.object()))) {
          integers.assign(list->content().begin(), list->content().end());
          isList = true;
        }
      }
      isAttribute ? column.add(view) : addElement(column, found, text);
      return true;
    });
  });
  if (isList && column.size() == 1) return toArray(std::move(integers));
  return finished(column, "the query");
}

}  // namespace

void addQueries(py::module_& module) {
  module.def("query", query);
  module.def("query_one", queryOne);
  module.def("table", table);
  module.def("to_numpy", toNumpy);
}
