// Reading one property: the name up to ";" or ":", the parameter text up to
// ":", and the value through the lexer's line readers, which join folded
// lines and undo quoted-printable and Base64; a UCS-2 or UTF-7 value is then
// turned into UTF-8.
#include <array>
#include <cstdint>

#include "detail/Object.h"
#include "detail/Vpi.h"
#include "tarnex/scratch.hpp"

namespace {

using Token = tarnex::ScratchStr<256>;

int32_t readName(IStrm *raw, Token &token, KvoStr *name) {
  for (;;) {
    const int32_t code = KvoLex_get(raw, token, ";:", 0, 1);
    if (code < 0) return code;
    if (code == KVO_LEX_EOL) continue;  // a blank line
    if (code == KVO_LEX_WORD) break;
    // A line that begins with a delimiter (or a name cut by the end of the
    // stream): pass over the line.
    const int32_t rc = KvoLex_skipLine(raw, 1);
    if (rc < 0) return rc;
  }
  KvoStr_appdStrx(name, token.c_str(), token.len());
  return 0;
}

int32_t readParams(IStrm *raw, Token &token, KvoStr *params) {
  int32_t code = KvoLex_get(raw, token, ":", 0, 1);
  if (code < 0) return code;
  if (code == ':') return 0;
  // Parameters cut by the end of the stream: the end, not a malformed line.
  if (code == KVO_LEX_WORD_EOS) return OSTREL_EOS;
  if (code != KVO_LEX_WORD) return OSTREL_MALFORMED;
  KvoStr_appdStrx(params, token.c_str(), token.len());
  code = KvoLex_get(raw, token, ":", 0, 1);
  if (code < 0) return code;
  return code == ':' ? 0 : OSTREL_MALFORMED;
}

// Bytes after which the fast head reader hands over to the lexer. Neither
// name nor parameters hold one in a plain line.
constexpr std::array<uint8_t, 256> kHeadStops = [] {
  std::array<uint8_t, 256> t{};
  for (const uint8_t c : {';', ':', '"', '\r', '\n'}) t[c] = 1;
  return t;
}();

const uint8_t *headStop(const uint8_t *p, const uint8_t *lim) {
  while (p != lim && kHeadStops[*p] == 0) ++p;
  return p;
}

// Name and parameters of a plain line ("NAME:" or "NAME;PARAMS:", with no
// quote, fold or line end before the colon), read straight from the
// stream's window: what the lexer would give, for a fraction of its calls.
// False, with nothing taken, for any other line and for a stream without a
// window; the lexer then reads it.
bool readPlainHead(IStrm *raw, KvoStr *name, KvoStr *params) {
  const uint8_t *p = nullptr;
  const int64_t n = IStrm_peek(raw, &p);
  // A leading 0xEF may be a byte-order mark, which the lexer passes over.
  if (n <= 0 || p == nullptr || *p == 0xEF) return false;
  const uint8_t *const lim = p + n;
  const uint8_t *const nameEnd = headStop(p, lim);
  if (nameEnd == p || nameEnd == lim || (*nameEnd != ';' && *nameEnd != ':')) return false;
  const uint8_t *colon = nameEnd;
  if (*nameEnd == ';') {
    colon = nameEnd + 1;
    while ((colon = headStop(colon, lim)) != lim && *colon == ';') ++colon;
    if (colon == lim || *colon != ':') return false;
  }
  // A head beyond a string's reach is left to the lexer and its reports.
  if (colon - p >= INT32_MAX || IStrm_seek(raw, colon + 1 - p, KVO_SEEK_CUR) < 0) return false;
  KvoStr_appdStrx(name, reinterpret_cast<const char *>(p), static_cast<int32_t>(nameEnd - p));
  KvoStr_appdStrx(params, reinterpret_cast<const char *>(nameEnd),
                  static_cast<int32_t>(colon - nameEnd));
  return true;
}

// Replaces the content of val with its conversion to UTF-8.
template <class Convert>
void convertInPlace(IStrm *val, Convert convert) {
  tarnex::ScratchMemStrm utf8(512);
  convert(val, utf8.get());
  IStrm_clear(val);
  IStrm_copy(val, utf8);
}

int32_t readValue(IStrm *raw, IStrm *val, int32_t cs, int32_t enc) {
  IStrm_rewind(val);
  int32_t rc;
  switch (enc) {
    case VPI_ENC_BASE64:
    case VPI_ENC_B:
      rc = KvoLex_getLineBase(raw, val, 1);
      break;
    case VPI_ENC_QP:
      rc = KvoLex_getLineQp(raw, val, 1);
      break;
    default:
      rc = KvoLex_getLine(raw, val, 1, 0);
      break;
  }
  // The end of the stream inside a value is no fault: the property counts
  // as read, as the line reader left it.
  if (rc == OSTREL_EOS) return 0;
  if (rc < 0) return rc;
  IStrm_rewind(val);
  if (cs == VPI_CS_UCS2) convertInPlace(val, ucs2_strm_to_utf8_strm);
  if (cs == VPI_CS_UTF7) convertInPlace(val, utf7_strm_to_utf8_strm);
  IStrm_rewind(val);
  return 0;
}

}  // namespace

extern "C" {

OSTREL_API int32_t VpiDec_getStrm(IStrm *raw, KvoStr *name, KvoStr *params, IStrm *val) {
  if (!OSTREL_REQUIRE(raw && name && params && val, "raw && name && params && val"))
    return 0;
  Token token;
  KvoStr_clear(name);
  KvoStr_clear(params);
  IStrm_clear(val);
  int32_t rc = 0;
  if (!readPlainHead(raw, name, params)) {
    rc = readName(raw, token, name);
    if (rc >= 0) rc = readParams(raw, token, params);
  }
  if (rc >= 0) {
    // Most lines have no parameters: no search to make.
    const std::array<int32_t, 2> csEnc = KvoStr_len(params) == 0
                                             ? std::array<int32_t, 2>{VPI_CS_NONE, VPI_ENC_NONE}
                                             : ostrel::detail::VpiParams_getCsEnc(params);
    rc = readValue(raw, val, csEnc[0], csEnc[1]);
  }
  if (rc < 0) {
    KvoStr_clear(name);
    KvoStr_clear(params);
    IStrm_clear(val);
  }
  if (rc == OSTREL_EOS) return 0;
  return rc < 0 ? rc : 1;
}

OSTREL_API int32_t VpiDec_getLuid(IStrm *raw, KvoStr *luid) {
  if (!OSTREL_REQUIRE(raw, "raw")) return 0;
  tarnex::ScratchStr<32> name;
  tarnex::ScratchStr<64> params;
  tarnex::StackMemStrm<128> val;
  IStrm_rewind(raw);
  int32_t rc;
  while ((rc = VpiDec_getStrm(raw, name, params, val)) >= 1) {
    const char *n = name.c_str();
    if ((n[0] == 'X' || n[0] == 'x') && n[1] == '-' && kvo_stricmp(n, "X-IRMC-LUID") == 0)
      break;
  }
  if (rc == 1 && luid != nullptr) VpiVal_getCstr(val, luid, 1, nullptr);
  return rc;
}

}  // extern "C"
