// What must hold between a program and the DLLs: types, exceptions, objects and constants are the same on
// both sides.
#include <cstdio>
#include <memory>
#include <typeinfo>

#include "ztbaseclient/ztbaseclient.h"

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::printf("user: %s\n", what);
  ++failures;
}

// A class of the program's own, registered with the DLL.
class Own : public tovin::FrameworkClass<Own, tovin::CountedObject> {
 public:
  static constexpr const char* ClassName = "Own";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<Own> m_class;
};
const tovin::ClassTagDecl Own::Tag("user.Own");
tovin::LeakDetector Own::m_leakDetector(Own::ClassName);
tovin::ClassImp<Own> Own::m_class(Own::Tag, Own::m_leakDetector);

void exchangeObjects() {
  const tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
  root->setName(L"job");
  root->appendChild(CBaseNode::allocate());
  tovin::Object* made = tovin::Class::requireClass(CBaseNode::Tag).newInstance();
  expect(typeid(*made) == typeid(CBaseNode), "an object made by name has another type");
  expect(dynamic_cast<tovin::iNode*>(made) != nullptr, "an object made by name is no node");
  made->deleteInstance();
  const CBaseNode copy(*root);
  expect(copy.getNumberOfChildren() == 1, "a copy lost its child");
  CBaseNode assigned;
  assigned = copy;
  expect(std::wstring_view(assigned.getName()) == L"job", "an assigned node lost its name");
  std::unique_ptr<CCredentials> credentials(new CCredentials);
  const CCredentials second(*credentials);
  tovin::Object* own = tovin::newInstance("user.Own");
  expect(dynamic_cast<Own*>(own) != nullptr, "a class of the program is not found by its name");
  own->deleteInstance();
}

void catchExceptions() {
  try {
    tovin::newInstance("user.None");
    expect(false, "nothing was raised");
  } catch (const tovin::Exception& e) {
    expect(std::wstring_view(e.getMessage()).starts_with(L"Unknown class user.None"), "another message");
  }
  try {
    CWsdlParser().Parse(tovin::WideString(L"missing.wsdl"));
    expect(false, "nothing was raised");
  } catch (const std::exception& e) {
    expect(dynamic_cast<const tovin::Exception*>(&e) != nullptr, "an exception lost its type");
  }
  tovin::Ptr<CBaseNode> node(CBaseNode::allocate());
  try {
    node->getChildAt(7);
    expect(false, "nothing was raised");
  } catch (const tovin::InvalidIndexException&) {
  }
}

}  // namespace

int main() {
  tovin::Object::m_dontUsePools = true;  // so that what lives at the end is a leak
  exchangeObjects();
  catchExceptions();
  expect(CBaseNode::BASE_NODE_VERSION > 0 && CDiffFiles::DefaultTolerance > 0, "constants are not there");
  for (const tovin::LeakDetector::Count& each : tovin::LeakDetector::report()) {
    expect(each.live == 0 || std::string_view(each.name) == "NullValue", each.name.c_str());
  }
  return failures;
}
