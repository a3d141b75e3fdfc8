// The log sinks that code logs through, held by shared pointer: a host's own
// sink, the null sink, or the default writer with a CZuLogger of its own.
#pragma once

#include <cstdarg>
#include <string>

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "logging/ZuLogger.h"

class CLogWriterInterfaceThreadWrapper;

// Levels as CZuLogger's: a line is kept when its level is not above the
// debug level; the library's own alarms use level -1. Every writer keeps
// this order of virtual operations.
class ZUUTILS_API CLogWriterInterface {
 public:
  virtual ~CLogWriterInterface();
  virtual void Initialize() = 0;
  virtual void SetLogAppName(const std::string& appName) = 0;
  virtual void SetLogFileName(const std::string& fileName) = 0;
  virtual void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId,
                          const char* context, const char* format, ...) ZU_LOG_FORMAT(7, 8) = 0;
  virtual void LogMessageV(int level, const char* function, unsigned long line, unsigned long long jobId,
                           const char* context, const char* format, va_list args) = 0;
  virtual void SetDebugLevel(int level) = 0;
  virtual int GetDebugLevel() = 0;
  virtual void RefreshConfiguration() = 0;
  virtual unsigned long GetDebugMask() = 0;
  virtual void SetDebugMask(unsigned long mask) = 0;
  // The attachment of the writer to one thread's work; none here.
  virtual boost::shared_ptr<CLogWriterInterfaceThreadWrapper> GetThreadAttachment();
};

// Drops everything; its level and mask are 0.
class ZUUTILS_API CLogWriterNull : public CLogWriterInterface {
 public:
  void Initialize() override;
  void SetLogAppName(const std::string& appName) override;
  void SetLogFileName(const std::string& fileName) override;
  void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId, const char* context,
                  const char* format, ...) override;
  void LogMessageV(int level, const char* function, unsigned long line, unsigned long long jobId,
                   const char* context, const char* format, va_list args) override;
  void SetDebugLevel(int level) override;
  int GetDebugLevel() override;
  void RefreshConfiguration() override;
  unsigned long GetDebugMask() override;
  void SetDebugMask(unsigned long mask) override;
};

// The base of writers that forward to another sink: configuration does
// nothing, the debug mask is kept here.
class ZUUTILS_API CLogWriterWrapperBase : public CLogWriterInterface {
 public:
  void Initialize() override;
  void SetLogAppName(const std::string& appName) override;
  void SetLogFileName(const std::string& fileName) override;
  unsigned long GetDebugMask() override;
  void SetDebugMask(unsigned long mask) override;

 private:
  unsigned long m_debugMask = 0;
};

// A writer as one thread's work sees it: lines logged through it with job
// id 0 carry the attachment's job id, lines without a context its context;
// everything else goes to the wrapped writer unchanged.
class ZUUTILS_API CLogWriterInterfaceThreadWrapper
    : public CLogWriterInterface,
      public boost::enable_shared_from_this<CLogWriterInterfaceThreadWrapper> {
 public:
  CLogWriterInterfaceThreadWrapper(boost::shared_ptr<CLogWriterInterface> writer, unsigned long long jobId,
                                   const std::string& context);
  void Initialize() override;
  void SetLogAppName(const std::string& appName) override;
  void SetLogFileName(const std::string& fileName) override;
  void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId, const char* context,
                  const char* format, ...) override;
  void LogMessageV(int level, const char* function, unsigned long line, unsigned long long jobId,
                   const char* context, const char* format, va_list args) override;
  void SetDebugLevel(int level) override;
  int GetDebugLevel() override;
  void RefreshConfiguration() override;
  unsigned long GetDebugMask() override;
  void SetDebugMask(unsigned long mask) override;
  // Itself: it is the attachment.
  boost::shared_ptr<CLogWriterInterfaceThreadWrapper> GetThreadAttachment() override;

 private:
  boost::shared_ptr<CLogWriterInterface> m_writer;
  unsigned long long m_jobId;
  std::string m_context;
};

// The default writer: a CZuLogger of its own, initialised with the module
// name and folder (an empty folder is the system's temporary folder). The
// four-argument form also sets whether the file stays open between lines
// and the product text of the header. When no logger can be had, or it
// cannot be initialised, the writer drops everything and reports debug
// level 0.
ZUUTILS_API boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const char* appName);
ZUUTILS_API boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const std::string& directory,
                                                                          const std::string& appName);
ZUUTILS_API boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const std::string& directory,
                                                                          const std::string& appName,
                                                                          bool keepLogFileOpen,
                                                                          const std::string& productName);
ZUUTILS_API boost::shared_ptr<CLogWriterInterface> CreateNullLogWriter();
