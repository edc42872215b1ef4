#pragma once

#include <KorAbend.hpp>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <sys/time.h>

/// A recursive mutex whose lock may give up after a time limit. Everything is
/// inline and nothing is exported, so each binary that includes this header
/// carries its own complete copy.
///
/// Threads: lock() and unlock() may be called from any thread; the thread
/// that holds the mutex may lock it again and unlocks it as often. Construct
/// and destroy it while no other thread uses it.
class KorMutex {
public:
  // Carries a failure inside lock() or unlock() to their own handler; it
  // never leaves them.
  struct KorMutexInternalException {
    static constexpr int systemCallFailed = 1;
    static constexpr int notOwner = 3;

    int sourceLine;
    const char* sourceFile;
    int kind;
    int returnCode;
    int error; // errno
    const char* call;
    int timeoutMs;

    void print() const {
      std::fprintf(stderr, "KorMutexInternalException %s:%d kind %d: %s returned %d, errno %d, time-out %d\n",
                   sourceFile, sourceLine, kind, call, returnCode, error, timeoutMs);
    }
  };

  KorMutex() {
    std::memcpy(eyeCatcher_, ">DRXDDIM", sizeof eyeCatcher_);
    pthread_mutexattr_t mutexAttributes;
    pthread_condattr_t condAttributes;
    checkLifecycle(pthread_mutexattr_init(&mutexAttributes), "pthread_mutexattr_init", "KorMutex", __LINE__);
    checkLifecycle(pthread_mutex_init(&guard_, &mutexAttributes), "pthread_mutex_init", "KorMutex", __LINE__);
    checkLifecycle(pthread_mutexattr_destroy(&mutexAttributes), "pthread_mutexattr_destroy", "KorMutex",
                   __LINE__);
    checkLifecycle(pthread_condattr_init(&condAttributes), "pthread_condattr_init", "KorMutex", __LINE__);
    checkLifecycle(pthread_cond_init(&released_, &condAttributes), "pthread_cond_init", "KorMutex", __LINE__);
    checkLifecycle(pthread_condattr_destroy(&condAttributes), "pthread_condattr_destroy", "KorMutex",
                   __LINE__);
    state_ = 1;
    free_ = 1;
    owner_ = pthread_t();
  }

  KorMutex(const KorMutex&) = delete;
  KorMutex& operator=(const KorMutex&) = delete;

  virtual ~KorMutex() {
    checkLifecycle(pthread_mutex_destroy(&guard_), "pthread_mutex_destroy", "~KorMutex", __LINE__);
    checkLifecycle(pthread_cond_destroy(&released_), "pthread_cond_destroy", "~KorMutex", __LINE__);
    // The object is dead after this store, so the compiler would drop a
    // plain one; a dump must still see the mutex as destroyed.
    static_cast<volatile char*>(eyeCatcher_)[0] = '0';
  }

  /// Takes the mutex, waiting at most timeoutMs milliseconds.
  /// timeoutMs -1 waits without limit. Returns 1 when the calling thread holds
  /// the mutex, 0 when the time limit passed first, -1 after a logged failure.
  int lock(int timeoutMs) {
    if (state_ == 0) {
      terminate(__LINE__, "KorMutex::lock", "Trying to lock an invalid mutex");
    }
    bool guardHeld = false;
    try {
      systemCall(pthread_mutex_lock(&guard_), "pthread_mutex_lock", __LINE__, timeoutMs);
      guardHeld = true;
      const pthread_t self = pthread_self();
      int result = 1;
      if (free_ == 1) {
        take(self);
      } else if (pthread_equal(owner_, self)) {
        ++holdCount_;
      } else {
        result = waitAndTake(self, timeoutMs);
      }
      guardHeld = false;
      systemCall(pthread_mutex_unlock(&guard_), "pthread_mutex_unlock", __LINE__, timeoutMs);
      return result;
    } catch (const KorMutexInternalException& failure) {
      relay(failure, guardHeld, "Relayed by KorMutex::lock");
      return -1;
    }
  }

  /// Releases one hold of the calling thread.
  /// Returns 1, or 0 after a logged failure, among them an unlock by a thread
  /// that does not own the mutex.
  int unlock() {
    if (state_ == 0) {
      terminate(__LINE__, "KorMutex::unlock", "Trying to unlock an invalid mutex");
    }
    bool guardHeld = false;
    try {
      systemCall(pthread_mutex_lock(&guard_), "pthread_mutex_lock", __LINE__, -1);
      guardHeld = true;
      if (free_ == 1 || !pthread_equal(owner_, pthread_self())) {
        guardHeld = false;
        systemCall(pthread_mutex_unlock(&guard_), "pthread_mutex_unlock", __LINE__, -1);
        throw KorMutexInternalException{
            __LINE__, sourceFile(), KorMutexInternalException::notOwner, 0, 0, "KorMutex::unlock", -1};
      }
      if (--holdCount_ == 0) {
        free_ = 1;
        owner_ = pthread_t();
        systemCall(pthread_cond_signal(&released_), "pthread_cond_signal", __LINE__, -1);
      }
      guardHeld = false;
      systemCall(pthread_mutex_unlock(&guard_), "pthread_mutex_unlock", __LINE__, -1);
      return 1;
    } catch (const KorMutexInternalException& failure) {
      relay(failure, guardHeld, "Relayed by KorMutex::unlock");
      return 0;
    }
  }

private:
  static const char* sourceFile() { return "include/KorMutex"; }
  static const char* sccsId() { return "%Z% %I% %W% %E% %U% [%H% %T%]"; }

  [[noreturn]] static void terminate(int line, const char* function, const char* reason) {
    KorAbend::logSystemErrorAndTerminateProcessInternal(sourceFile(), line, function, reason, sccsId(), {},
                                                        {}, {}, {}, nullptr, false);
  }

  // Building or destroying the mutex must not fail: the process cannot go on
  // without it.
  static void checkLifecycle(int returnCode, const char* call, const char* phase, int line) {
    if (returnCode != 0) {
      KorAbend::logSystemErrorAndTerminateProcessInternal(sourceFile(), line, call, errno, phase, sccsId(),
                                                          {}, {}, {}, nullptr, false);
    }
  }

  static void systemCall(int returnCode, const char* call, int line, int timeoutMs) {
    if (returnCode != 0) {
      throw KorMutexInternalException{line,       sourceFile(), KorMutexInternalException::systemCallFailed,
                                      returnCode, errno,        call,
                                      timeoutMs};
    }
  }

  void relay(const KorMutexInternalException& failure, bool guardHeld, const char* relayedBy) {
    failure.print();
    if (guardHeld) {
      pthread_mutex_unlock(&guard_);
    }
    KorAbend::logSystemErrorInternal(failure.sourceFile, failure.sourceLine, failure.call, failure.returnCode,
                                     failure.error, relayedBy, sccsId(), {}, {}, nullptr, false);
  }

  void take(pthread_t self) {
    owner_ = self;
    holdCount_ = 1;
    free_ = 0;
  }

  // Called with the guard held; a woken waiter that finds the mutex taken
  // again waits on until the same deadline.
  int waitAndTake(pthread_t self, int timeoutMs) {
    const bool timed = timeoutMs != -1;
    timespec deadline{};
    if (timed) {
      timeval now{};
      if (gettimeofday(&now, nullptr) != 0) {
        systemCall(-1, "gettimeofday", __LINE__, timeoutMs);
      }
      deadline.tv_sec = now.tv_sec + timeoutMs / 1000;
      deadline.tv_nsec = now.tv_usec * 1000L + (timeoutMs % 1000) * 1000000L;
      // A negative limit other than -1 can leave the nanoseconds negative;
      // the wait then fails with EINVAL, a logged failure like any other.
      if (deadline.tv_nsec > 999999999L) {
        deadline.tv_nsec -= 1000000000L;
        ++deadline.tv_sec;
      }
    }
    for (;;) {
      const int returnCode = timed ? pthread_cond_timedwait(&released_, &guard_, &deadline)
                                   : pthread_cond_wait(&released_, &guard_);
      if (returnCode == ETIMEDOUT || returnCode == EAGAIN) {
        return 0;
      }
      systemCall(returnCode, timed ? "pthread_cond_timedwait" : "pthread_cond_wait", __LINE__, timeoutMs);
      if (free_ == 1) {
        take(self);
        return 1;
      }
    }
  }

  // The eye-catcher, version and length are there for memory dumps.
  char eyeCatcher_[8]{};
  [[maybe_unused]] std::int32_t version_ = 8;
  [[maybe_unused]] std::int32_t length_ = sizeof(KorMutex);
  std::int32_t state_ = 0;
  pthread_mutex_t guard_{};
  pthread_cond_t released_{};
  std::int32_t free_ = 1;
  pthread_t owner_ = pthread_t();
  std::int32_t holdCount_ = 0;
};

/// Holds a KorMutex for the life of a scope, without time limit.
/// Threads: one object belongs to the thread that made it.
class KorMutexLock {
public:
  /// Locks mutex, waiting without limit.
  explicit KorMutexLock(KorMutex& mutex) : mutex_(&mutex) {
    std::memcpy(eyeCatcher_, ">DRXDDII", sizeof eyeCatcher_);
    locked_ = true;
    mutex_->lock(-1);
  }

  KorMutexLock(const KorMutexLock&) = delete;
  KorMutexLock& operator=(const KorMutexLock&) = delete;

  ~KorMutexLock() {
    if (locked_) {
      mutex_->unlock();
    }
  }

private:
  char eyeCatcher_[8]{}; // with the next two fields, for memory dumps
  [[maybe_unused]] std::int32_t reserved_ = 0;
  [[maybe_unused]] std::int32_t length_ = sizeof(KorMutexLock);
  KorMutex* mutex_;
  bool locked_ = false;
};
