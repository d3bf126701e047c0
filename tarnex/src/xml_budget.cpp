// The XML parser's memory budget: blocks carry a head with their size and
// budget; an allocation that would pass the limit gives null, which expat
// turns into "out of memory".
#include "xml_budget.h"

#include <cstdint>

#include "tarnex/base.h"

namespace tarnex::xml {
namespace {

thread_local Budget *tCurrent = nullptr;

struct alignas(std::max_align_t) Head {
  Budget *budget;
  size_t size;
};

bool mayTake(Budget *b, size_t more) {
  if (b == nullptr) return true;
  // Detect and prevent integer overflow.
  if (more > b->limit || b->used > b->limit - more) {
    b->spent = true;
    return false;
  }
  return true;
}

void *budgetMalloc(size_t size) {
  Budget *const b = tCurrent;
  // Detect and prevent integer overflow.
  if (size > SIZE_MAX - sizeof(Head) || !mayTake(b, size)) return nullptr;
  Head *h = static_cast<Head *>(kvo_malloc__(sizeof(Head) + size, __FILE__, __LINE__));
  h->budget = b;
  h->size = size;
  if (b != nullptr) b->used += size;
  return h + 1;
}

void budgetFree(void *p) {
  if (p == nullptr) return;
  Head *h = static_cast<Head *>(p) - 1;
  if (h->budget != nullptr) h->budget->used -= h->size;
  kvo_free__(h, __FILE__, __LINE__);
}

void *budgetRealloc(void *p, size_t size) {
  if (p == nullptr) return budgetMalloc(size);
  Head *h = static_cast<Head *>(p) - 1;
  Budget *const b = h->budget;
  // Detect and prevent integer overflow.
  if (size > SIZE_MAX - sizeof(Head)) return nullptr;
  if (size > h->size && !mayTake(b, size - h->size)) return nullptr;
  const size_t old = h->size;
  h = static_cast<Head *>(kvo_realloc__(h, sizeof(Head) + size, __FILE__, __LINE__));
  h->size = size;
  if (b != nullptr) b->used = b->used - old + size;
  return h + 1;
}

}  // namespace

const XML_Memory_Handling_Suite kBudgetSuite = {budgetMalloc, budgetRealloc, budgetFree};

BudgetScope::BudgetScope(Budget *b) : prev_(tCurrent) { tCurrent = b; }
BudgetScope::~BudgetScope() { tCurrent = prev_; }

}  // namespace tarnex::xml
