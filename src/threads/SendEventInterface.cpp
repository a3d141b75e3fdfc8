#include "threads/SendEventInterface.h"

#include <mutex>

namespace {

std::mutex& InstanceLock() {
  static std::mutex lock;
  return lock;
}

}  // namespace

boost::shared_ptr<ISendEventInterface> ISendEventInterface::m_ptrInstance;

ISendEventInterface::~ISendEventInterface() = default;
void ISendEventInterface::SendEvent(const CZuError&, int, long long, int) {}
void ISendEventInterface::SendCriticalEvent(const CZuError&, long long, int) {}
void ISendEventInterface::SendMajorEvent(const CZuError&, long long, int) {}
void ISendEventInterface::SendMinorEvent(const CZuError&, long long, int) {}
void ISendEventInterface::SendInfoEvent(const CZuError&, long long, int) {}
void ISendEventInterface::SetPendingCause(const CZuError&, long long) {}
void ISendEventInterface::SetPendingCauseAndEvent(const CZuError&, int, int) {}
void ISendEventInterface::SetPendingCauseAndCriticalEvent(const CZuError&, int) {}

boost::shared_ptr<ISendEventInterface> ISendEventInterface::GetInstance() {
  std::lock_guard<std::mutex> guard(InstanceLock());
  return m_ptrInstance;
}

void ISendEventInterface::SetInstance(boost::shared_ptr<ISendEventInterface> instance) {
  boost::shared_ptr<ISendEventInterface> previous;
  {
    std::lock_guard<std::mutex> guard(InstanceLock());
    previous.swap(m_ptrInstance);
    m_ptrInstance = std::move(instance);
  }
  // The old instance goes outside the lock: its destructor may log or send.
}
