// Calls of the library that look into directories, counted. The test programs of this directory are linked so
// that they come by here.
#ifndef WMQ_TESTS_SYSTEM_CALLS_H
#define WMQ_TESTS_SYSTEM_CALLS_H

namespace wmq::testing {

struct DirectoryCalls {
  int opened = 0;   // directories
  int looks = 0;    // at single files
  int removed = 0;  // files
};
extern DirectoryCalls directoryCalls;

}  // namespace wmq::testing

#endif
