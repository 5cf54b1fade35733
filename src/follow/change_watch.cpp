#include "follow/change_watch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/inotify.h>
#include <sys/vfs.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "follow/stream_listing.h"

namespace wmq {
namespace {

constexpr int kUsualInterval = 100;
constexpr int kRest = 2;  // milliseconds between two wakings

// Ends of a pipe of one's own: nobody waits for it, and programs that are started do not get it.
bool openPipe(int (&ends)[2]) {
  if (pipe(ends) != 0) return false;
  for (const int end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
  return true;
}

#if defined(__linux__)
// What others write to these file systems, on other machines or behind them, is no news to this one.
bool bringsNews(const char *directory) {
  struct statfs found {};
  if (statfs(directory, &found) != 0) return false;
  switch (static_cast<uint32_t>(found.f_type)) {
    case 0x00006969U:  // NFS
    case 0x0000517bU:  // SMB
    case 0xff534d42U:  // CIFS
    case 0xfe534d42U:  // SMB 2
    case 0x65735546U:  // FUSE
    case 0x01021997U:  // 9P
    case 0x5346414fU:  // AFS
    case 0x6b414653U:  // kAFS
    case 0x73757245U:  // Coda
    case 0x00c36400U:  // Ceph
    case 0x0bd00bd0U:  // Lustre
    case 0x47504653U:  // GPFS
    case 0x01161970U:  // GFS2
    case 0x7461636fU:  // OCFS2
      return false;
    default:
      return true;
  }
}

// What a link leads to changes elsewhere than where it stands.
bool leadsOverLinks(const std::string &path) {
  for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    struct stat found {};
    if (lstat(path.substr(0, end).c_str(), &found) == 0 && S_ISLNK(found.st_mode)) return true;
    if (end == std::string::npos) return false;
  }
}
#endif

}  // namespace

ChangeWatch::~ChangeWatch() {
  for (const int fd : {notify, wakeEnds[0], wakeEnds[1]})
    if (fd >= 0) close(fd);
}

bool ChangeWatch::open(const std::string &path, int wantedInterval) {
  if (!openPipe(wakeEnds)) return false;
  name = namePart(path);
#if defined(__linux__)
  const std::string directory = directoryPart(path);
  if (wantedInterval <= 0 && bringsNews(directory.c_str()) && !leadsOverLinks(path)) {
    notify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    constexpr uint32_t wanted =
        IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;
    if (notify >= 0) directoryWatch = inotify_add_watch(notify, directory.c_str(), wanted | IN_ONLYDIR);
    if (directoryWatch >= 0) return true;
  }
#endif
  poll(wantedInterval);
  return true;
}

void ChangeWatch::poll(int wantedInterval) {
  polling = true;
  interval = wantedInterval > 0 ? wantedInterval : kUsualInterval;
}

void ChangeWatch::watchFile(int fd) {
  names = true;
#if defined(__linux__)
  if (polling) return;
  if (fileWatch >= 0) inotify_rm_watch(notify, fileWatch);
  // By its descriptor: the name may be another file's by now.
  char itself[40];
  std::snprintf(itself, sizeof itself, "/proc/self/fd/%d", fd);
  fileWatch = inotify_add_watch(notify, itself, IN_MODIFY | IN_ATTRIB);
  if (fileWatch < 0) poll(0);
#else
  (void)fd;
#endif
}

void ChangeWatch::wake() const {
  const int formerError = errno;
  // A full pipe wakes as well as one byte more.
  [[maybe_unused]] const ssize_t written = write(wakeEnds[1], "", 1);
  errno = formerError;
}

void ChangeWatch::collect() {
#if defined(__linux__)
  alignas(inotify_event) char news[4096];
  for (;;) {
    const ssize_t got = read(notify, news, sizeof news);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    for (const char *at = news; at < news + got;) {
      inotify_event event;
      std::memcpy(&event, at, sizeof event);
      const char *const entry = at + sizeof event;
      at = entry + event.len;
      // From here on the directory of that name is another one, or none.
      constexpr uint32_t gone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
      if (event.wd == directoryWatch && (event.mask & gone) != 0) poll(0);
      const bool aboutFile = event.wd == fileWatch && (event.mask & (IN_Q_OVERFLOW | IN_IGNORED)) == 0;
      if (aboutFile && (event.mask & IN_ATTRIB) == 0) continue;
      // Names in the directory that are none of the stream's are of no concern.
      if (event.len > 0 && std::strncmp(entry, name.c_str(), name.size()) != 0) continue;
      names = true;
    }
  }
#endif
}

// False when the wait is to end: woken, or by a signal.
bool ChangeWatch::pause(int milliseconds, bool forNews, bool &news) {
  pollfd waited[2] = {{wakeEnds[0], POLLIN, 0}, {forNews ? notify : -1, POLLIN, 0}};
  const int ready = ::poll(waited, 2, milliseconds);
  if (ready < 0) return false;
  news = ready > 0;
  if (waited[0].revents == 0) return true;
  char bytes[64];
  while (read(wakeEnds[0], bytes, sizeof bytes) > 0) {
  }
  return false;
}

bool ChangeWatch::wait(int timeout) {
  bool news = false;
  if (polling) return pause(timeout < 0 ? interval : std::min(timeout, interval), false, news);
  // While records keep coming, news is left to gather: to tell each of them to each of many followers would
  // cost the writer more than the write.
  const auto since = std::chrono::floor<std::chrono::milliseconds>(Clock::now() - lastNews).count();
  if (since < kRest) {
    const int rest = kRest - static_cast<int>(since);
    if (timeout >= 0 && timeout <= rest) return pause(timeout, true, news) && news;
    if (!pause(rest, false, news)) return false;
    if (timeout > 0) timeout -= rest;
  }
  if (!pause(timeout, true, news) || !news) return false;
  lastNews = Clock::now();
  return true;
}

}  // namespace wmq
