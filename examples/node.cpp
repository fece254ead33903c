// A node class of one's own: a step of a job, which counts how often it ran and keeps that in its record.
#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

class Step : public tovin::FrameworkClass<Step, CBaseNode> {
 public:
  static constexpr const char* ClassName = "Step";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<Step> m_class;

  void ran() { ++runs_; }
  int runs() const { return runs_; }

  // Copies are made by assigning from a node, whatever its class.
  void assignFromNode(const iNode* source, bool deep) override {
    CBaseNode::assignFromNode(source, deep);
    const auto* step = tovin::seek<Step>(static_cast<const tovin::Object*>(source));
    runs_ = step ? step->runs_ : 0;
  }
  void serialize(tovin::iByteOutputStream& stream) const override {
    WriteCompactInt(stream, runs_);
    CBaseNode::serialize(stream);
  }
  void deserialize(tovin::iByteInputStream& stream) override {
    ReadCompactInt(stream, runs_);
    CBaseNode::deserialize(stream);
  }
  void onDeactivate() override {
    runs_ = 0;
    CBaseNode::onDeactivate();
  }

 private:
  int32_t runs_ = 0;
};
const tovin::ClassTagDecl Step::Tag("example.Step");
tovin::LeakDetector Step::m_leakDetector(Step::ClassName);
tovin::PooledClassImp<Step> Step::m_class(Step::Tag, Step::m_leakDetector);

bool show(const char* what, tovin::iNode& job) {
  const auto* step = tovin::seek<Step>(static_cast<tovin::Object*>(job.getChildAt(0)));
  std::cout << what << ": " << tovin::wideToUtf8(job.getChildAt(0)->getName());
  if (step) std::cout << " ran " << step->runs() << " times";
  std::cout << '\n';
  return step && step->runs() == 2;
}

bool run() {
  const tovin::Ptr<CBaseNode> job(CBaseNode::allocate());
  const tovin::Ptr<Step> dock(Step::allocate());
  dock->setName(L"dock");
  dock->ran();
  dock->ran();
  job->appendChild(dock.get());

  const tovin::Ptr<tovin::iNode> copy(job->cloneNode(true));
  ztMemoryByteOutputStream record;
  job->serialize(record);
  ztMemoryByteInputStream in(record.GetBytes(), record.GetSize());
  const tovin::Ptr<CBaseNode> read(CBaseNode::allocate());
  read->deserialize(in);
  return show("job", *job) && show("copy", *copy) && show("read", *read);
}

}  // namespace

int main() {
  try {
    return run() ? 0 : 1;
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
  }
}
