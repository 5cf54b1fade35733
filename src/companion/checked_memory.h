// WMQ_CHECKED_MEMORY where a sanitizer looks at every use of memory.
#ifndef WMQ_COMPANION_CHECKED_MEMORY_H
#define WMQ_COMPANION_CHECKED_MEMORY_H

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WMQ_CHECKED_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define WMQ_CHECKED_MEMORY
#endif
#endif

#endif
