#include "Texts.h"

#include <algorithm>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"

namespace {

bool isSurrogate(uint32_t unit) { return unit >= 0xD800 && unit < 0xE000; }

template <class Unit>
PyObject* joined(const Unit* units, size_t length) {
  std::u32string characters;
  characters.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    const auto unit = static_cast<uint32_t>(units[i]);
    const bool pair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < length &&
                      static_cast<uint32_t>(units[i + 1]) >> 10 == 0xDC00 >> 10;
    // A wide character that is none at all, which only a caller can bring in, is shown as such.
    if (pair)
      characters += static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10) +
                                          (static_cast<uint32_t>(units[++i]) - 0xDC00));
    else
      characters += unit > 0x10FFFF ? U'\uFFFD' : static_cast<char32_t>(unit);
  }
  return PyUnicode_FromKindAndData(PyUnicode_4BYTE_KIND, characters.data(),
                                   static_cast<Py_ssize_t>(characters.size()));
}

template <class Unit>
bool isPlain(const Unit* units, size_t length) {
  return std::none_of(units, units + length, [](Unit unit) {
    return isSurrogate(static_cast<uint32_t>(unit)) || static_cast<uint32_t>(unit) > 0x10FFFF;
  });
}

[[noreturn]] void refuseType(py::handle given, const char* what) {
  throw py::type_error(std::string(what) + " must be a str, not " + Py_TYPE(given.ptr())->tp_name);
}

}  // namespace

PyObject* newStr(std::wstring_view text) {
  if (!isPlain(text.data(), text.size())) return joined(text.data(), text.size());
  return PyUnicode_FromKindAndData(sizeof(wchar_t) == 2 ? PyUnicode_2BYTE_KIND : PyUnicode_4BYTE_KIND,
                                   text.data(), static_cast<Py_ssize_t>(text.size()));
}

PyObject* newStr(const tovin::AttributeView& view) {
  if (view.unit == 1)
    return PyUnicode_FromKindAndData(PyUnicode_1BYTE_KIND, view.units, static_cast<Py_ssize_t>(view.length));
  return newStr(std::wstring_view(unitsOf(view)));
}

std::wstring unitsOf(const tovin::AttributeView& view) {
  std::wstring text;
  if (view.kind == tovin::AttributeView::Kind::nullText) return text;
  text.reserve(view.length);
  if (view.unit == 1)
    for (char c : view.narrow()) text += static_cast<wchar_t>(static_cast<unsigned char>(c));
  else
    for (char16_t c : view.wide()) text += static_cast<wchar_t>(c);
  return text;
}

py::str toStr(std::wstring_view text) {
  PyObject* made = newStr(text);
  if (!made) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(made);
}

py::object toStr(const tovin::WideString& text) {
  return text.isNull() ? py::object(py::none()) : py::object(toStr(text.view()));
}

py::object toStr(const wchar_t* text) {
  return text ? py::object(toStr(std::wstring_view(text))) : py::object(py::none());
}

std::wstring toWide(py::handle text, const char* what) {
  if (!PyUnicode_Check(text.ptr())) refuseType(text, what);
  const Py_ssize_t length = PyUnicode_GET_LENGTH(text.ptr());
  const auto kind = PyUnicode_KIND(text.ptr());
  const void* data = PyUnicode_DATA(text.ptr());
  std::wstring wide;
  wide.reserve(static_cast<size_t>(length));
  for (Py_ssize_t i = 0; i < length; ++i) {
    const Py_UCS4 c = PyUnicode_READ(kind, data, i);
    if (c < 0x10000) {
      wide += static_cast<wchar_t>(c);
      continue;
    }
    wide += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
    wide += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  }
  return wide;
}

std::wstring toWideWithoutNul(py::handle text, const char* what) {
  std::wstring wide = toWide(text, what);
  if (wide.find(L'\0') != wide.npos)
    throw py::value_error(std::string(what) + " must not have a NUL character");
  return wide;
}

std::string toUtf8(py::handle text, const char* what) {
  return tovin::wideToUtf8(std::wstring_view(toWideWithoutNul(text, what)));
}

std::string toPath(py::handle path) {
  PyObject* bytes = nullptr;
  // Refuses what is no path with a TypeError, NUL characters with a ValueError.
  if (!PyUnicode_FSConverter(path.ptr(), &bytes)) throw py::error_already_set();
  return py::reinterpret_steal<py::bytes>(bytes);
}

std::wstring toFileName(py::handle path) { return tovin::platform::fileName(toPath(path)); }
