#pragma once

// Which lock guards what, in a form that clang checks (-Wthread-safety); nothing to other
// compilers. The locks that it knows are those of platform/Mutex.h.
#if defined(__clang__)
#define QUORBEL_THREAD_ANNOTATION(text) __attribute__((text))
#else
#define QUORBEL_THREAD_ANNOTATION(text)
#endif

/// Of a member: only to be touched with the lock held.
#define GUARDED_BY(lock) QUORBEL_THREAD_ANNOTATION(guarded_by(lock))
/// Of a function or a lambda, behind its parameters: only to be called with the lock held.
#define REQUIRES(lock) QUORBEL_THREAD_ANNOTATION(requires_capability(lock))
/// Of a function: returns that lock.
#define RETURNS_LOCK(lock) QUORBEL_THREAD_ANNOTATION(lock_returned(lock))
/// Of a member that is a lock: taken before the other one by whoever takes both.
#define LOCKED_BEFORE(lock) QUORBEL_THREAD_ANNOTATION(acquired_before(lock))
