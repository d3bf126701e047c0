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
  int32_t group;  // the question the word answers
};

enum : int32_t { kCharset = 0, kEncoding = 1, kLocation = 0 };

// Each group is searched in its own order: its first word found anywhere in
// the text decides its code. Charset and encoding share a table, so the
// decoder asks both questions with one pass over the text.
constexpr WordCode kCsEncWords[] = {
    {"utf-8", VPI_CS_UTF8, kCharset},          {"UTF-7", VPI_CS_UTF7, kCharset},
    {"UCS2", VPI_CS_UCS2, kCharset},           {"QUOTED-PRINTABLE", VPI_ENC_QP, kEncoding},
    {"BASE64", VPI_ENC_BASE64, kEncoding},     {"ENCODING=B", VPI_ENC_BASE64, kEncoding}};
constexpr WordCode kVlWords[] = {{"URL", VPI_LOC_URL, kLocation},
                                 {"CONTENT-ID", VPI_LOC_CID, kLocation}};

constexpr char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool startsNoCase(const char *text, const char *word) {
  for (; *word != '\0'; ++text, ++word)
    if (lowerAscii(*text) != lowerAscii(*word)) return false;
  return true;
}

// A word table with what its search needs, one bit a row: for each byte the
// rows whose word begins with it (either case), so a row is tried only where
// it can start; and for each row the rows of its group from it on, which no
// longer matter once it is found.
template <size_t N>
struct WordSearch {
  static_assert(N <= 8);
  const WordCode *rows;
  std::array<uint8_t, 256> first{};
  std::array<uint8_t, N> fromHere{};

  constexpr explicit WordSearch(const WordCode (&table)[N]) : rows(table) {
    for (size_t i = 0; i < N; ++i) {
      const char c = lowerAscii(table[i].word[0]);
      const auto bit = static_cast<uint8_t>(1u << i);
      first[static_cast<uint8_t>(c)] |= bit;
      if (c >= 'a' && c <= 'z') first[static_cast<uint8_t>(c - 32)] |= bit;
      for (size_t j = i; j < N; ++j)
        if (table[j].group == table[i].group) fromHere[i] |= static_cast<uint8_t>(1u << j);
    }
  }

  // The text is read once, whatever the number of words; the search ends
  // when every group has its answer.
  std::array<int32_t, 2> find(const KvoStr *params) const {
    uint32_t open = (1u << N) - 1u, found = 0;
    for (const char *p = KvoStr_buf(params); *p != '\0' && open != 0; ++p) {
      for (uint32_t cand = first[static_cast<uint8_t>(*p)] & open; cand != 0; cand &= cand - 1) {
        const size_t i = static_cast<size_t>(__builtin_ctz(cand));
        if (!startsNoCase(p, rows[i].word)) continue;
        found |= 1u << i;
        open &= ~uint32_t{fromHere[i]};
      }
    }
    // In each group the earliest row found: the lowest of its bits.
    std::array<int32_t, 2> codes{};
    for (size_t i = N; i-- > 0;)
      if (found & (1u << i)) codes[static_cast<size_t>(rows[i].group)] = rows[i].code;
    return codes;
  }
};

constexpr WordSearch kCsEncSearch(kCsEncWords);
constexpr WordSearch kVlSearch(kVlWords);

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

std::array<int32_t, 2> VpiParams_getCsEnc(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return {};
  return kCsEncSearch.find(params);  // indexed by group: charset, encoding
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
  return kCsEncSearch.find(params)[kCharset];
}

OSTREL_API int32_t VpiParams_getEnc(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return 0;
  return kCsEncSearch.find(params)[kEncoding];
}

OSTREL_API int32_t VpiParams_getVl(const KvoStr *params) {
  if (!OSTREL_REQUIRE(params, "params")) return 0;
  return kVlSearch.find(params)[kLocation];
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
