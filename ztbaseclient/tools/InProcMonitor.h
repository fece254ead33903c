#pragma once

#include "tovin/BaseString.h"
#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "ztbaseclient/Export.h"

/// The base of a framework class that is counted and nothing else.
class InProcMonitorBase : public virtual tovin::CountedObject {};

/// Follows jobs that run inside the client's own process. Here nothing is followed: whatever is asked counts
/// as finished, and there never is a monitor to be had, so that programs written for one run unchanged.
///
///     tovin::Ptr<InProcMonitor> monitor;
///     InProcMonitor::GetMonitor(monitor);
///     if (monitor && !monitor->Wait(job, 1000)) …  // never: there is no monitor
///
/// - Ownership: counted; one that nobody holds is given back with deleteInstance().
/// - Units: time-outs in milliseconds; no call waits.
class ZTBASECLIENT_API InProcMonitor : public tovin::FrameworkClass<InProcMonitor, InProcMonitorBase> {
 public:
  static constexpr const char* ClassName = "InProcMonitor";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<InProcMonitor> m_class;

  InProcMonitor() = default;
  InProcMonitor(const InProcMonitor& other);
  InProcMonitor& operator=(const InProcMonitor& other) = default;
  ~InProcMonitor() override;

  static void CreateMonitor() noexcept {}
  static void DestroyMonitor() noexcept {}
  /// Gives up what `out` holds and leaves it null.
  static void GetMonitor(tovin::Ptr<InProcMonitor>& out);

  void Start(const tovin::BaseString<wchar_t>&) noexcept {}
  void Finish(const tovin::BaseString<wchar_t>&) noexcept {}
  void RemoveJob(const tovin::BaseString<wchar_t>&) noexcept {}
  bool IsFinished(const tovin::BaseString<wchar_t>&) const noexcept { return true; }
  bool AllFinished() const noexcept { return true; }
  bool Wait(const tovin::BaseString<wchar_t>&, long) const noexcept { return true; }
  bool WaitAll(long) const noexcept { return true; }
};
