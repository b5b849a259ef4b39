#pragma once

#include <atomic>
#include <pthread.h>

/// A lock that knows which thread took it last, with a condition to wait on. Not recursive.
///
/// Thread-safe.
class [[gnu::visibility("default")]] Mutex {
public:
    /// The calling thread counts as the last owner.
    Mutex();
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// Takes the lock, yielding the processor between attempts, without a limit. While it is busy
    /// and the calling thread was the last to take it, each attempt prints "Mutex::lock() deadlock
    /// detected" on standard error. Since a release does not forget the owner, the line can also
    /// appear for a moment when another thread has just taken the lock.
    void lock();
    /// Releases the lock; from another thread than the owner too, which is reported by "Wrong
    /// thread is unlocking the mutex!!".
    void unlock();
    /// Waits on the condition. The caller holds the lock, before and after.
    void wait();
    /// Wakes all that wait. Returns what pthread_cond_broadcast does.
    int broadcast();
    /// Takes the lock if it is free; true if so.
    bool tryLock();

protected:
    pthread_mutexattr_t m_mutexAttribute;    ///< the default's
    pthread_mutex_t m_mutex;                 ///< the lock
    pthread_condattr_t m_conditionAttribute; ///< the default's
    pthread_cond_t m_condition;              ///< what `wait` waits on
    std::atomic<pthread_t> m_owner;          ///< the thread that took the lock last
};
