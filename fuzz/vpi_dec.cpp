// Property decoder over arbitrary bytes: reading a whole input property by
// property, and each value with both component readers, never crashes,
// never reads outside the input and always ends. The same bytes are read
// through the stream's own window (where plain lines take the fast path),
// through no window at all (the lexer reads every line) and through narrow
// windows; all three must give the same properties at the same positions.
// The first byte chooses whether values are read escaped and the width of
// the narrow window.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "lex_fuzz.h"
#include "ostrel/ostrel.h"

namespace {

// Positions are given less `offset`, so that a stream read behind a prefix
// compares with one read without it.
std::string decodeAll(IStrm *raw, int32_t escaped, int64_t offset = 0) {
  tarnex::ScratchStr<32> name, params, text;
  tarnex::ScratchWcs<32> wide;
  tarnex::ScratchMemStrm val(0);
  std::string out;
  int64_t last = -1;
  for (int i = 0;; ++i) {
    const int32_t rc = VpiDec_getStrm(raw, name, params, val);
    const int64_t pos = IStrm_tell(raw) - offset;
    out += std::string(name.view()) + "|" + std::string(params.view()) + "|" +
           lexfuzz::contents(val) + "|" + std::to_string(rc) + "@" + std::to_string(pos) + "\n";
    if (rc < 1) {
      FUZZ_CHECK(KvoStr_len(name) == 0 && IStrm_size(val) == 0);
      return out;
    }
    FUZZ_CHECK(i == 0 || pos > last);  // a property read must move the stream
    last = pos;
    IStrm_rewind(val);
    for (int n = 0; n < 64 && VpiVal_getCstr(val, text, escaped, nullptr); ++n) {
    }
    IStrm_rewind(val);
    for (int n = 0; n < 64 && VpiVal_getCwcs(val, wide, escaped, nullptr); ++n) {
    }
    VpiParams_getAny(params, "TYPE", nullptr, 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const uint8_t mode = data[0];
  const int32_t escaped = mode & 1;
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);

  tarnex::ScratchStrStrm own(text);
  const std::string want = decodeAll(own, escaped);

  tarnex::ScratchStrStrm in1(text);
  lexfuzz::Narrow none{{&lexfuzz::kNoPeekOps}, in1.get(), 0};
  FUZZ_CHECK(decodeAll(&none.base, escaped) == want);

  tarnex::ScratchStrStrm in2(text);
  lexfuzz::Narrow some{{&lexfuzz::kNarrowOps}, in2.get(), 1 + (mode >> 1) % 16};
  FUZZ_CHECK(decodeAll(&some.base, escaped) == want);

  // A byte-order mark in front changes nothing but the positions (a second
  // mark would be text: only the first is passed over).
  static const std::string kMark = "\xEF\xBB\xBF";
  if (text.compare(0, 3, kMark) != 0) {
    const std::string markedText = kMark + text;  // the streams read it in place
    tarnex::ScratchStrStrm marked(markedText);
    FUZZ_CHECK(decodeAll(marked, escaped, 3) == want);
    tarnex::ScratchStrStrm in3(markedText);
    lexfuzz::Narrow noPeek{{&lexfuzz::kNoPeekOps}, in3.get(), 0};
    FUZZ_CHECK(decodeAll(&noPeek.base, escaped, 3) == want);
  }
  return 0;
}
