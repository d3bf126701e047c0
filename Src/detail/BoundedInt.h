// atoi where the value fits 32 bits, clamped where it does not: numbers in
// received text are the sender's, and "99999999999" must be a large value,
// not undefined behaviour.
#ifndef OSTREL_DETAIL_BOUNDEDINT_H
#define OSTREL_DETAIL_BOUNDEDINT_H

#include <cstdint>

namespace ostrel::detail {

inline int32_t boundedAtoi(const char *p) {
  if (p == nullptr) return 0;
  while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
  const bool minus = *p == '-';
  if (*p == '+' || *p == '-') ++p;
  int64_t v = 0;
  for (; *p >= '0' && *p <= '9'; ++p)
    if (v <= INT32_MAX) v = v * 10 + (*p - '0');
  if (minus) v = -v;
  return static_cast<int32_t>(v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : v);
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_BOUNDEDINT_H
