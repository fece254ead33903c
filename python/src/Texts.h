// Texts between the two worlds: a str of characters, and wide text of UTF-16 units.
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <string_view>

#include "tovin/AttributeView.h"
#include "tovin/BaseString.h"

namespace py = pybind11;

/// Surrogate pairs become one character, a lone surrogate stays itself.
py::str toStr(std::wstring_view text);
/// None for a null text.
py::object toStr(const tovin::WideString& text);
py::object toStr(const wchar_t* text);
/// A new reference to the text of a view, null with a Python error set.
PyObject* newStr(const tovin::AttributeView& view);
PyObject* newStr(std::wstring_view text);
/// The units of a view that is a text.
std::wstring unitsOf(const tovin::AttributeView& view);

/// Of a str. TypeError for anything else; `what` is what the message calls it.
std::wstring toWide(py::handle text, const char* what);
/// The same of what ends at a NUL in the library. ValueError for a text with one.
std::wstring toWideWithoutNul(py::handle text, const char* what);
/// UTF-8, a lone surrogate in three bytes.
std::string toUtf8(py::handle text, const char* what);
/// The name of a file, of str, bytes or os.PathLike, as the platform's own functions have it.
std::wstring toFileName(py::handle path);
/// The same as the library's UTF-8 names of files.
std::string toPath(py::handle path);
