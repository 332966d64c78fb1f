// Memory that runs out. A program that is made of failing_allocations.cpp as well has allocators of its own
// in front of those of the host and the library; it is a program of its own for that.
#pragma once

namespace test {

// While one lives, the allocation behind `n` others fails: one of them, once.
class FailingAllocation {
 public:
  explicit FailingAllocation(int n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  bool has_failed() const;
};

}  // namespace test
