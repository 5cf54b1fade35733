// Allocations that fail when a test wants it, the C library's own included: malloc and its kin are defined
// for the whole program. Memory still comes from whoever would have given it, a sanitizer too.
#ifndef WMQ_TESTS_FAILING_ALLOCATIONS_H
#define WMQ_TESTS_FAILING_ALLOCATIONS_H

namespace wmq::testing {

// Fails the nth allocation of this thread from here on, counted from 1, for as long as it stands.
class FailingAllocation {
 public:
  enum Later { work, failToo };
  explicit FailingAllocation(int nth, Later later = work);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;

  bool hasFailed() const;
};

// How many more allocations than releases this thread has had.
int allocationsLeft();

// How many have failed in the whole program.
int allocationsFailed();

// False where some tool has put its own functions in the place of those of this program.
bool allocationsCanFail();

}  // namespace wmq::testing

#endif
