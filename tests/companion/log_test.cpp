#include "companion/log.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <string>

#include "wmq/companion.h"

namespace {

int lastPriority;
std::string lastMessage;

class SystemLog : public testing::Test {
 protected:
  SystemLog() {
    wmq::logSink = [](int priority, const char *message) {
      lastPriority = priority;
      lastMessage = message;
    };
    lastPriority = -1;
    lastMessage = "nothing";
  }
  ~SystemLog() override { wmq::logSink = nullptr; }
};

TEST_F(SystemLog, GetsThePriorityAndTheFormattedMessage) {
  wmc_syslog(LOG_ERR, "%s: %d of %ld", "read", 3, 4L);
  EXPECT_EQ(lastPriority, LOG_ERR);
  EXPECT_EQ(lastMessage, "read: 3 of 4");
}

TEST_F(SystemLog, SpellsOutTheSystemError) {
  errno = ENOENT;
  wmc_syslog(LOG_ERR, "%s: %s() failed. %M.", "reader", "lookUp");
  EXPECT_EQ(lastMessage, std::string("reader: lookUp() failed. ") + std::strerror(ENOENT) + ".");
  errno = EIO;
  wmc_syslog(LOG_ERR, "%M%M");
  EXPECT_EQ(lastMessage, std::string(std::strerror(EIO)) + std::strerror(EIO));
}

TEST_F(SystemLog, TakesADoubledPercentSignForOne) {
  wmc_syslog(LOG_INFO, "100%%M %%");
  EXPECT_EQ(lastMessage, "100%M %");
}

TEST_F(SystemLog, GetsNothingThatCannotBeFormatted) {
  wmc_syslog(LOG_INFO, "%lc", static_cast<wint_t>(0x110000));
  EXPECT_EQ(lastMessage, "nothing");
  const std::string unfinished = "100%";
  wmc_syslog(LOG_INFO, unfinished.c_str());
  EXPECT_EQ(lastMessage, "nothing");
}

TEST_F(SystemLog, DoesNotExpandPercentSignsOfArguments) {
  wmc_syslog(LOG_INFO, "%s", "%M %s %n");
  EXPECT_EQ(lastMessage, "%M %s %n");
}

TEST_F(SystemLog, LeavesErrnoAlone) {
  errno = EACCES;
  wmc_syslog(LOG_INFO, "%M %s", std::string(5000, 'x').c_str());
  EXPECT_EQ(errno, EACCES);
}

TEST_F(SystemLog, GetsLongMessagesAndLongFormatsWhole) {
  const std::string text(5000, 'x');
  wmc_syslog(LOG_INFO, "<%s>", text.c_str());
  EXPECT_EQ(lastMessage, "<" + text + ">");
  wmc_syslog(LOG_INFO, (text + "%d").c_str(), 5);
  EXPECT_EQ(lastMessage, text + "5");
}

TEST_F(SystemLog, GetsNothingForAMissingFormat) {
  wmc_syslog(LOG_INFO, nullptr);
  EXPECT_EQ(lastMessage, "nothing");
}

// Nobody can look into the system's log here; the call must come back with errno as it was.
TEST(SystemLogWithoutSink, GoesToTheSystem) {
  errno = EINTR;
  wmc_syslog(LOG_DEBUG, "%s", "test");
  EXPECT_EQ(errno, EINTR);
}

}  // namespace
