/*
 * Names for clang's thread-safety attributes, which state which mutex guards what. A build with
 * -Wthread-safety against a standard library that annotates its mutexes checks them; elsewhere they
 * are empty.
 */
#pragma once

#if defined(__clang__)
#define VELK_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VELK_THREAD_ATTRIBUTE(x)
#endif

#define VELK_CAPABILITY(name) VELK_THREAD_ATTRIBUTE(capability(name))
#define VELK_ACQUIRE() VELK_THREAD_ATTRIBUTE(acquire_capability())
#define VELK_TRY_ACQUIRE(success) VELK_THREAD_ATTRIBUTE(try_acquire_capability(success))
#define VELK_RELEASE() VELK_THREAD_ATTRIBUTE(release_capability())
#define VELK_GUARDED_BY(mutex) VELK_THREAD_ATTRIBUTE(guarded_by(mutex))
#define VELK_REQUIRES(mutex) VELK_THREAD_ATTRIBUTE(requires_capability(mutex))
#define VELK_EXCLUDES(mutex) VELK_THREAD_ATTRIBUTE(locks_excluded(mutex))
#define VELK_NO_THREAD_SAFETY_ANALYSIS VELK_THREAD_ATTRIBUTE(no_thread_safety_analysis)
