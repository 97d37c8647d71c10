// The few thread functions that the C++ runtime itself calls: for exceptions and for static locals.
//
// The toolchain's own (winpthreads) take a thread slot of the process and two handles of each calling thread, and never
// give them back. A host that loads and unloads the library a thousand times would run out of slots. These take nothing
// but one slot while the library is loaded. A class that needs more of them than this does not link.
#include "frame/module/runtime_threads.h"

#include <cxxabi.h>
#include <pthread.h>

#include <cstdlib>

#include "platform/platform.h"

// The runtime's reserve for exceptions when memory has run out. No public header declares how it is freed.
namespace __gnu_cxx {
void __freeres();
}

namespace {

using Word = volatile LONG*;

constexpr LONG kFree = PTHREAD_MUTEX_INITIALIZER;
constexpr LONG kHeld = 1;
constexpr LONG kRunning = 1;
constexpr LONG kDone = 2;

DWORD slot = FLS_OUT_OF_INDEXES;
void (*destroy)(void*) = nullptr;

Word WordOf(intptr_t* object) noexcept { return reinterpret_cast<Word>(object); }

// What is waited for takes microseconds.
void LetOthersRun() noexcept {
    if (!SwitchToThread()) Sleep(1);
}

void WINAPI DestroyValue(void* value) {
    if (value) destroy(value);
}

}  // namespace

extern "C" {

// The runtime locks none of its mutexes twice in one thread, not even the recursive ones.
int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t*) {
    *mutex = kFree;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*) { return 0; }

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    while (InterlockedExchange(WordOf(mutex), kHeld) == kHeld) LetOthersRun();
    return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    InterlockedExchange(WordOf(mutex), kFree);
    return 0;
}

// May return for no reason, as condition variables may; the runtime looks again.
int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* mutex) {
    pthread_mutex_unlock(mutex);
    LetOthersRun();
    return pthread_mutex_lock(mutex);
}

int pthread_cond_broadcast(pthread_cond_t*) { return 0; }

int pthread_once(pthread_once_t* once, void (*run)()) {
    for (;;) {
        const LONG before = InterlockedCompareExchange(once, kRunning, PTHREAD_ONCE_INIT);
        if (before == kDone) return 0;
        if (before == kRunning) {
            LetOthersRun();
        } else {
            run();
            InterlockedExchange(once, kDone);
        }
    }
}

// The runtime asks for one key, for all its thread-local values.
int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
    if (destroy) return EAGAIN;
    destroy = destructor;
    *key = slot = FlsAlloc(&DestroyValue);
    return slot == FLS_OUT_OF_INDEXES ? EAGAIN : 0;
}

void* pthread_getspecific(pthread_key_t key) { return FlsGetValue(key); }

int pthread_setspecific(pthread_key_t key, const void* value) {
    return FlsSetValue(key, const_cast<void*>(value)) ? 0 : ENOMEM;
}

}  // extern "C"

namespace velk {

bool PrepareThread() noexcept {
    if (slot != FLS_OUT_OF_INDEXES && FlsGetValue(slot)) return true;
    constexpr std::size_t kEnough = 1024;  // for the thread's table of values and the values
    void* const tried = std::malloc(kEnough);
    std::free(tried);
    return tried && abi::__cxa_get_globals();
}

void ReleaseRuntime() noexcept {
    if (slot != FLS_OUT_OF_INDEXES) FlsFree(slot);  // destroys the values of all threads
    __gnu_cxx::__freeres();
}

}  // namespace velk
