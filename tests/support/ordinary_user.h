// Permissions bind only those who are not root.
#ifndef WMQ_TESTS_ORDINARY_USER_H
#define WMQ_TESTS_ORDINARY_USER_H

#include <unistd.h>

namespace wmq::testing {

// Makes root an ordinary user for as long as it stands; others are ordinary anyway.
class OrdinaryUser {
 public:
  OrdinaryUser() : wasRoot_(geteuid() == 0), stepped_(wasRoot_ && seteuid(kNobody) == 0) {}
  ~OrdinaryUser() { stepBack(); }
  OrdinaryUser(const OrdinaryUser &) = delete;
  OrdinaryUser &operator=(const OrdinaryUser &) = delete;

  // False where root cannot step down, as in some containers.
  bool isOrdinary() const { return stepped_ || !wasRoot_; }

  void stepBack() {
    if (stepped_ && seteuid(0) == 0) stepped_ = false;
  }

 private:
  static constexpr uid_t kNobody = 65534;
  bool wasRoot_;
  bool stepped_;
};

}  // namespace wmq::testing

#endif
