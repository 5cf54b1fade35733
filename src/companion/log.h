// The system log.
#ifndef WMQ_COMPANION_LOG_H
#define WMQ_COMPANION_LOG_H

namespace wmq {

// Where messages go; null for syslog(3).
extern void (*logSink)(int priority, const char *message);

}  // namespace wmq

#endif
