// The progress line: rewritten in place at most ten times a second on a
// terminal, a plain line every few seconds otherwise. It runs on a thread of
// its own that wakes on a time-out, so the workers never wait for the
// console; the same thread turns the user's interrupt into the abort event.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>

#include <threads/AlertableEventThread.h>

#include "Counters.h"

namespace zuscan {

enum class EProgressStyle { None, Terminal, Plain };

class CProgress : public CAlertableEventThread {
 public:
  // `interrupted` is polled on every tick; when it is set, `abort` is
  // called once.
  CProgress(const TScanCounters& counters, EProgressStyle style, const std::atomic<bool>& interrupted,
            std::function<void()> abort);
  ~CProgress() override;

  // Stops the thread and prints the final state.
  void Finish();
  double ElapsedSeconds() const;

 protected:
  void OnTimeout() override;

 private:
  void Print(bool last);

  const TScanCounters& m_counters;
  const EProgressStyle m_style;
  const std::atomic<bool>& m_interrupted;
  std::function<void()> m_abort;
  bool m_aborted = false;
  const std::chrono::steady_clock::time_point m_start;
  std::chrono::steady_clock::time_point m_lastPrint;
};

}  // namespace zuscan
