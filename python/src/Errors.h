// Exceptions of the library as Python's.
#pragma once

#include <pybind11/pybind11.h>

/// What the family of an exception is, where its class alone does not say.
enum class Failure { none, parse, query };

/// Calls body with what it throws as a Python exception of that family.
void addErrors(pybind11::module_& module);
/// From a handler: the exception in flight, thrown on as error_already_set.
[[noreturn]] void rethrowAsPython(Failure failure);
/// As MissingError, a KeyError too.
[[noreturn]] void throwMissing(pybind11::handle name);
/// As BusyError: another thread uses the tree.
[[noreturn]] void throwBusy();

template <class Body>
decltype(auto) failingAs(Failure failure, Body&& body) {
  try {
    return body();
  } catch (const pybind11::builtin_exception&) {
    throw;
  } catch (const pybind11::error_already_set&) {
    throw;
  } catch (...) {
    rethrowAsPython(failure);
  }
}
