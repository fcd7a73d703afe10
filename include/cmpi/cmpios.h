/*
 * cmpios.h - operating-system types seen through the CMPI 1.0 interface.
 *
 * The broker's OS-encapsulation table (CMPIBrokerExtFT) hands threads,
 * mutexes, condition variables and thread-specific keys to providers as
 * opaque values.  Their C types live here, together with the macro that
 * gives provider entry points C linkage and keeps them visible when a
 * provider is built with hidden symbol visibility.
 */
#ifndef CMPIOS_H_INCLUDED
#define CMPIOS_H_INCLUDED

#include <pthread.h>

/*
 * The broker wraps its own thread, mutex and condition objects; a provider
 * only ever stores and passes back the pointer it was given.  Thread keys are
 * the native POSIX ones so that a broker can map them one to one.
 */
#define CMPI_THREAD_TYPE void *
#define CMPI_THREAD_RETURN void *
#define CMPI_THREAD_CDECL
#define CMPI_THREAD_KEY_TYPE pthread_key_t
#define CMPI_MUTEX_TYPE void *
#define CMPI_COND_TYPE void *

/*
 * CMPI_EXPORT marks a symbol the broker must find with dlsym (the factories).
 * Providers built with -fvisibility=hidden would otherwise hide them.
 */
#if defined(_MSC_VER)
#define CMPI_EXPORT __declspec(dllexport)
#elif defined(__GNUC__) && __GNUC__ >= 4
#define CMPI_EXPORT __attribute__((visibility("default")))
#else
#define CMPI_EXPORT
#endif

/* Unmangled, exported linkage for provider entry points. */
#ifdef __cplusplus
#define CMPI_EXTERN_C extern "C" CMPI_EXPORT
#else
#define CMPI_EXTERN_C CMPI_EXPORT
#endif

#endif /* CMPIOS_H_INCLUDED */
