// wmqstream: event records of a batch job scheduler, as lines of stream files and back.
//
// This header includes the whole core library (-lwmqstream):
//   wmq/event_types.h    type codes, error numbers, versions
//   wmq/companion.h      helpers to build and take apart records
//   wmq/records/...      the log structure of each type and its layout functions
//   wmq/event_record.h   the record
//   wmq/stream.h         streams, lines, release
//   wmq/follow.h         following a stream across rotations and restarts
//   wmq/schema.h         what a type's structure and line consist of, as data
// JSON is a second library (-lwmqjson): wmq/json.h.
#ifndef WMQ_WMQ_H
#define WMQ_WMQ_H

#include "wmq/companion.h"
#include "wmq/event_record.h"
#include "wmq/event_types.h"
#include "wmq/follow.h"
#include "wmq/schema.h"
#include "wmq/stream.h"

#endif
