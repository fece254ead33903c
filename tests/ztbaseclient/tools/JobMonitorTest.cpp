#include "tests/support/Bytes.h"
#include "ztbaseclient/tools/InProcMonitor.h"

namespace {

TEST(JobMonitor, TheMonitorHandedOutIsNone) {
  tovin::Ptr<InProcMonitor> held(InProcMonitor::allocate());
  tovin::Ptr<InProcMonitor> out(held);
  InProcMonitor::GetMonitor(out);
  EXPECT_FALSE(out);
  EXPECT_EQ(held->getRefCount(), 1);
  held->Start(L"job");
  EXPECT_TRUE(held->Wait(L"job", -1));
}

TEST(JobMonitor, IsFoundByItsTag) {
  tovin::Object* object = tovin::newInstance("DraVolin.InProcMonitor.1");
  auto* monitor = tovin::seek<InProcMonitor>(object);
  ASSERT_NE(monitor, nullptr);
  const tovin::Ptr<InProcMonitor> held(monitor);
  const tovin::Ptr<InProcMonitor> copy(tovin::seek<InProcMonitor>(monitor->clone()));
  EXPECT_EQ(copy->getRefCount(), 1);
}

}  // namespace
