// Windows events, thread handles and queued calls on POSIX threads.
//
// Every thread that waits through the library has a TThread record: a futex
// word it sleeps on (the "wake" word), its queue of calls, and for threads
// started here the exit code and the waiters of its handle. A wait arms the
// wake word, checks the queue and the object, links itself into the
// object's waiter list and sleeps on the word; setting the object, queueing
// a call or the end of a thread stores 1 into the word of each waiter and
// wakes it. Arming before checking means no wake-up is lost between the
// check and the sleep.
//
// The futex won the measurement against a mutex + condition variable per
// thread and against eventfd + poll: it needs one system call per side of a
// hand-over and no second lock.
#include "platform/Thread.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <deque>
#include <mutex>
#include <new>
#include <string>

#include "platform/Process.h"

namespace {

HANDLE const kCurrentThread = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-2));

void FutexWait(std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* relative) {
  ::syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAIT_PRIVATE, expected, relative, nullptr, 0);
}

void FutexWake(std::atomic<std::uint32_t>& word) {
  ::syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

struct TThread;

// A kernel object as a handle names it; the handle is its address.
struct TObject {
  enum EKind { kEvent, kThread };

  explicit TObject(EKind k, bool manual, bool set) : kind(k), manualReset(manual), signaled(set) {}
  virtual ~TObject() = default;

  void AddRef() { refs.fetch_add(1, std::memory_order_relaxed); }
  void Release() {
    if (refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  // Sets the object and wakes every waiter: with an auto-reset object the
  // first to look takes it, the others sleep again. Waking one would lose
  // the signal when that one leaves for a queued call or its time-out.
  void Signal();

  const EKind kind;
  const bool manualReset;
  std::atomic<int> refs{1};
  std::mutex lock;
  bool signaled;
  TThread* waiters = nullptr;  // intrusive list through TThread::next/prev
};

struct TCall {
  PAPCFUNC function;
  ULONG_PTR data;
};

struct TThread : TObject {
  TThread() : TObject(kThread, true, false) {}

  void Wake() {
    if (wake.exchange(1) == 0) FutexWake(wake);
  }

  // Runs the queued calls, also those queued meanwhile; false when there
  // were none. A call that throws leaves the rest queued for the next wait.
  bool RunQueuedCalls() {
    if (!callsPending.load()) return false;
    bool ran = false;
    for (;;) {
      TCall call;
      {
        std::lock_guard<std::mutex> guard(callLock);
        if (calls.empty()) {
          callsPending.store(false);
          return ran;
        }
        call = calls.front();
        calls.pop_front();
      }
      ran = true;
      call.function(call.data);
    }
  }

  bool Queue(PAPCFUNC function, ULONG_PTR data) {
    {
      std::lock_guard<std::mutex> guard(callLock);
      if (ended) return false;
      calls.push_back(TCall{function, data});
      callsPending.store(true);
    }
    Wake();
    return true;
  }

  // The end of the thread: later calls are refused, queued ones dropped,
  // waiters on the handle released.
  void End(DWORD code) {
    exitCode.store(code);
    {
      std::lock_guard<std::mutex> guard(callLock);
      ended = true;
      calls.clear();
      callsPending.store(false);
    }
    Signal();
  }

  std::atomic<std::uint32_t> wake{0};
  TThread* next = nullptr;
  TThread* prev = nullptr;

  std::mutex callLock;
  std::deque<TCall> calls;
  bool ended = false;
  std::atomic<bool> callsPending{false};

  std::atomic<DWORD> exitCode{STILL_ACTIVE};
  std::atomic<std::uint32_t> resumed{0};
  std::atomic<std::uint32_t> started{0};
  DWORD id = 0;
  FXPlatform::TThreadEntry entry = nullptr;
  void* context = nullptr;
};

void TObject::Signal() {
  std::lock_guard<std::mutex> guard(lock);
  signaled = true;
  for (TThread* waiter = waiters; waiter != nullptr; waiter = waiter->next) waiter->Wake();
}

// The calling thread's record: the one it was started with, or one made on
// its first wait (released when the thread ends).
struct TCurrentThread {
  ~TCurrentThread() {
    if (own != nullptr) {
      own->End(0);
      own->Release();
    }
  }
  TThread* Get() {
    if (self == nullptr) {
      own = new TThread;
      own->id = static_cast<DWORD>(FXPlatform::CurrentThreadId());
      self = own;
    }
    return self;
  }
  TThread* self = nullptr;
  TThread* own = nullptr;
};

thread_local TCurrentThread t_current;

bool IsHandleValue(HANDLE handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }

TObject* Resolve(HANDLE handle) {
  if (handle == kCurrentThread) return t_current.Get();
  if (!IsHandleValue(handle)) {
    errno = EBADF;
    return nullptr;
  }
  return static_cast<TObject*>(handle);
}

TThread* ResolveThread(HANDLE handle) {
  TObject* object = Resolve(handle);
  if (object == nullptr) return nullptr;
  if (object->kind != TObject::kThread) {
    errno = EBADF;
    return nullptr;
  }
  return static_cast<TThread*>(object);
}

class CDeadline {
 public:
  explicit CDeadline(DWORD milliseconds)
      : m_infinite(milliseconds == INFINITE),
        m_end(std::chrono::steady_clock::now() + std::chrono::milliseconds(m_infinite ? 0 : milliseconds)) {}
  bool Passed() const { return !m_infinite && std::chrono::steady_clock::now() >= m_end; }
  // The time left, or null for no limit.
  const timespec* Left(timespec& out) const {
    if (m_infinite) return nullptr;
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(m_end - std::chrono::steady_clock::now());
    const long long ns = left.count() > 0 ? left.count() : 0;
    out.tv_sec = static_cast<time_t>(ns / 1000000000);
    out.tv_nsec = static_cast<long>(ns % 1000000000);
    return &out;
  }

 private:
  bool m_infinite;
  std::chrono::steady_clock::time_point m_end;
};

void Link(TObject& object, TThread& self) {
  self.prev = nullptr;
  self.next = object.waiters;
  if (object.waiters != nullptr) object.waiters->prev = &self;
  object.waiters = &self;
}

void Unlink(TObject& object, TThread& self) {
  if (self.prev != nullptr) {
    self.prev->next = self.next;
  } else {
    object.waiters = self.next;
  }
  if (self.next != nullptr) self.next->prev = self.prev;
  self.next = self.prev = nullptr;
}

void* ThreadMain(void* argument) {
  TThread* self = static_cast<TThread*>(argument);
  t_current.self = self;
  self->id = static_cast<DWORD>(FXPlatform::CurrentThreadId());
  self->started.store(1);
  FutexWake(self->started);
  while (self->resumed.load() == 0) FutexWait(self->resumed, 0, nullptr);
  self->End(self->entry(self->context));
  t_current.self = nullptr;
  self->Release();
  return nullptr;
}

}  // namespace

DWORD QueueUserAPC(PAPCFUNC function, HANDLE thread, ULONG_PTR data) {
  TThread* target = ResolveThread(thread);
  if (target == nullptr || function == nullptr) {
    if (target != nullptr) errno = EINVAL;
    return 0;
  }
  if (!target->Queue(function, data)) {
    errno = ESRCH;
    return 0;
  }
  return 1;
}

HANDLE GetCurrentThread() { return kCurrentThread; }

namespace FXPlatform {

HANDLE CreateEventObject(bool manualReset, bool initiallySet) {
  return new (std::nothrow) TObject(TObject::kEvent, manualReset, initiallySet);
}

bool SetEventObject(HANDLE event) {
  TObject* object = Resolve(event);
  if (object == nullptr) return false;
  object->Signal();
  return true;
}

bool ResetEventObject(HANDLE event) {
  TObject* object = Resolve(event);
  if (object == nullptr) return false;
  std::lock_guard<std::mutex> guard(object->lock);
  object->signaled = false;
  return true;
}

bool CloseObject(HANDLE object) {
  if (object == kCurrentThread) return true;
  TObject* target = Resolve(object);
  if (target == nullptr) return false;
  target->Release();
  return true;
}

HANDLE DuplicateObject(HANDLE object) {
  TObject* target = Resolve(object);
  if (target == nullptr) return nullptr;
  target->AddRef();
  return target;
}

DWORD WaitAlertable(HANDLE handle, DWORD milliseconds) {
  TObject* object = Resolve(handle);
  if (object == nullptr) return WAIT_FAILED;
  TThread& self = *t_current.Get();
  const CDeadline deadline(milliseconds);
  object->AddRef();
  DWORD result = WAIT_TIMEOUT;
  for (;;) {
    self.wake.store(0);
    if (self.RunQueuedCalls()) {
      result = WAIT_IO_COMPLETION;
      break;
    }
    {
      std::lock_guard<std::mutex> guard(object->lock);
      if (object->signaled) {
        if (!object->manualReset) object->signaled = false;
        result = WAIT_OBJECT_0;
        break;
      }
      if (deadline.Passed()) break;
      Link(*object, self);
    }
    timespec left;
    FutexWait(self.wake, 0, deadline.Left(left));
    std::lock_guard<std::mutex> guard(object->lock);
    Unlink(*object, self);
  }
  object->Release();
  return result;
}

DWORD SleepAlertable(DWORD milliseconds) {
  TThread& self = *t_current.Get();
  const CDeadline deadline(milliseconds);
  for (;;) {
    self.wake.store(0);
    if (self.RunQueuedCalls()) return WAIT_IO_COMPLETION;
    if (deadline.Passed()) return 0;
    timespec left;
    FutexWait(self.wake, 0, deadline.Left(left));
  }
}

HANDLE CreateSuspendedThread(TThreadEntry entry, void* context, DWORD& threadId) {
  TThread* thread = new (std::nothrow) TThread;
  if (thread == nullptr) {
    errno = ENOMEM;
    return nullptr;
  }
  thread->entry = entry;
  thread->context = context;
  thread->AddRef();  // the thread's own, dropped when it ends
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t native;
  const int rc = ::pthread_create(&native, &attributes, ThreadMain, thread);
  ::pthread_attr_destroy(&attributes);
  if (rc != 0) {
    delete thread;
    errno = rc;
    return nullptr;
  }
  while (thread->started.load() == 0) FutexWait(thread->started, 0, nullptr);
  threadId = thread->id;
  return thread;
}

bool ResumeCreatedThread(HANDLE handle) {
  TThread* thread = ResolveThread(handle);
  if (thread == nullptr) return false;
  thread->resumed.store(1);
  FutexWake(thread->resumed);
  return true;
}

bool GetThreadExitCode(HANDLE handle, DWORD& exitCode) {
  TThread* thread = ResolveThread(handle);
  if (thread == nullptr) return false;
  exitCode = thread->exitCode.load();
  return true;
}

bool TerminateThreadObject(HANDLE handle, DWORD /*exitCode*/) {
  if (ResolveThread(handle) == nullptr) return false;
  errno = ENOTSUP;
  return false;
}

// Through /proc rather than pthread_setname_np: a pthread_t of a detached
// thread that has ended must not be used, a thread id that has gone only
// fails to open.
void SetThreadDescriptionText(HANDLE handle, const std::string& description) {
  TThread* thread = ResolveThread(handle);
  if (thread == nullptr) return;
  const std::string path = "/proc/self/task/" + std::to_string(thread->id) + "/comm";
  const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return;
  const std::string name = description.substr(0, 15);
  (void)!::write(fd, name.data(), name.size());
  ::close(fd);
}

bool IsCurrentThread(HANDLE handle) {
  if (handle == kCurrentThread) return true;
  return IsHandleValue(handle) && handle == t_current.self;
}

}  // namespace FXPlatform
