// Thread hand-overs: how fast a worker wakes for another thread.
//
//   WakeRoundTrip: two workers hand a token back and forth; one iteration is
//     a batch of kRoundTrips round trips (ours: two CAlertableEventThreads
//     setting each other's event; std: two threads, each with a
//     mutex + condition_variable event).
//   QueuedCall: the benchmark thread hands a call to a waiting worker and
//     waits until it ran (ours: QueueUserAPC into the worker's alertable
//     wait; std: a locked queue of std::function and a condition_variable).
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/ThreadApi.h"
#include "threads/AlertableEventThread.h"
#include "threads/Event.h"

namespace {

constexpr int kRoundTrips = 100;

// ---- ours ------------------------------------------------------------------

class CPingPong : public CAlertableEventThread {
 public:
  ~CPingPong() override { Stop(true); }
  void Connect(CPingPong* peer, std::atomic<int>* remaining, FXEvent* done) {
    m_peer = peer;
    m_remaining = remaining;
    m_done = done;
  }
  using CAlertableEventThread::GetThreadHandle;

 protected:
  void OnEvent() override {
    // Only the first player counts round trips and ends the batch.
    if (m_remaining != nullptr && m_remaining->fetch_sub(1) == 0) {
      m_done->Set();
      return;
    }
    m_peer->SetEvent();
  }

 private:
  CPingPong* m_peer = nullptr;
  std::atomic<int>* m_remaining = nullptr;
  FXEvent* m_done = nullptr;
};

void WakeRoundTripOurs(benchmark::State& state) {
  std::atomic<int> remaining{0};
  FXEvent done;
  CPingPong first, second;
  first.Connect(&second, &remaining, &done);
  second.Connect(&first, nullptr, nullptr);
  first.Start();
  second.Start();
  for (auto _ : state) {
    remaining = kRoundTrips;
    first.SetEvent();
    done.WaitAlertable(INFINITE);
  }
  state.SetItemsProcessed(state.iterations() * kRoundTrips);
}

class CIdle : public CAlertableEventThread {
 public:
  ~CIdle() override { Stop(true); }
  using CAlertableEventThread::GetThreadHandle;
};

void SetDone(ULONG_PTR event) { reinterpret_cast<FXEvent*>(event)->Set(); }

void QueuedCallOurs(benchmark::State& state) {
  FXEvent done;
  CIdle worker;
  worker.Start();
  const HANDLE thread = worker.GetThreadHandle();
  for (auto _ : state) {
    QueueUserAPC(&SetDone, thread, reinterpret_cast<ULONG_PTR>(&done));
    done.WaitAlertable(INFINITE);
  }
  state.SetItemsProcessed(state.iterations());
}

// ---- std: mutex + condition_variable ---------------------------------------

class CStdEvent {
 public:
  void Set() {
    {
      std::lock_guard<std::mutex> guard(m_lock);
      m_set = true;
    }
    m_changed.notify_one();
  }
  void Wait() {
    std::unique_lock<std::mutex> guard(m_lock);
    m_changed.wait(guard, [this] { return m_set; });
    m_set = false;
  }

 private:
  std::mutex m_lock;
  std::condition_variable m_changed;
  bool m_set = false;
};

void WakeRoundTripStd(benchmark::State& state) {
  std::atomic<int> remaining{0};
  std::atomic<bool> quit{false};
  CStdEvent done, toFirst, toSecond;
  std::thread first([&] {
    for (;;) {
      toFirst.Wait();
      if (quit) return;
      if (remaining.fetch_sub(1) == 0) {
        done.Set();
      } else {
        toSecond.Set();
      }
    }
  });
  std::thread second([&] {
    for (;;) {
      toSecond.Wait();
      if (quit) return;
      toFirst.Set();
    }
  });
  for (auto _ : state) {
    remaining = kRoundTrips;
    toFirst.Set();
    done.Wait();
  }
  quit = true;
  toFirst.Set();
  toSecond.Set();
  first.join();
  second.join();
  state.SetItemsProcessed(state.iterations() * kRoundTrips);
}

void QueuedCallStd(benchmark::State& state) {
  std::mutex lock;
  std::condition_variable queued;
  std::deque<std::function<void()>> calls;
  bool quit = false;
  std::thread worker([&] {
    std::unique_lock<std::mutex> guard(lock);
    for (;;) {
      queued.wait(guard, [&] { return quit || !calls.empty(); });
      if (calls.empty()) return;
      std::function<void()> call = std::move(calls.front());
      calls.pop_front();
      guard.unlock();
      call();
      guard.lock();
    }
  });
  CStdEvent done;
  for (auto _ : state) {
    {
      std::lock_guard<std::mutex> guard(lock);
      calls.emplace_back([&done] { done.Set(); });
    }
    queued.notify_one();
    done.Wait();
  }
  {
    std::lock_guard<std::mutex> guard(lock);
    quit = true;
  }
  queued.notify_one();
  worker.join();
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(WakeRoundTripOurs)->Name("WakeRoundTrip/ours")->UseRealTime();
BENCHMARK(WakeRoundTripStd)->Name("WakeRoundTrip/std_mutex_condvar")->UseRealTime();
BENCHMARK(QueuedCallOurs)->Name("QueuedCall/ours")->UseRealTime();
BENCHMARK(QueuedCallStd)->Name("QueuedCall/std_mutex_condvar_queue")->UseRealTime();

}  // namespace
