// A task whose work the test supplies, and a connector that records.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "threads/RunnableTask.h"

namespace ZuThreadTest {

class CScriptTask : public CRunnableTask {
 public:
  CScriptTask() = default;
  explicit CScriptTask(std::function<CZuError(CScriptTask&)> work) : m_work(std::move(work)) {}
  CScriptTask(const CScriptTask& other) : CRunnableTask(other), m_work(other.m_work) {}
  using CRunnableTask::Run;
  using CRunnableTask::RunProcess;
  std::atomic<int> runs{0};

 protected:
  CZuError Run() override {
    ++runs;
    return m_work ? m_work(*this) : CZuError::Success();
  }

 private:
  std::function<CZuError(CScriptTask&)> m_work;
};

class CRecordingConnector : public CTaskFeedbackConnector {
 public:
  void OnTaskStart() override { ++starts; }
  void OnTaskComplete(int result) override { completed = result; }
  void OnTaskFeedback(const std::string& text, DWORD code) override {
    std::lock_guard<std::mutex> guard(m_lock);
    feedback.push_back(text + "/" + std::to_string(code));
  }
  void OnDisableAutoClose() override { ++autoCloseDisabled; }
  void OnProcessRunning(void* process) override { processSeen = process != nullptr; }

  std::vector<std::string> Feedback() {
    std::lock_guard<std::mutex> guard(m_lock);
    return feedback;
  }

  std::atomic<int> starts{0};
  std::atomic<int> completed{0};
  std::atomic<int> autoCloseDisabled{0};
  std::atomic<bool> processSeen{false};

 private:
  std::mutex m_lock;
  std::vector<std::string> feedback;
};

}  // namespace ZuThreadTest
