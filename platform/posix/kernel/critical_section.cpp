#include <pthread.h>

#include "platform/posix/kernel/time.h"

KORPLATFORM_API void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

KORPLATFORM_API void WINAPI EnterCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_lock(&section->mutex);
}

KORPLATFORM_API BOOL WINAPI TryEnterCriticalSection(CRITICAL_SECTION* section) {
    return pthread_mutex_trylock(&section->mutex) == 0;
}

KORPLATFORM_API void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_unlock(&section->mutex);
}

KORPLATFORM_API void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutex_destroy(&section->mutex);
}
