#include "tool/swf_trace.h"

#include <gtest/gtest.h>

namespace wmq::tool {
namespace {

class SwfTrace : public ::testing::Test {
 protected:
  SwfLine read(std::string_view line) { return readSwfLine(line, header, job, why); }

  // Why a line is bad.
  std::string badness(std::string_view line) {
    why.clear();
    EXPECT_EQ(read(line), SwfLine::bad) << line;
    return why;
  }

  SwfHeader header;
  SwfJob job;
  std::string why;
};

TEST_F(SwfTrace, HasEighteenColumnsForAJob) {
  ASSERT_EQ(read("   10   430730     31  10770  256   5343.5  640  257  28800    -1  1  95  3  4  5 6 7 8"),
            SwfLine::job);
  EXPECT_EQ(job.number, 10);
  EXPECT_EQ(job.submitTime, 430730);
  EXPECT_EQ(job.waitTime, 31);
  EXPECT_EQ(job.runTime, 10770);
  EXPECT_EQ(job.allocatedProcessors, 256);
  EXPECT_EQ(job.averageCpuTime, 5343.5);
  EXPECT_EQ(job.usedMemory, 640);
  EXPECT_EQ(job.requestedProcessors, 257);
  EXPECT_EQ(job.requestedTime, 28800);
  EXPECT_EQ(job.requestedMemory, -1);
  EXPECT_EQ(job.status, swfCompleted);
  EXPECT_EQ(job.user, 95);
  EXPECT_EQ(job.group, 3);
  EXPECT_EQ(job.application, 4);
  EXPECT_EQ(job.queue, 5);
  EXPECT_EQ(job.partition, 6);
  EXPECT_EQ(job.precedingJob, 7);
  EXPECT_EQ(job.thinkTime, 8);
}

TEST_F(SwfTrace, MayBeSeparatedByTabsAndEndWithACarriageReturn) {
  EXPECT_EQ(read("1\t0\t-1\t5\t1\t-1\t-1\t-1\t-1\t-1\t1\t1\t1\t-1\t-1\t-1\t-1\t-1 \r"), SwfLine::job);
  EXPECT_EQ(job.runTime, 5);
}

TEST_F(SwfTrace, TellsWhatIsWrongWithALine) {
  EXPECT_EQ(badness("1 2 3"), "a job line has 18 columns, this one has 3");
  EXPECT_EQ(badness("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19"),
            "a job line has 18 columns, this one has more");
  EXPECT_EQ(badness("1 2 x 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18"),
            "column 3 (wait time) is no number: 'x'");
  EXPECT_EQ(badness("1 2.5 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18"),
            "column 2 (submit time) is no number: '2.5'");
  EXPECT_EQ(badness("1 2 3 4 5 nan 7 8 9 10 11 12 13 14 15 16 17 18"),
            "column 6 (average CPU time) is no number: 'nan'");
  EXPECT_EQ(badness("1 2 3 4 99999999999999999999 6 7 8 9 10 11 12 13 14 15 16 17 18"),
            "column 5 (allocated processors) is no number: '99999999999999999999'");
}

TEST_F(SwfTrace, BeginsWithAHeader) {
  for (const char *line :
       {"; Version: 2.2", "; UnixStartTime: 956700003", ";MaxNodes: 144 (of 150)", "; MaxProcs:\t1152",
        "; Queue:  3  normal         ", "; Partition: 29  pa 0907@standard", "; Queue:  1  ", "; free text",
        ";", "", "; Note: see http://example.org/"})
    EXPECT_EQ(read(line), SwfLine::header) << line;
  EXPECT_EQ(header.startTime, 956700003);
  EXPECT_EQ(header.maxNodes, 144);
  EXPECT_EQ(header.maxProcessors, 1152);
  EXPECT_EQ(header.queues, (std::map<int64_t, std::string>{{3, "normal"}}));
  EXPECT_EQ(header.partitions, (std::map<int64_t, std::string>{{29, "pa 0907@standard"}}));
}

TEST_F(SwfTrace, HasNumbersInItsHeader) {
  EXPECT_EQ(badness("; UnixStartTime: yesterday"), "the header's UnixStartTime is no number");
  EXPECT_EQ(badness("; UnixStartTime: -4000000000"), "the header's UnixStartTime is negative");
  EXPECT_EQ(badness("; MaxProcs: -2"), "the header's MaxProcs is negative");
  EXPECT_EQ(header.startTime, 0);
  EXPECT_EQ(read("; UnixStartTime: -1"), SwfLine::header) << "unknown, as in the columns";
}

TEST_F(SwfTrace, IsQuotedInPartWhereAWordIsLong) {
  EXPECT_EQ(badness("1 2 " + std::string(1000, 'x')),
            "column 3 (wait time) is no number: '" + std::string(60, 'x') + "...'");
}

}  // namespace
}  // namespace wmq::tool
