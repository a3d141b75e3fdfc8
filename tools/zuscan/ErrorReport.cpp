#include "ErrorReport.h"

#include <errors/ErrorOutputFormat.h>
#include <logging/ZuLogger.h>

namespace zuscan {

void CErrorReport::Report(const CZuError& error, const char* function, unsigned long line) {
  CZuLogger::GetGlobalInstance().LogMessage(1, function, line, "", "%s", error.AsString().c_str());
  std::lock_guard<std::mutex> hold(m_lock);
  if (++m_count <= kShown) {
    std::fprintf(m_err, "zuscan: %s\n", error.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE).c_str());
  }
}

unsigned long long CErrorReport::Count() const {
  std::lock_guard<std::mutex> hold(m_lock);
  return m_count;
}

void CErrorReport::Finish(const std::string& logFile) {
  const unsigned long long count = Count();
  if (count > kShown) {
    std::fprintf(m_err, "zuscan: %llu more errors, all of them in %s\n", count - kShown, logFile.c_str());
  }
}

}  // namespace zuscan
