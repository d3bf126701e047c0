// Writing one property line. The value is looked at to choose its charset
// and transfer encoding, so the record encoders only say what goes on the
// line; generated parameters always come before the caller's.
#include <algorithm>
#include <cstring>

#include "detail/Object.h"
#include "detail/Vpi.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::VpiParams_putCs;
using ostrel::detail::VpiParams_putEnc;

constexpr int32_t kSoftBreakColumn = 252;  // plain values under maxLine 0
constexpr int32_t kEncodedWidth = 76;      // Base64, and QP under maxLine 0
constexpr int32_t kChunk = 4096;

VpiEncOpts defaultOpts() {
  VpiEncOpts o{};
  o.csKeyed = 1;
  o.encKeyed = 1;
  o.maxLine = -1;
  return o;
}

int32_t writeText(IStrm *strm, const char *text, int32_t n) {
  if (n <= 0) return 0;
  const int32_t rc = IStrm_write(strm, text, n);
  return rc < 0 ? rc : 0;
}

// Reads val from its start until `stop` holds for a byte; true if it did.
template <class Stop>
bool scanValue(IStrm *val, Stop stop) {
  IStrm_rewind(val);
  uint8_t buf[kChunk];
  for (;;) {
    const int32_t n = IStrm_read(val, buf, kChunk);
    if (n <= 0) return false;
    for (int32_t i = 0; i < n; ++i)
      if (stop(buf[i])) return true;
  }
}

struct Choice {
  int32_t cs;
  int32_t enc;
};

Choice chooseCsEnc(IStrm *val, int32_t binary, const VpiEncOpts &o) {
  if (binary == 1) return {VPI_CS_NONE, o.binEnc ? o.binEnc : VPI_ENC_BASE64};
  Choice c{VPI_CS_NONE, VPI_ENC_NONE};
  if (val == nullptr) return c;
  // A 0 byte ends the charset pass: what stands behind it is not looked at.
  bool high = false;
  scanValue(val, [&](uint8_t b) {
    if (b == 0) return true;
    high = b >= 0x80;
    return high;
  });
  if (high) c.cs = o.textCs ? o.textCs : VPI_CS_UTF8;
  bool needsEnc = c.cs == VPI_CS_UCS2;
  if (!needsEnc) {
    needsEnc = scanValue(val, [&](uint8_t b) {
      if (b == '\r' || b == '\n' || b == 0) return true;
      if (o.isEncChar != nullptr) return o.isEncChar(b) != 0;
      return b >= 0x80 && o.hiBitEnc != 0;
    });
  }
  if (needsEnc) c.enc = o.textEnc ? o.textEnc : VPI_ENC_QP;
  return c;
}

// A plain value, with the quoted-printable soft break "=" CR LF whenever the
// line reaches `limit` (counted from the name's first byte).
int32_t copyWithSoftBreaks(IStrm *strm, IStrm *src, int32_t limit, int32_t column) {
  uint8_t buf[kChunk];
  for (;;) {
    const int32_t n = IStrm_read(src, buf, kChunk);
    if (n <= 0) return 0;
    for (int32_t done = 0; done < n;) {
      int32_t take = n - done;
      if (limit > 0) {
        if (column >= limit) {
          const int32_t rc = writeText(strm, "=\r\n", 3);
          if (rc < 0) return rc;
          column = 0;
        }
        take = std::min(take, limit - column);
      }
      const int32_t rc = IStrm_write(strm, buf + done, take);
      if (rc < 0) return rc;
      done += take;
      column += take;
    }
  }
}

int32_t writeValue(IStrm *strm, IStrm *val, const Choice &c, int32_t binary,
                   const VpiEncOpts &o, int32_t column) {
  IStrm_rewind(val);
  tarnex::OwnedStrm converted;
  if (c.cs == VPI_CS_UCS2 || c.cs == VPI_CS_UTF7) {
    converted = tarnex::OwnedStrm(MemStrm_xcreatex__(nullptr, 512, __FILE__, __LINE__));
    const int32_t rc = c.cs == VPI_CS_UCS2 ? utf8_strm_to_ucs2_strm(val, converted)
                                           : utf8_strm_to_utf7_strm(val, converted);
    if (rc < 0) kvo_assert__("0", __FILE__, __LINE__);
  }
  IStrm *source = converted ? converted.get() : val;
  IStrm_rewind(source);
  int32_t rc;
  switch (c.enc) {
    case VPI_ENC_BASE64:
    case VPI_ENC_B:
      rc = b64_enc_strm_from_strm(strm, source, kEncodedWidth, binary == 1 ? -1 : column);
      break;
    case VPI_ENC_QP:
      rc = qp_enc_strm_from_strm(strm, source, o.maxLine == 0 ? kEncodedWidth : -1, column);
      break;
    default:
      rc = copyWithSoftBreaks(strm, source, o.maxLine == 0 ? kSoftBreakColumn : o.maxLine,
                              column);
      break;
  }
  return rc < 0 ? rc : 0;
}

}  // namespace

extern "C" {

OSTREL_API int32_t VpiEnc_putStrm(IStrm *strm, const char *name, const KvoStr *params,
                                  IStrm *val, int32_t binary, const VpiEncOpts *opts) {
  if (!OSTREL_REQUIRE(name && *name, "name && *name")) return 0;
  if (!OSTREL_REQUIRE(strm, "strm")) return 0;
  const VpiEncOpts o = opts ? *opts : defaultOpts();
  const int32_t nameLen = static_cast<int32_t>(std::strlen(name));
  int32_t rc = writeText(strm, name, nameLen);
  if (rc < 0) return rc;
  int32_t column = nameLen;

  const Choice c = chooseCsEnc(val, binary, o);
  tarnex::ScratchStr<128> generated;
  if (o.noCs == 0) VpiParams_putCs(generated, c.cs, o.csKeyed);
  VpiParams_putEnc(generated, c.enc, o.encKeyed);
  if ((rc = writeText(strm, generated.c_str(), generated.len())) < 0) return rc;
  column += generated.len();
  if (params != nullptr) {
    if ((rc = writeText(strm, KvoStr_buf(params), KvoStr_len(params))) < 0) return rc;
    column += KvoStr_len(params);
  }
  if ((rc = writeText(strm, ":", 1)) < 0) return rc;
  column += 1;

  if (val != nullptr && IStrm_size(val) > 0) {
    if ((rc = writeValue(strm, val, c, binary, o, column)) < 0) return rc;
  }
  return writeText(strm, "\r\n", 2);
}

OSTREL_API int32_t VpiEnc_putFile(IStrm *strm, const char *name, const KvoStr *params,
                                  const char *file, const VpiEncOpts *opts) {
  FileStrm storage;
  IStrm *in = FileStrm_xcreatex__(&storage, file, "rb", 0, __FILE__, __LINE__);
  if (in == nullptr) return OSTREL_NO_FILE;
  tarnex::OwnedStrm owner(in);
  return VpiEnc_putStrm(strm, name, params, in, 1, opts);
}

OSTREL_API int32_t VpiEnc_putFileW(IStrm *strm, const char *name, const KvoStr *params,
                                   const KvoWchar *file, const VpiEncOpts *opts) {
  if (!OSTREL_REQUIRE(file, "file")) return OSTREL_NO_FILE;
  const KvoWcs wide = tarnex::wcsView(file, -1);
  tarnex::ScratchStr<256> path;
  wcs_str_to_utf8_cstr(&wide, path);
  return VpiEnc_putFile(strm, name, params, path.c_str(), opts);
}

OSTREL_API int32_t VpiEnc_putStrx(IStrm *strm, const char *name, const KvoStr *params,
                                  const char *text, int32_t len, const VpiEncOpts *opts,
                                  int32_t escape, const char *escChars) {
  if (escape == 0) {
    tarnex::ScratchStrStrm raw(text, len);
    return VpiEnc_putStrm(strm, name, params, raw, 0, opts);
  }
  // Escaped text is read up to its terminator; when nothing in it needs a
  // backslash it goes out as it is, else escaped on the stack (the heap
  // only for a long value).
  const char *set = ostrel::detail::escapeSet(escChars);
  if (text == nullptr || std::strpbrk(text, set) == nullptr) {
    tarnex::ScratchStrStrm raw(text, -1);
    return VpiEnc_putStrm(strm, name, params, raw, 0, opts);
  }
  tarnex::ScratchStr<512> escaped;  // a note's body of a few hundred bytes
  ostrel::detail::escapeText(text, set, [&escaped](const char *p, int32_t n) {
    KvoStr_appdStrx(escaped, p, n);
    return 0;
  });
  tarnex::ScratchStrStrm raw(escaped.c_str(), escaped.len());
  return VpiEnc_putStrm(strm, name, params, raw, 0, opts);
}

OSTREL_API int32_t VpiEnc_putStrxW(IStrm *strm, const char *name, const KvoStr *params,
                                   const KvoWchar *wtext, int32_t len,
                                   const VpiEncOpts *opts, int32_t escape,
                                   const char *escChars) {
  const KvoWcs wide = tarnex::wcsView(wtext, -1);
  tarnex::ScratchStr<512> utf8;  // a note's body of a few hundred bytes
  wcs_str_to_utf8_cstr(&wide, utf8);
  return VpiEnc_putStrx(strm, name, params, utf8.c_str(), utf8.len(), opts, escape,
                        escChars);
}

OSTREL_API int32_t VpiEnc_putStr(IStrm *strm, const char *name, const KvoStr *params,
                                 const char *text, int32_t len, const VpiEncOpts *opts) {
  return VpiEnc_putStrx(strm, name, params, text, len, opts, opts ? opts->escape : 1,
                        nullptr);
}

OSTREL_API int32_t VpiEnc_putStrW(IStrm *strm, const char *name, const KvoStr *params,
                                  const KvoWchar *wtext, int32_t len,
                                  const VpiEncOpts *opts) {
  return VpiEnc_putStrxW(strm, name, params, wtext, len, opts, opts ? opts->escape : 1,
                         nullptr);
}

OSTREL_API int32_t VpiEnc_putLuid(IStrm *strm, const char *luid) {
  if (!OSTREL_REQUIRE(strm, "strm")) return 0;
  IStrm_rewind(strm);
  tarnex::ScratchStr<32> name;
  tarnex::ScratchStr<64> params;
  tarnex::StackMemStrm<128> val;
  int32_t rc;
  while ((rc = VpiDec_getStrm(strm, name, params, val)) >= 1) {
    if (kvo_stricmp(name.c_str(), "VERSION") == 0) break;
  }
  if (rc == 1 && luid != nullptr && *luid != '\0') {
    const int64_t pos = IStrm_tell(strm);
    tarnex::ScratchStr<256> rest;
    KvoStr_setStrm(rest, strm, -1);
    IStrm_seek(strm, pos, KVO_SEEK_SET);
    IStrm_printf(strm, "X-IRMC-LUID:%s\r\n", luid);
    IStrm_write(strm, rest.c_str(), rest.len());
  }
  return rc;
}

}  // extern "C"
