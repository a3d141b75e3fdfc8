#include "logging/LogWriterInterface.h"

#include <memory>
#include <new>

#include <boost/make_shared.hpp>

#include "platform/FileSystem.h"

namespace {

// Forwards to a CZuLogger that it owns.
class CLogWriterDefault : public CLogWriterWrapperBase {
 public:
  explicit CLogWriterDefault(std::unique_ptr<CZuLogger> logger) : m_logger(std::move(logger)) {}

  void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId, const char* context,
                  const char* format, ...) override {
    va_list args;
    va_start(args, format);
    LogMessageV(level, function, line, jobId, context, format, args);
    va_end(args);
  }
  void LogMessageV(int level, const char* function, unsigned long line, unsigned long long jobId,
                   const char* context, const char* format, va_list args) override {
    if (m_logger) m_logger->LogMessageV(level, function, line, static_cast<long long>(jobId), context, format, args);
  }
  void SetDebugLevel(int level) override {
    if (m_logger) m_logger->SetDebugLevel(level);
  }
  int GetDebugLevel() override { return m_logger ? m_logger->GetDebugLevel() : 0; }
  // The logger's settings come from its host's setters; nothing to re-read.
  void RefreshConfiguration() override {}

 private:
  std::unique_ptr<CZuLogger> m_logger;
};

}  // namespace

CLogWriterInterface::~CLogWriterInterface() = default;

boost::shared_ptr<CLogWriterInterfaceThreadWrapper> CLogWriterInterface::GetThreadAttachment() {
  return boost::shared_ptr<CLogWriterInterfaceThreadWrapper>();
}

void CLogWriterNull::Initialize() {}
void CLogWriterNull::SetLogAppName(const std::string&) {}
void CLogWriterNull::SetLogFileName(const std::string&) {}
void CLogWriterNull::LogMessage(int, const char*, unsigned long, unsigned long long, const char*, const char*, ...) {}
void CLogWriterNull::LogMessageV(int, const char*, unsigned long, unsigned long long, const char*, const char*,
                                 va_list) {}
void CLogWriterNull::SetDebugLevel(int) {}
int CLogWriterNull::GetDebugLevel() { return 0; }
void CLogWriterNull::RefreshConfiguration() {}
unsigned long CLogWriterNull::GetDebugMask() { return 0; }
void CLogWriterNull::SetDebugMask(unsigned long) {}

void CLogWriterWrapperBase::Initialize() {}
void CLogWriterWrapperBase::SetLogAppName(const std::string&) {}
void CLogWriterWrapperBase::SetLogFileName(const std::string&) {}
unsigned long CLogWriterWrapperBase::GetDebugMask() { return m_debugMask; }
void CLogWriterWrapperBase::SetDebugMask(unsigned long mask) { m_debugMask = mask; }

CLogWriterInterfaceThreadWrapper::CLogWriterInterfaceThreadWrapper(boost::shared_ptr<CLogWriterInterface> writer,
                                                                   unsigned long long jobId,
                                                                   const std::string& context)
    : m_writer(writer ? std::move(writer) : CreateNullLogWriter()), m_jobId(jobId), m_context(context) {}

void CLogWriterInterfaceThreadWrapper::Initialize() { m_writer->Initialize(); }
void CLogWriterInterfaceThreadWrapper::SetLogAppName(const std::string& appName) { m_writer->SetLogAppName(appName); }
void CLogWriterInterfaceThreadWrapper::SetLogFileName(const std::string& fileName) {
  m_writer->SetLogFileName(fileName);
}

void CLogWriterInterfaceThreadWrapper::LogMessage(int level, const char* function, unsigned long line,
                                                  unsigned long long jobId, const char* context, const char* format,
                                                  ...) {
  va_list args;
  va_start(args, format);
  LogMessageV(level, function, line, jobId, context, format, args);
  va_end(args);
}

void CLogWriterInterfaceThreadWrapper::LogMessageV(int level, const char* function, unsigned long line,
                                                   unsigned long long jobId, const char* context, const char* format,
                                                   va_list args) {
  const bool noContext = context == nullptr || *context == '\0';
  m_writer->LogMessageV(level, function, line, jobId == 0 ? m_jobId : jobId, noContext ? m_context.c_str() : context,
                        format, args);
}

void CLogWriterInterfaceThreadWrapper::SetDebugLevel(int level) { m_writer->SetDebugLevel(level); }
int CLogWriterInterfaceThreadWrapper::GetDebugLevel() { return m_writer->GetDebugLevel(); }
void CLogWriterInterfaceThreadWrapper::RefreshConfiguration() { m_writer->RefreshConfiguration(); }
unsigned long CLogWriterInterfaceThreadWrapper::GetDebugMask() { return m_writer->GetDebugMask(); }
void CLogWriterInterfaceThreadWrapper::SetDebugMask(unsigned long mask) { m_writer->SetDebugMask(mask); }

boost::shared_ptr<CLogWriterInterfaceThreadWrapper> CLogWriterInterfaceThreadWrapper::GetThreadAttachment() {
  return shared_from_this();
}

boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const char* appName) {
  return CreateDefaultLogWriter(std::string(), appName != nullptr ? appName : "", false, std::string());
}

boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const std::string& directory,
                                                              const std::string& appName) {
  return CreateDefaultLogWriter(directory, appName, false, std::string());
}

boost::shared_ptr<CLogWriterInterface> CreateDefaultLogWriter(const std::string& directory,
                                                              const std::string& appName, bool keepLogFileOpen,
                                                              const std::string& productName) {
  std::unique_ptr<CZuLogger> logger;
  try {
    logger.reset(new CZuLogger);
  } catch (const std::bad_alloc&) {
    // The writer then drops everything.
  }
  // A logger that could not start would drop every line while claiming
  // debug level 2: the writer then holds none and says 0.
  if (logger && logger->Initialize(appName, directory.empty() ? FXPlatform::TempDirectory() : directory, 2,
                                   keepLogFileOpen, productName)
                    .IsError())
    logger.reset();
  return boost::make_shared<CLogWriterDefault>(std::move(logger));
}

boost::shared_ptr<CLogWriterInterface> CreateNullLogWriter() { return boost::make_shared<CLogWriterNull>(); }
