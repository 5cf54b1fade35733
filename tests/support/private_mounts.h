// Disks of a test's own: small ones, full ones, read-only ones.
#ifndef WMQ_TESTS_PRIVATE_MOUNTS_H
#define WMQ_TESTS_PRIVATE_MOUNTS_H

#include <functional>
#include <string>

namespace wmq::testing {

// Runs `body` in a child process that has mounts of its own; its failed expectations are the test's. False,
// without having run it, where the system does not allow that.
bool withPrivateMounts(const std::function<void()> &body);

// For `body`: mounts an empty disk there, with options as mount(8) takes them for tmpfs. Throws when that
// fails.
void mountDisk(const std::string &directory, const std::string &options);

// From now on nothing can be written there.
void makeReadOnly(const std::string &directory);

}  // namespace wmq::testing

#endif
