#include "Errors.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "Texts.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztcore/CHttpException.h"
#include "ztservice/Error.h"

namespace {

// "CHttpException" of the type that was thrown.
std::string classNameOf(const tovin::Exception& e) {
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(typeid(e).name(), nullptr, nullptr, nullptr), std::free);
  const std::string whole = name ? name.get() : typeid(e).name();
  const size_t colon = whole.rfind("::");
  return colon == whole.npos ? whole : whole.substr(colon + 2);
}

const char* familyOf(const tovin::Exception& e, Failure failure) {
  if (dynamic_cast<const tovin::InvalidIndexException*>(&e)) return "IndexError";
  if (dynamic_cast<const tovin::MemoryException*>(&e)) return "MemoryError";
  if (dynamic_cast<const CHttpException*>(&e)) return "HttpError";
  if (dynamic_cast<const ztservice::Error*>(&e)) return "ServiceError";
  if (!e.getReason().empty()) return "FileError";
  if (failure == Failure::query) return "QueryError";
  if (failure == Failure::parse) return "ParseError";
  return "FormatError";
}

py::list trailOf(const tovin::Exception& e) {
  py::list trail;
  for (const tovin::CatchEntry& entry : e.getTrail())
    trail.append(py::make_tuple(entry.className, entry.method));
  return trail;
}

void raise(const tovin::Exception& e, Failure failure) {
  const wchar_t* message = e.getMessage();
  std::wstring text = message ? message : L"";
  if (failure == Failure::parse) text = tovin::charactersOfBytes(text);
  while (!text.empty() && text.back() == L'\n') text.pop_back();
  const auto optional = [](const std::wstring& value) {
    return value.empty() ? py::object(py::none()) : py::object(toStr(std::wstring_view(value)));
  };
  const auto number = [](int64_t value) {
    return value > 0 ? py::object(py::int_(value)) : py::object(py::none());
  };
  const py::object error =
      py::module_::import("ztbaseclient._errors")
          .attr("make")(familyOf(e, failure), toStr(std::wstring_view(text)), classNameOf(e), trailOf(e),
                        optional(e.getFile()), number(e.getLine()), number(e.getColumn()),
                        optional(e.getReason()));
  PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
}

}  // namespace

void rethrowAsPython(Failure failure) {
  try {
    throw;
  } catch (const tovin::Exception& e) {
    raise(e, failure);
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& e) {
    PyErr_SetString(PyExc_RuntimeError, e.what());
  }
  throw py::error_already_set();
}

namespace {

[[noreturn]] void throwOwn(const char* name, py::object message) {
  const py::object error = py::module_::import("ztbaseclient._errors").attr(name)(std::move(message), name);
  PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
  throw py::error_already_set();
}

}  // namespace

void throwMissing(py::handle name) {
  throwOwn("MissingError", py::str("Property {} does not exist").format(name));
}

void throwBusy() { throwOwn("BusyError", py::str("another thread uses the tree")); }

void addErrors(py::module_&) {
  py::register_exception_translator([](std::exception_ptr failure) {
    try {
      if (failure) std::rethrow_exception(failure);
    } catch (const tovin::Exception& e) {
      raise(e, Failure::none);
    } catch (const py::cast_error&) {
      PyErr_SetString(PyExc_TypeError, "an argument is of a wrong type, or a number out of range");
    }
  });
}
