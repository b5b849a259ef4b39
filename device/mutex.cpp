#include "mutex.h"

#include <cerrno>
#include <cstdio>
#include <sched.h>

Mutex::Mutex() : m_owner(pthread_self()) {
    pthread_mutexattr_init(&m_mutexAttribute);
    pthread_mutex_init(&m_mutex, &m_mutexAttribute);
    pthread_mutexattr_destroy(&m_mutexAttribute);
    pthread_condattr_init(&m_conditionAttribute);
    pthread_cond_init(&m_condition, &m_conditionAttribute);
    pthread_condattr_destroy(&m_conditionAttribute);
    pthread_mutex_lock(&m_mutex);
    pthread_mutex_unlock(&m_mutex);
}

Mutex::~Mutex() {
    pthread_cond_destroy(&m_condition);
    pthread_mutex_destroy(&m_mutex);
}

void Mutex::lock() {
    while (pthread_mutex_trylock(&m_mutex) == EBUSY) {
        if (pthread_equal(m_owner, pthread_self()) != 0)
            std::perror("Mutex::lock() deadlock detected");
        sched_yield();
    }
    m_owner = pthread_self();
}

void Mutex::unlock() {
    if (pthread_equal(m_owner, pthread_self()) == 0)
        std::perror("Wrong thread is unlocking the mutex!!");
    pthread_mutex_unlock(&m_mutex);
}

void Mutex::wait() {
    m_owner = pthread_self();
    pthread_cond_wait(&m_condition, &m_mutex);
    m_owner = pthread_self();
}

int Mutex::broadcast() { return pthread_cond_broadcast(&m_condition); }

bool Mutex::tryLock() {
    if (pthread_mutex_trylock(&m_mutex) != 0)
        return false;
    m_owner = pthread_self();
    return true;
}
