// ISendEventInterface: the process-wide sink for events that describe
// failures (for example to a management server). Every operation does
// nothing unless a subclass overrides it; the instance is empty until the
// host sets one.
#pragma once

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

class ZUUTILS_API ISendEventInterface {
 public:
  virtual ~ISendEventInterface();
  virtual void SendEvent(const CZuError& error, int severity, long long jobId, int eventId);
  virtual void SendCriticalEvent(const CZuError& error, long long jobId, int eventId);
  virtual void SendMajorEvent(const CZuError& error, long long jobId, int eventId);
  virtual void SendMinorEvent(const CZuError& error, long long jobId, int eventId);
  virtual void SendInfoEvent(const CZuError& error, long long jobId, int eventId);
  virtual void SetPendingCause(const CZuError& error, long long jobId);
  virtual void SetPendingCauseAndEvent(const CZuError& error, int severity, int eventId);
  virtual void SetPendingCauseAndCriticalEvent(const CZuError& error, int eventId);

  // Safe to call from any thread; a reader keeps the instance it got alive.
  static boost::shared_ptr<ISendEventInterface> GetInstance();
  static void SetInstance(boost::shared_ptr<ISendEventInterface> instance);

 private:
  static boost::shared_ptr<ISendEventInterface> m_ptrInstance;
};
