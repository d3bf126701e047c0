// The memory budget of one XML parser, kept through expat's memory-handling
// suite.
//
// The suite's functions get no context, so the budget in force is the one
// the parser's current call has put up (a BudgetScope, per thread and
// nested calls restore the one before); each block remembers its budget so
// that it is paid back to the right one, whoever frees it.
#ifndef TARNEX_SRC_XML_BUDGET_H
#define TARNEX_SRC_XML_BUDGET_H

#include <expat.h>

#include <cstddef>

namespace tarnex::xml {

struct Budget {
  size_t used = 0;
  size_t limit = 0;
  bool spent = false;  // an allocation was refused
};

extern const XML_Memory_Handling_Suite kBudgetSuite;

class BudgetScope {
 public:
  explicit BudgetScope(Budget *b);
  ~BudgetScope();
  BudgetScope(const BudgetScope &) = delete;
  BudgetScope &operator=(const BudgetScope &) = delete;

 private:
  Budget *prev_;
};

}  // namespace tarnex::xml

#endif  // TARNEX_SRC_XML_BUDGET_H
