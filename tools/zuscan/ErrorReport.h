// Failures during a scan: each goes to the log with its full text and to
// standard error in its single-line form, the first few of them; the rest
// are counted and summed up at the end.
#pragma once

#include <cstdio>
#include <mutex>

#include <errors/ZuError.h>

namespace zuscan {

class CErrorReport {
 public:
  static constexpr unsigned long long kShown = 20;

  explicit CErrorReport(std::FILE* err) : m_err(err) {}

  // Safe to call from several threads.
  void Report(const CZuError& error, const char* function, unsigned long line);
  unsigned long long Count() const;
  // "N more errors" when not all were shown.
  void Finish(const std::string& logFile);

 private:
  std::FILE* m_err;
  mutable std::mutex m_lock;
  unsigned long long m_count = 0;
};

}  // namespace zuscan
