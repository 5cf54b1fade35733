#include "follow_soak/counted_writer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <stdexcept>

#include "support/small_records.h"

namespace wmq::testing {

static int writeTo(Kind kind, eventRecord &record) {
  wmq_errno = 0;
  if (kind == Kind::status) return wmq_writestatus(&record);
  return kind == Kind::pending ? wmq_writependingreasons(&record) : wmq_writestream(&record);
}

CountedWriter::CountedWriter(std::array<std::string, numKinds> streamPaths, int maxSize, int maxOldFiles,
                             ScriptedClock &theClock)
    : paths(std::move(streamPaths)), size(maxSize), oldFiles(maxOldFiles), clock(theClock) {
  void *shared = mmap(nullptr, sizeof(Counted), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) throw std::runtime_error("no shared memory");
  counted = static_cast<Counted *>(shared);
  counted->next = firstNumber;
}

int *CountedWriter::rotationsNoted = nullptr;

// The library traces a rotation when it is done.
int CountedWriter::noteRotation(const char *message) {
  if (std::strstr(message, " reset all right ") != nullptr) ++*rotationsNoted;
  return 0;
}

CountedWriter::~CountedWriter() { munmap(counted, sizeof(Counted)); }

pid_t CountedWriter::start(const Writing &task) {
  const pid_t child = fork();
  if (child == 0) run(task);
  return child;
}

void CountedWriter::run(const Writing &task) {
  random.seed(task.seed);
  const int deadly = task.dies ? pickFrom(random, 4) : -1;
  if (task.dies && pickFrom(random, 2) == 0)
    clock.whenRead = [&, readings = 0]() mutable {
      if (++readings > deadly) ::kill(getpid(), SIGKILL);
    };
  if (!open()) _exit(1);
  for (int i = 0; i < task.count; ++i) {
    const auto kind = static_cast<Kind>(task.kind == anyKind ? pickFrom(random, numKinds) : task.kind);
    if (pickFrom(random, 4) == 0) countWrites(kind);
    if (task.dies && i == deadly) ::kill(getpid(), SIGKILL);
    const int number = counted->next++;
    if (write(number, kind, task.endsLine) == 0)
      counted->writtenTo[number - firstNumber] = static_cast<int8_t>(1 + static_cast<int>(kind));
  }
  if (task.dies) ::kill(getpid(), SIGKILL);
  _exit(0);
}

bool CountedWriter::open() {
  std::array<std::string, numKinds> names = paths;
  rotationsNoted = &counted->rotations;
  const streamParams params{names[0].data(), size,           oldFiles, 1, noteRotation,
                            names[1].data(), names[2].data()};
  return wmq_openstream(&params) == 0 && wmq_openstatus(&params) == 0 && wmq_openpendingreasons(&params) == 0;
}

// Every 100th call looks at the size: here the next one does, or one of the next.
void CountedWriter::countWrites(Kind kind) {
  eventRecord nothing = bareRecord(61);
  for (int calls = 90 + pickFrom(random, 20); calls > 0; --calls) writeTo(kind, nothing);
}

int CountedWriter::write(int number, Kind kind, bool endsLine) {
  static const int32_t types[] = {EVENT_LOG_SWITCH,  EVENT_LOG_SWITCH,     EVENT_SBD_JOB_STATUS,
                                  EVENT_JOB_VACATED, EVENT_JOB_OCCUPY_REQ, EVENT_JOB_NEW};
  int32_t type = types[endsLine ? 0 : pickFrom(random, 6)];
  if (kind == Kind::status) type = EVENT_JOB_STATUS2;
  if (kind == Kind::pending) type = EVENT_JOB_PENDING_REASONS;
  eventRecord record = bareRecord(type);
  record.eventTime = number;
  std::string command =
      "echo \"LOG_SWITCH\" \"10.1\" 5 7\n" + std::string(static_cast<size_t>(pickFrom(random, 200)), 'x');
  if (type == EVENT_JOB_NEW) record.eventLog.jobNewLog.command = command.data();
  return writeTo(kind, record);
}

}  // namespace wmq::testing
