#include "Values.h"

#include <algorithm>
#include <limits>

#include "Texts.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"

namespace {

using Kind = tovin::AttributeView::Kind;

// More bits than this are a mistake sooner than a set.
constexpr unsigned mostBits = 1u << 30;
PyObject* bitsClass = nullptr;

template <class T>
const T* as(const tovin::Value& value) {
  return tovin::seek<T>(static_cast<const tovin::Object*>(&value));
}

PyObject* release(py::object object) { return object.release().ptr(); }

py::object bitsOf(const tovin::BitsetValue& bits) {
  py::list on;
  const unsigned count = bits.getNumBits();
  for (unsigned bit = bits.getNextNoCheck(0); bit < count; bit = bits.getNextNoCheck(bit + 1)) on.append(bit);
  return py::reinterpret_borrow<py::object>(bitsClass)(on, count);
}

PyObject* newObjectValue(const tovin::Value& value) {
  if (const auto* text = as<tovin::StringValue>(value)) return release(toStr(text->getString()));
  if (const auto* real = as<tovin::DoubleValue>(value)) return PyFloat_FromDouble(real->getDouble());
  if (const auto* integer = as<tovin::IntegerValue>(value)) return PyLong_FromLong(integer->getInteger());
  if (const auto* bits = as<tovin::BitsetValue>(value)) return release(bitsOf(*bits));
  if (const auto* numbers = as<tovin::IntegerArrayValue>(value)) {
    const auto& content = numbers->content();
    py::list list(content.size());
    for (size_t i = 0; i < content.size(); ++i) list[i] = py::int_(content[i]);
    return release(list);
  }
  if (const auto* texts = as<tovin::StringArrayValue>(value)) {
    const auto& content = texts->content();
    py::list list(content.size());
    for (size_t i = 0; i < content.size(); ++i) list[i] = toStr(content[i]);
    return release(list);
  }
  return Py_NewRef(Py_None);
}

int toInteger(py::handle object) {
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(object.ptr(), &overflow);
  if (number == -1 && !overflow && PyErr_Occurred()) throw py::error_already_set();
  if (overflow || number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    PyErr_SetString(PyExc_OverflowError, "an integer of a property has 32 bits: -2147483648 to 2147483647");
    throw py::error_already_set();
  }
  return static_cast<int>(number);
}

template <class T>
OwnedValue owned(T* value) {
  return OwnedValue(value);
}

template <class T>
T* fresh(OwnedValue& holder) {
  T* value = T::m_class.allocate();
  holder = OwnedValue(value);
  return value;
}

OwnedValue makeList(const py::sequence& items) {
  OwnedValue made;
  const bool numbers = items.size() > 0 && PyLong_Check(py::object(items[0]).ptr());
  if (numbers) {
    auto& content = fresh<tovin::IntegerArrayValue>(made)->content();
    for (const py::handle item : items) {
      if (!PyLong_Check(item.ptr())) throw py::type_error("a list of a property has str only, or int only");
      content.push_back(toInteger(item));
    }
    return made;
  }
  auto& content = fresh<tovin::StringArrayValue>(made)->content();
  for (const py::handle item : items) {
    if (item.is_none())
      content.emplace_back();
    else if (PyUnicode_Check(item.ptr()))
      content.emplace_back(std::wstring_view(toWide(item, "an item")));
    else
      throw py::type_error("a list of a property has str only, or int only");
  }
  return made;
}

unsigned toBit(py::handle object) {
  const long long bit = PyLong_Check(object.ptr()) ? PyLong_AsLongLong(object.ptr()) : -1;
  if (PyErr_Occurred()) PyErr_Clear();
  if (bit < 0 || bit >= mostBits)
    throw py::value_error("a bit is an int from 0 to " + std::to_string(mostBits - 1));
  return static_cast<unsigned>(bit);
}

OwnedValue makeBits(py::handle set) {
  std::vector<unsigned> on;
  unsigned count = 0;
  for (const py::handle item : py::iter(set)) {
    on.push_back(toBit(item));
    count = std::max(count, on.back() + 1);
  }
  if (py::hasattr(set, "size")) {
    const long long size = py::cast<long long>(set.attr("size"));
    if (size < count || size > mostBits)
      throw py::value_error("size is less than the bits need, or too large");
    count = static_cast<unsigned>(size);
  }
  OwnedValue made;
  auto* bits = fresh<tovin::BitsetValue>(made);
  bits->resize(count);
  for (unsigned bit : on) bits->setOn(bit);
  return made;
}

bool isSet(py::handle object) {
  return PyAnySet_Check(object.ptr()) || PyObject_IsInstance(object.ptr(), bitsClass) == 1;
}

}  // namespace

PyObject* newValue(const tovin::AttributeView& view) {
  switch (view.kind) {
    case Kind::text:
      return newStr(view);
    case Kind::number:
      return PyFloat_FromDouble(view.number);
    case Kind::integer:
      return PyLong_FromLong(view.integer);
    case Kind::value:
    case Kind::property:
      return newObjectValue(view.object());
    case Kind::nullText:
    case Kind::nullValue:
      break;
  }
  return Py_NewRef(Py_None);
}

OwnedValue makeValue(py::handle object) {
  OwnedValue made;
  if (object.is_none()) {
    fresh<tovin::NullValue>(made);
  } else if (PyUnicode_Check(object.ptr())) {
    const std::wstring text = toWide(object, "a value");
    fresh<tovin::StringValue>(made)->content() = tovin::WideString(std::wstring_view(text));
  } else if (PyFloat_Check(object.ptr())) {
    fresh<tovin::DoubleValue>(made)->content() = PyFloat_AS_DOUBLE(object.ptr());
  } else if (PyLong_Check(object.ptr())) {
    fresh<tovin::IntegerValue>(made)->content() = toInteger(object);
  } else if (PyList_Check(object.ptr()) || PyTuple_Check(object.ptr())) {
    return makeList(py::reinterpret_borrow<py::sequence>(object));
  } else if (isSet(object)) {
    return makeBits(object);
  } else if (PyIndex_Check(object.ptr()) || PyObject_HasAttrString(object.ptr(), "__float__")) {
    // NumPy's scalars: an integer first, for those are floats too.
    const bool integer = PyIndex_Check(object.ptr());
    PyObject* number = integer ? PyNumber_Index(object.ptr()) : PyNumber_Float(object.ptr());
    if (!number) throw py::error_already_set();
    return makeValue(py::reinterpret_steal<py::object>(number));
  } else {
    throw py::type_error(
        std::string("a value is str, float, int, None, a list of str or int, or a set of int, not ") +
        Py_TYPE(object.ptr())->tp_name);
  }
  return made;
}

void addValues(py::module_& module) {
  module.def("set_bits_class", [](py::type type) { bitsClass = type.inc_ref().ptr(); });
}
