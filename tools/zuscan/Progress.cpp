#include "Progress.h"

#include <cstdio>

#include <time/TimeStamp.h>

namespace zuscan {

namespace {
constexpr auto kTerminalPeriod = std::chrono::milliseconds(100);
constexpr auto kPlainPeriod = std::chrono::seconds(5);
}  // namespace

CProgress::CProgress(const TScanCounters& counters, EProgressStyle style, const std::atomic<bool>& interrupted,
                     std::function<void()> abort)
    : m_counters(counters),
      m_style(style),
      m_interrupted(interrupted),
      m_abort(std::move(abort)),
      m_start(std::chrono::steady_clock::now()),
      m_lastPrint(m_start) {
  SetTimeout(CTimeInterval::FromMilliseconds(100));
}

CProgress::~CProgress() { Stop(true); }

double CProgress::ElapsedSeconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

void CProgress::OnTimeout() {
  if (!m_aborted && m_interrupted.load()) {
    m_aborted = true;
    m_abort();
  }
  const auto now = std::chrono::steady_clock::now();
  const auto period = m_style == EProgressStyle::Terminal ? kTerminalPeriod : kPlainPeriod;
  if (m_style != EProgressStyle::None && now - m_lastPrint >= period) {
    m_lastPrint = now;
    Print(false);
  }
}

void CProgress::Finish() {
  Stop(true);
  if (m_style != EProgressStyle::None) Print(true);
}

void CProgress::Print(bool last) {
  const double seconds = ElapsedSeconds();
  const double rate = seconds > 0 ? 1.0 / seconds : 0;
  const unsigned long long entries = m_counters.entries;
  const unsigned long long bytes = m_counters.bytes;
  const unsigned long long read = m_counters.checksummed;
  char line[256];
  std::snprintf(line, sizeof line,
                "%llu entries, %llu folders, %.1f MB, %.0f entries/s, %.1f MB/s, %llu errors, %.1f s",
                entries, m_counters.folders.load(), bytes / 1e6, entries * rate, (read ? read : bytes) / 1e6 * rate,
                m_counters.errors.load(), seconds);
  if (m_style == EProgressStyle::Terminal) {
    // \033[K clears what a longer earlier line left to the right.
    std::fprintf(stderr, "\r%s\033[K%s", line, last ? "\n" : "");
  } else {
    std::fprintf(stderr, "progress: %s\n", line);
  }
  std::fflush(stderr);
}

}  // namespace zuscan
