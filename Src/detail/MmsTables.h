// The words and codes of binary MMS and of its SMIL: content-type codes of
// the wire, file extensions, media classes, the regions of the generated
// presentation and the layouts. Constant data walked from the top; every
// text comparison ignores case.
//
// Two rows of the well-known types differ from the registry on purpose,
// because peers written against the older table expect them: 0x00 reads
// "application/octet-stream" (not the any-type entry) and 0x0E
// "multipart/byterantes".
#ifndef OSTREL_DETAIL_MMSTABLES_H
#define OSTREL_DETAIL_MMSTABLES_H

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "tarnex/tarnex.h"

namespace ostrel::detail {

struct MmsCodeType {
  uint8_t code;  // 7 bits; on the wire code | 0x80
  const char *type;
};

inline constexpr MmsCodeType kMmsWellKnownTypes[] = {
    {0x00, "application/octet-stream"}, {0x01, "text/*"}, {0x02, "text/html"},
    {0x03, "text/plain"}, {0x04, "text/x-hdml"}, {0x05, "text/x-ttml"},
    {0x06, "text/x-vCalendar"}, {0x07, "text/x-vCard"}, {0x08, "text/vnd.wap.wml"},
    {0x09, "text/vnd.wap.wmlscript"}, {0x0A, "text/vnd.wap.wta-event"}, {0x0B, "multipart/*"},
    {0x0C, "multipart/mixed"}, {0x0D, "multipart/form-data"}, {0x0E, "multipart/byterantes"},
    {0x0F, "multipart/alternative"}, {0x10, "application/*"}, {0x11, "application/java-vm"},
    {0x12, "application/x-www-form-urlencoded"}, {0x13, "application/x-hdmlc"},
    {0x14, "application/vnd.wap.wmlc"}, {0x15, "application/vnd.wap.wmlscriptc"},
    {0x16, "application/vnd.wap.wta-eventc"}, {0x17, "application/vnd.wap.uaprof"},
    {0x18, "application/vnd.wap.wtls-ca-certificate"},
    {0x19, "application/vnd.wap.wtls-user-certificate"}, {0x1A, "application/x-x509-ca-cert"},
    {0x1B, "application/x-x509-user-cert"}, {0x1C, "image/*"}, {0x1D, "image/gif"},
    {0x1E, "image/jpeg"}, {0x1F, "image/tiff"}, {0x20, "image/png"},
    {0x21, "image/vnd.wap.wbmp"}, {0x22, "application/vnd.wap.multipart.*"},
    {0x23, "application/vnd.wap.multipart.mixed"},
    {0x24, "application/vnd.wap.multipart.form-data"},
    {0x25, "application/vnd.wap.multipart.byteranges"},
    {0x26, "application/vnd.wap.multipart.alternative"}, {0x27, "application/xml"},
    {0x28, "text/xml"}, {0x29, "application/vnd.wap.wbxml"},
    {0x2A, "application/x-x968-cross-cert"}, {0x2B, "application/x-x968-ca-cert"},
    {0x2C, "application/x-x968-user-cert"}, {0x2D, "text/vnd.wap.si"},
    {0x2E, "application/vnd.wap.sic"}, {0x2F, "text/vnd.wap.sl"},
    {0x30, "application/vnd.wap.slc"}, {0x31, "text/vnd.wap.co"},
    {0x32, "application/vnd.wap.coc"}, {0x33, "application/vnd.wap.multipart.related"},
    {0x34, "application/vnd.wap.sia"}, {0x35, "text/vnd.wap.connectivity-xml"},
    {0x36, "application/vnd.wap.connectivity-wbxml"}, {0x37, "application/pkcs7-mime"},
    {0x38, "application/vnd.wap.hashed-certificate"},
    {0x39, "application/vnd.wap.signed-certificate"},
    {0x3A, "application/vnd.wap.cert-response"}, {0x3B, "application/xhtml+xml"},
    {0x3C, "application/wml+xml"}, {0x3D, "text/css"},
    {0x3E, "application/vnd.wap.mms-message"},
    {0x3F, "application/vnd.wap.rollover-certificate"},
    {0x40, "application/vnd.wap.locc+wbxml"}, {0x41, "application/vnd.wap.loc+xml"},
    {0x42, "application/vnd.syncml.dm+wbxml"}, {0x43, "application/vnd.syncml.dm+xml"},
    {0x44, "application/vnd.syncml.notification"}, {0x45, "application/vnd.wap.xhtml+xml"},
    {0x46, "application/vnd.wv.csp.cir"}, {0x47, "application/vnd.oma.dd+xml"},
    {0x48, "application/vnd.oma.drm.message"}, {0x49, "application/vnd.oma.drm.content"},
    {0x4A, "application/vnd.oma.drm.rights+xml"}, {0x4B, "application/vnd.oma.drm.rights+wbxml"},
    {0x4C, "application/vnd.wv.csp+xml"}, {0x4D, "application/vnd.wv.csp+wbxml"},
    {0x4E, "application/vnd.syncml.ds.notification"},
};
static_assert(std::size(kMmsWellKnownTypes) == 79);
static_assert([] {
  for (size_t i = 0; i < std::size(kMmsWellKnownTypes); ++i)
    if (kMmsWellKnownTypes[i].code != i) return false;
  return true;
}(), "the codes run from 0x00 without a gap, so a code is its row");

struct MmsTypeExt {
  const char *type;
  const char *ext;
};

// Content type to the extension a decoded medium's name gets.
inline constexpr MmsTypeExt kMmsTypeExts[] = {
    {"application/smil", "smil"}, {"application/pdf", "pdf"}, {"application/msword", "doc"},
    {"application/ogg", "ogg"},   {"text/x-vCalendar", "vcs"}, {"text/x-vCard", "vcf"},
    {"text/plain", "txt"},        {"text/x-vNote", "vnt"},     {"text/x-vtodo", "vts"},
    {"image/gif", "gif"},         {"image/jpeg", "jpg"},       {"image/tiff", "tif"},
    {"image/png", "png"},         {"image/vnd.wap.wbmp", "wbmp"}, {"audio/aac", "aac"},
    {"audio/amr", "amr"},         {"audio/imelody", "imy"},    {"audio/mid", "mid"},
    {"audio/midi", "midi"},       {"audio/mpeg", "mp3"},       {"audio/mpeg3", "mpeg3"},
    {"audio/mpg", "mpg"},         {"video/mp4", "mp4"},        {"video/3gpp", "3gp"},
    {"video/3gpp2", "3g2"},       {"video/mpeg", "mpeg"},
};
static_assert(std::size(kMmsTypeExts) == 26);

// Extensions by media class. "mpg,mid" is one word with a comma in it, and
// "amr" stands twice: both as peers have always had them.
inline constexpr const char *kMmsAudioExts[] = {"aac", "amr", "mpeg3", "mpg,mid", "midi",
                                                "mp3", "wma", "wav",   "imy",     "amr",
                                                "m4a", "awb", "ogg"};
inline constexpr const char *kMmsVideoExts[] = {"mp4", "3gp", "avi", "3g2", "mpeg"};
inline constexpr const char *kMmsImageExts[] = {"jpg", "gif",  "jpeg", "tif", "tiff", "png",
                                                "wbmp", "bmp", "ico",  "emf", "wmf"};
static_assert(std::size(kMmsAudioExts) == 13 && std::size(kMmsVideoExts) == 5 &&
              std::size(kMmsImageExts) == 11);

// The regions of the generated presentation, in percent of the root layout.
struct MmsRegionDef {
  const char *id;
  uint32_t width, height, top, left;
};
inline constexpr MmsRegionDef kMmsRegionDefs[] = {
    {"top", 100, 50, 0, 0},        {"bottom", 100, 50, 50, 0},   {"left", 50, 100, 0, 0},
    {"right", 50, 100, 0, 50},     {"full", 100, 100, 0, 0},     {"topleft", 50, 50, 0, 0},
    {"topright", 50, 50, 0, 50},   {"bottomleft", 50, 50, 50, 0}, {"bottomright", 50, 50, 50, 50},
};
static_assert(std::size(kMmsRegionDefs) == 9);

// Where each visual medium of a slide stands, by layout code; null where
// the layout has no place for it.
struct MmsLayoutRow {
  const char *text, *img1, *img2, *video;
};
inline constexpr MmsLayoutRow kMmsLayouts[] = {
    /* 0 */ {nullptr, nullptr, nullptr, nullptr},
    /* 1 */ {"full", nullptr, nullptr, nullptr},
    /* 2 */ {nullptr, "full", nullptr, nullptr},
    /* 3 */ {nullptr, nullptr, nullptr, "full"},
    /* 4 */ {"bottom", "top", nullptr, nullptr},
    /* 5 */ {"top", "bottom", nullptr, nullptr},
    /* 6 */ {"left", "right", nullptr, nullptr},
    /* 7 */ {"right", "left", nullptr, nullptr},
    /* 8 */ {"bottom", nullptr, nullptr, "top"},
    /* 9 */ {"top", nullptr, nullptr, "bottom"},
    /* A */ {"left", nullptr, nullptr, "right"},
    /* B */ {"right", nullptr, nullptr, "left"},
    /* C */ {nullptr, "left", "right", nullptr},
    /* D */ {nullptr, "top", "bottom", nullptr},
    /* E */ {"bottom", "topleft", "topright", nullptr},
    /* F */ {"top", "bottomleft", "bottomright", nullptr},
};
static_assert(std::size(kMmsLayouts) == 16);

// What the encoder writes for a file extension: the first row that fits.
// A row with a code writes that one byte, a row with text the text and 0x00.
struct MmsExtOut {
  const char *ext;
  uint8_t code;
  const char *text;
};
inline constexpr MmsExtOut kMmsExtOut[] = {
    {"", 0, "type/unknow"},          {"smil", 0, "application/smil"},
    {"pdf", 0, "application/pdf"},   {"doc", 0, "application/msword"},
    {"docx", 0, "application/msword"}, {"vnt", 0, "text/x-vNote"},
    {"vts", 0, "text/x-vtodo"},      {"txt", 0x83, nullptr},
    {"gif", 0x9D, nullptr},          {"jpg", 0x9E, nullptr},
    {"jpeg", 0x9E, nullptr},         {"tif", 0x9F, nullptr},
    {"tiff", 0x9F, nullptr},         {"png", 0xA0, nullptr},
    {"wbmp", 0xA1, nullptr},         {"vcf", 0x87, nullptr},
    {"vcs", 0x86, nullptr},          {"ogg", 0, "application/ogg"},
};

// ---- Lookups ---------------------------------------------------------------

// 0, or -25 when b is no well-known code (out is then left as it was).
inline int32_t mms_type_of_code(KvoStr *out, uint8_t b) {
  const uint32_t row = b & 0x7Fu;
  if ((b & 0x80) == 0 || row >= std::size(kMmsWellKnownTypes)) return -25;
  KvoStr_setStr(out, kMmsWellKnownTypes[row].type);
  return 0;
}

// The text of out, or null when no row has the type (out left as it was).
inline const char *mms_ext_of_type(KvoStr *out, const char *type) {
  if (type == nullptr) {
    kvo_assert__("ct", __FILE__, __LINE__);
    return nullptr;
  }
  for (const MmsTypeExt &row : kMmsTypeExts) {
    if (kvo_stricmp(row.type, type) == 0) return KvoStr_buf(KvoStr_setStr(out, row.ext));
  }
  return nullptr;
}

inline const char *mms_ext_of_code(KvoStr *out, uint8_t b) {
  const uint32_t row = b & 0x7Fu;
  if ((b & 0x80) == 0 || row >= std::size(kMmsWellKnownTypes)) return nullptr;
  return mms_ext_of_type(out, kMmsWellKnownTypes[row].type);
}

inline int32_t mms_word_in(std::span<const char *const> list, const char *word) {
  for (const char *entry : list)
    if (kvo_stricmp(entry, word) == 0) return 1;
  return 0;
}

// The region of one medium of a slide; class is "text", "img" or "video",
// second is 1 for the second image. A layout with no place for the class
// (text in layout 2, anything in layout 0, a code outside 0-15) gives
// "full": the presentation then names only declared regions and still
// shows every medium.
inline const char *mms_region_of(int32_t layout, const char *cls, int32_t second) {
  constexpr const char *kFull = "full";
  if (layout < 0 || layout >= static_cast<int32_t>(std::size(kMmsLayouts)) || cls == nullptr)
    return kFull;
  const MmsLayoutRow &row = kMmsLayouts[layout];
  const char *region = nullptr;
  if (kvo_stricmp(cls, "text") == 0)
    region = row.text;
  else if (kvo_stricmp(cls, "video") == 0)
    region = row.video;
  else if (kvo_stricmp(cls, "img") == 0)
    region = second != 0 && layout >= 12 ? row.img2 : row.img1;
  return region != nullptr ? region : kFull;
}

// Writes the content type a file name calls for: a code byte, or a text
// and its 0x00. The extension goes out as it stands in the name.
inline int32_t mms_enc_type(IStrm *strm, const char *name) {
  const char *dot = name != nullptr ? std::strrchr(name, '.') : nullptr;
  const char *ext = dot != nullptr ? dot + 1 : "";
  auto text = [strm](const char *prefix, const char *rest) {
    IStrm_puts(strm, prefix, -1);
    IStrm_puts(strm, rest, -1);
    IStrm_putc(strm, 0);
    return 0;
  };
  for (const MmsExtOut &row : kMmsExtOut) {
    if (kvo_stricmp(row.ext, ext) != 0) continue;
    if (row.text == nullptr) {
      IStrm_putc(strm, row.code);
      return 0;
    }
    return text(row.text, "");
  }
  if (mms_word_in(kMmsAudioExts, ext)) return text("audio/", ext);
  if (mms_word_in(kMmsVideoExts, ext)) return text("video/", ext);
  if (mms_word_in(kMmsImageExts, ext)) return text("image/", ext);
  return text("type/unknow", "");
}

}  // namespace ostrel::detail

#endif  // OSTREL_DETAIL_MMSTABLES_H
