#include "ztbaseclient/tools/InProcMonitor.h"

const tovin::ClassTagDecl InProcMonitor::Tag("DraVolin.InProcMonitor.1");
tovin::LeakDetector InProcMonitor::m_leakDetector(InProcMonitor::ClassName);
tovin::ClassImp<InProcMonitor> InProcMonitor::m_class(InProcMonitor::Tag, InProcMonitor::m_leakDetector);

InProcMonitor::InProcMonitor(const InProcMonitor& other)
    : tovin::Object(other), tovin::CountedObject(other), FrameworkClass(other) {}

InProcMonitor::~InProcMonitor() = default;

void InProcMonitor::GetMonitor(tovin::Ptr<InProcMonitor>& out) {
  tovin::guarded({ClassName, "GetMonitor"}, [&] { out.reset(); });
}
