// A follower whose consumer is killed again and again, and what it was given in all.
#ifndef WMQ_TESTS_RECORDED_FOLLOWER_H
#define WMQ_TESTS_RECORDED_FOLLOWER_H

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/stream_follower.h"

namespace wmq::testing {

// How the consumer goes on after it was killed.
enum class Way {
  library,    // in this process; it keeps what it was given and the position together, now and then
  positions,  // wmq follow, from the position of the last whole line that it has printed
  state       // wmq follow, from its state file: what was printed since comes again
};

struct Item {
  bool isRecord = false;
  int number = 0;         // of a record
  bool excuses = false;   // a notice that records are missing, or come again
  bool restarts = false;  // what was given before may come again from here on
  std::string position;
};

class RecordedFollower {
 public:
  // The story of all that is done is told to `log`. States are kept in files that begin with `statePrefix`.
  RecordedFollower(std::string streamPath, Way consumersWay, const std::string &statePrefix,
                   std::mt19937 &theRandom, std::ostringstream &log);

  void read(int most);  // so many items at most; wmq follow is killed with them, or soon after
  void readAll();
  void save();
  void kill();

  // Where it would go on.
  std::string savedPosition() const;

  const std::vector<Item> &items() const { return given; }
  int kills() const { return numKills; }
  const std::string &fault() const { return wrong; }

 private:
  void readFromLibrary(int most);
  void readFromProgram(int most);
  void takeLine(const std::string &line, bool restarts);

  const std::string path;
  const Way way;
  const std::string state;
  std::mt19937 &random;
  std::ostringstream &story;

  std::unique_ptr<StreamFollower> follower;
  std::vector<Item> given;
  std::string position;  // that was saved
  size_t numSaved = 0;
  int numKills = 0;
  std::string wrong;
};

}  // namespace wmq::testing

#endif
