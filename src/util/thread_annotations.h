// Which mutex guards what, in words that Clang checks (-Wthread-safety) and other compilers pass over.
#pragma once

#ifdef __clang__
#define TARNWICK_ANNOTATION(...) __attribute__((__VA_ARGS__))
#else
#define TARNWICK_ANNOTATION(...)
#endif

/// Of a member: only touched with that mutex held.
#define GUARDED_BY(mutex) TARNWICK_ANNOTATION(guarded_by(mutex))

/// Of a function or a lambda: called only with these mutexes held, or only without them.
#define REQUIRES(...) TARNWICK_ANNOTATION(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) TARNWICK_ANNOTATION(locks_excluded(__VA_ARGS__))

/// Of the classes of mutex.h and their functions.
#define CAPABILITY(name) TARNWICK_ANNOTATION(capability(name))
#define SCOPED_CAPABILITY TARNWICK_ANNOTATION(scoped_lockable)
#define ACQUIRE(...) TARNWICK_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) TARNWICK_ANNOTATION(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) TARNWICK_ANNOTATION(release_capability(__VA_ARGS__))
#define RELEASE_GENERIC(...) TARNWICK_ANNOTATION(release_generic_capability(__VA_ARGS__))
