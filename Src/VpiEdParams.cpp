// Parameter text of a property: searched in place, never parsed into a
// table, since most lines are asked a single question.
#include <array>
#include <cstring>

#include "detail/Object.h"
#include "detail/Vpi.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::escapeSet;

constexpr int32_t kKeyMax = 64;  // key bytes kept, terminator included

struct WordCode {
  const char *word;
  int32_t code;
};

// Searched in order; the first word found anywhere in the text decides.
constexpr WordCode kCsWords[] = {{"utf-8", VPI_CS_UTF8}, {"UTF-7", VPI_CS_UTF7},
                                 {"UCS2", VPI_CS_UCS2}};
constexpr WordCode kEncWords[] = {{"QUOTED-PRINTABLE", VPI_ENC_QP},
                                  {"BASE64", VPI_ENC_BASE64},
                                  {"ENCODING=B", VPI_ENC_BASE64}};
constexpr WordCode kVlWords[] = {{"URL", VPI_LOC_URL}, {"CONTENT-ID", VPI_LOC_CID}};

constexpr char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool startsNoCase(const char *text, const char *word) {
  for (; *word != '\0'; ++text, ++word)
    if (lowerAscii(*text) != lowerAscii(*word)) return false;
  return true;
}

// For each byte, the rows of a table whose word begins with it (either case),
// one bit a row, so that the search tries a row only where it can start.
template <size_t N>
constexpr std::array<uint8_t, 256> firstBytes(const WordCode (&table)[N]) {
  static_assert(N <= 8);
  std::array<uint8_t, 256> rows{};
  for (size_t i = 0; i < N; ++i) {
    const char c = lowerAscii(table[i].word[0]);
    rows[static_cast<uint8_t>(c)] |= static_cast<uint8_t>(1u << i);
    if (c >= 'a' && c <= 'z') rows[static_cast<uint8_t>(c - 32)] |= static_cast<uint8_t>(1u << i);
  }
  return rows;
}

// The text is read once, whatever the number of words: at each byte, only
// rows earlier than the best found so far are tried, so the result is the
// same as searching row by row.
template <size_t N>
int32_t searchWords(const KvoStr *params, const WordCode (&table)[N],
                    const std::array<uint8_t, 256> &first) {
  size_t best = N;
  for (const char *p = KvoStr_buf(params); *p != '\0' && best != 0; ++p) {
    uint32_t rows = first[static_cast<uint8_t>(*p)] & ((1u << best) - 1u);
    for (; rows != 0; rows &= rows - 1) {
      const size_t i = static_cast<size_t>(__builtin_ctz(rows));
      if (startsNoCase(p, table[i].word)) {
        best = i;
        break;
      }
    }
  }
  return best < N ? table[best].code : 0;
}

constexpr auto kCsFirst = firstBytes(kCsWords);
constexpr auto kEncFirst = firstBytes(kEncWords);
constexpr auto kVlFirst = firstBytes(kVlWords);

struct CodeTexts {
  int32_t code;
  const char *bare;
  const char *keyed;
};

constexpr CodeTexts kCsTexts[] = {{VPI_CS_UTF8, ";utf-8", ";CHARSET=utf-8"},
                                  {VPI_CS_UCS2, ";UCS2", ";CHARSET=UCS2"},
                                  {VPI_CS_UTF7, ";UTF-7", ";CHARSET=UTF-7"}};
constexpr CodeTexts kEncTexts[] = {{VPI_ENC_QP, ";QUOTED-PRINTABLE", ";ENCODING=QUOTED-PRINTABLE"},
                                   {VPI_ENC_BASE64, ";BASE64", ";ENCODING=BASE64"},
                                   {VPI_ENC_B, ";ENCODING=B", ";ENCODING=B"}};
constexpr CodeTexts kVlTexts[] = {{VPI_LOC_URL, ";VALUE=URL", ";VALUE=URL"},
                                  {VPI_LOC_CID, ";VALUE=CONTENT-ID", ";VALUE=CONTENT-ID"}};

template <size_t N>
KvoStr *putCode(KvoStr *params, int32_t code, int32_t keyed, const CodeTexts (&table)[N],
                const char *file, int32_t line) {
  if (params == nullptr) {
    kvo_assert__("params", file, line);
    return params;
  }
  if (code == 0) return params;
  for (const CodeTexts &row : table)
    if (row.code == code) return KvoStr_appdStr(params, keyed ? row.keyed : row.bare);
  kvo_assert__("0", file, line);
  return params;
}

bool isWord(int32_t code) { return code == KVO_LEX_WORD || code == KVO_LEX_WORD_EOS; }

}  // namespace

namespace ostrel::detail {

KvoStr *VpiParams_putCs(KvoStr *params, int32_t cs, int32_t keyed) {
  return putCode(params, cs, keyed, kCsTexts, __FILE__, __LINE__);
}

KvoStr *VpiParams_putEnc(KvoStr *params, int32_t enc, int32_t keyed) {
  return putCode(params, enc, keyed, kEncTexts, __FILE__, __LINE__);
}

}  // namespace ostrel::detail

extern "C" {

OSTREL_API int32_t VpiParams_getAny(const KvoStr *params, const char *name, char *out,
                                    int32_t outSize) {
  if (!OSTREL_REQUIRE(params && name && *name, "params && name && *name")) return 0;
  tarnex::ScratchStrStrm text(KvoStr_buf(params), KvoStr_len(params));
  tarnex::ScratchStr<32> token;
  char key[kKeyMax];
  for (;;) {
    int32_t code = KvoLex_getDef(text, token, ";=");
    if (code == ';') continue;
    if (!isWord(code)) return 0;
    kvo_strxfrm(key, token.c_str(), kKeyMax);
    code = KvoLex_getDef(text, token, ";=");
    if (code == ';') continue;  // a bare word
    if (code != '=') return 0;
    code = KvoLex_getDef(text, token, ";=");
    if (code != ';' && !isWord(code)) return 0;
    if (kvo_stricmp(key, name) != 0) continue;
    if (out != nullptr && outSize > 0) kvo_strxfrm(out, code == ';' ? "" : token.c_str(), outSize);
    return 1;
  }
}

OSTREL_API int32_t VpiParams_getCs(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return 0;
  return searchWords(params, kCsWords, kCsFirst);
}

OSTREL_API int32_t VpiParams_getEnc(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return 0;
  return searchWords(params, kEncWords, kEncFirst);
}

OSTREL_API int32_t VpiParams_getVl(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return 0;
  return searchWords(params, kVlWords, kVlFirst);
}

OSTREL_API int32_t VpiParams_getFmt(const KvoStr *params, char *out, int32_t outSize) {
  return VpiParams_getAny(params, "TYPE", out, outSize);
}

OSTREL_API KvoStr *VpiParams_putVl(KvoStr *params, int32_t loc) {
  return putCode(params, loc, 1, kVlTexts, __FILE__, __LINE__);
}

OSTREL_API KvoStr *VpiParams_putFmt(KvoStr *params, const char *fmt) {
  if (!OSTREL_REQUIRE(params, "params")) return params;
  if (fmt == nullptr || *fmt == '\0') return params;
  // A byte that would end the value early or open a quote is not written:
  // the line stays well formed whatever the caller's text holds.
  int32_t n = 0;
  while (fmt[n] != '\0' && !ostrel::detail::endsParamValue(fmt[n])) ++n;
  KvoStr_appdStr(params, ";TYPE=");
  return KvoStr_appdStrx(params, fmt, n);
}

}  // extern "C"
