#include "record_sink.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace wmq::tool {

const StreamOperations eventStream{"events",       &streamParams::fileName, wmq_openstream,  wmq_writestream,
                                   wmq_syncstream, wmq_closestream,         wmq_formatrecord};
const StreamOperations statusStream{"status",        &streamParams::statusFileName,
                                    wmq_openstatus,  wmq_writestatus,
                                    wmq_syncstatus,  wmq_closestatus,
                                    wmq_formatstatus};
const StreamOperations pendingReasonsStream{"pending",
                                            &streamParams::pendingReasonsFileName,
                                            wmq_openpendingreasons,
                                            wmq_writependingreasons,
                                            wmq_syncpendingreasons,
                                            wmq_closependingreasons,
                                            wmq_formatpendingreasons};

namespace {

std::string failureText(int number, int systemError, const std::string &detail = "") {
  std::string text = "error " + std::to_string(number) + " " + wmq_errname(number) + ": ";
  if (!detail.empty()) text += detail + ": ";
  text += number == WMQE_SYS || number == 0 ? std::strerror(systemError) : wmq_strerror(number);
  return text;
}

// Two writers set a count of the record to 0 and leave the array. Its release needs the count.
int32_t *clearedCount(eventRecord &record) {
  if (record.type == EVENT_JOB_STATUS) return &record.eventLog.jobStatusLog.numAttrGroups;
  if (record.type == EVENT_JOB_STATUS2) return &record.eventLog.jobStatus2Log.numGPURusages;
  return nullptr;
}

// A stream reports a record that it cannot write and a disk that is full by the same number. Whether it is
// the record shows where no disk is involved.
bool isRefusedAnywhere(const StreamOperations &stream, eventRecord &record) {
  char *text = nullptr;
  size_t length = 0;
  wmq_errno = 0;
  int result = stream.format(&record, &text, &length);
  std::free(text);
  return result != 0;
}

}  // namespace

bool RecordSink::open() {
  if (toStandardOutput()) {
    faults.beforePrinting([this] { output.flush(); });
    return true;
  }
  // Old files of a bare name are not found by the library.
  if (options.file.find('/') == std::string::npos) options.file.insert(0, "./");
  streamParams params{};
  params.*options.stream->path = options.file.data();
  params.maxStreamSize = options.maxSize;
  params.maxStreamFileNum = options.maxFiles;
  wmq_errno = 0;
  errno = 0;
  if (options.stream->open(&params) == 0) return true;
  faults.failure(options.file, failureText(wmq_errno, errno));
  return false;
}

RecordSink::Result RecordSink::write(eventRecord &record, std::string_view file, uint64_t line) {
  wmq_errno = 0;
  int32_t *cleared = clearedCount(record);
  int32_t count = cleared ? *cleared : 0;
  Result result = toStandardOutput() ? writeToOutput(record) : writeToStream(record, file, line);
  if (cleared) *cleared = count;
  return result;
}

RecordSink::Result RecordSink::writeToOutput(eventRecord &record) {
  char *text = nullptr;
  size_t length = 0;
  bool fine = options.stream->format(&record, &text, &length) == 0;
  bool put = fine && (!text || output.write({text, length}));
  std::free(text);
  if (!fine) return Result::refused;
  return put ? Result::written : Result::failed;
}

RecordSink::Result RecordSink::writeToStream(eventRecord &record, std::string_view file, uint64_t line) {
  errno = 0;
  if (options.stream->write(&record) == 0) return Result::written;
  int number = wmq_errno;
  int systemError = errno;
  std::string detail = number != 0 ? wmq_errdetail() : "";  // else it is that of an earlier failure
  if (isRefusedAnywhere(*options.stream, record)) return Result::refused;
  std::string text = failureText(number, systemError, detail) + "; stopped at ";
  text += file;
  faults.failure(options.file, text + ":" + std::to_string(line));
  return Result::failed;
}

void RecordSink::close() {
  if (toStandardOutput()) {
    output.finish(faults);
    return;
  }
  if (options.sync && options.stream->sync() != 0)
    faults.failure(options.file, failureText(wmq_errno, errno));
  if (options.stream->close() != 0) faults.failure(options.file, "cannot be closed");
}

}  // namespace wmq::tool
