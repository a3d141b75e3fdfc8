// ZuException: what the remote command-batch layer throws. It is a plain
// value (no virtual functions, no std::exception base) and is not converted
// to or from CZuError anywhere in this library.
#pragma once

#include <string>

class ZuException {
 public:
  ZuException(const std::string& message, const std::string& detail, bool suppressEvent = false,
              bool suppressPendingReason = false)
      : m_suppressPendingReason(suppressPendingReason),
        m_message(message),
        m_detail(detail),
        m_suppressEvent(suppressEvent) {}
  ZuException(const std::string& message, int code, const std::string& detail)
      : m_message(message), m_code(code), m_detail(detail) {}

  // Set the flag and return the exception, so that a thrower can write
  //   throw ZuException("Cannot connect", host).suppressEvent();
  ZuException& suppressEvent() {
    m_suppressEvent = true;
    return *this;
  }
  ZuException& suppressPendingReason() {
    m_suppressPendingReason = true;
    return *this;
  }

  const std::string& message() const { return m_message; }
  const std::string& detail() const { return m_detail; }
  int code() const { return m_code; }
  bool isEventSuppressed() const { return m_suppressEvent; }
  bool isPendingReasonSuppressed() const { return m_suppressPendingReason; }

 private:
  // The field order is part of the layout the batch layer shares with hosts.
  bool m_suppressPendingReason = false;
  std::string m_message;
  int m_code = 0;
  std::string m_detail;
  bool m_suppressEvent = false;
};
