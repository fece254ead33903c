// Values of properties and nodes as native Python objects, and back.
#pragma once

#include <pybind11/pybind11.h>

#include "tovin/AttributeView.h"
#include "tovin/Ptr.h"
#include "tovin/values/Value.h"

namespace py = pybind11;

using OwnedValue = tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator>;

/// A new reference, null with a Python error set.
PyObject* newValue(const tovin::AttributeView& view);
/// str, float, int, None, a list of str or of int, Bits or any set of int. TypeError, OverflowError.
OwnedValue makeValue(py::handle object);

void addValues(py::module_& module);
