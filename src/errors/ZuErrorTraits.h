// ZuErrorTraits: how a host classifies errors for the remote command-batch
// runner (setErrorTraits). The base classifies nothing: every query is
// false, 0 or empty and every setter does nothing; a host derives from it
// and maps its own error numbers.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

class ZUUTILS_API ZuErrorTraits {
 public:
  ZuErrorTraits() = default;
  ZuErrorTraits(const ZuErrorTraits&) = default;
  ZuErrorTraits& operator=(const ZuErrorTraits&) = default;
  // The virtual functions are declared in the order of their table slots.
  virtual ~ZuErrorTraits();

  virtual bool isCritical();
  virtual bool isMajor();
  virtual bool isMinor();
  virtual bool isInformational();
  virtual bool isOSError();
  virtual unsigned errorID();
  virtual int severity();

  virtual void clear(DWORD code);
  virtual void setCritical(DWORD code);
  virtual void setMajor(DWORD code);
  virtual void setMinor(DWORD code);
  virtual void setInformational(DWORD code);
  virtual void setOSCritical(DWORD code);
  virtual void setOSMajor(DWORD code);
  virtual void setOSMinor(DWORD code);

  virtual std::string textMessage();

  virtual void setFileNotFoundError(const std::string& fileName, int severity);
  virtual void setInsufficientMemoryError(int severity);
  virtual void setInvalidArgumentError(int severity);
  virtual void setTextError(unsigned errorID, const std::string& message, const std::string& detail, int severity);

  // The host's severity numbers for the four classes, most severe first.
  void setSeverityLevels(int critical, int major, int minor, int informational) {
    m_criticalLevel = critical;
    m_majorLevel = major;
    m_minorLevel = minor;
    m_informationalLevel = informational;
  }

 protected:
  int m_criticalLevel = 0;
  int m_majorLevel = 0;
  int m_minorLevel = 0;
  int m_informationalLevel = 0;
};
