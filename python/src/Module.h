// The parts of the extension module, one a topic.
#pragma once

#include <pybind11/pybind11.h>

void addTrees(pybind11::module_& module);
void addQueries(pybind11::module_& module);
void addObjects(pybind11::module_& module);
void addServices(pybind11::module_& module);
void addCalls(pybind11::module_& module);
void addRequests(pybind11::module_& module);
void addTools(pybind11::module_& module);
