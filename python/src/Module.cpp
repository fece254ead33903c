#include "Module.h"

#include "Errors.h"
#include "NodeObject.h"
#include "Values.h"
#include "tovin/Object.h"
#include "tovinCore/LeakDetector.h"
#include "ztbaseclient/Version.h"

namespace {

// Living objects of the library by class: what leak tests compare.
pybind11::dict liveObjects() {
  pybind11::dict live;
  for (const auto& count : tovin::LeakDetector::report()) live[pybind11::str(count.name)] = count.live;
  return live;
}

}  // namespace

PYBIND11_MODULE(_core, module) {
  module.doc() = "What the package ztbaseclient stands on.";
  module.attr("__version__") = ZTBASECLIENT_VERSION;
  module.def("live_objects", liveObjects);
  // Off, the address sanitizer sees every object.
  module.def("use_pools", [](bool on) { tovin::Object::m_dontUsePools = !on; });
  addErrors(module);
  addNodeType(module);
  addValues(module);
  addTrees(module);
  addQueries(module);
  addObjects(module);
  addServices(module);
  addCalls(module);
  addRequests(module);
  addTools(module);
}
