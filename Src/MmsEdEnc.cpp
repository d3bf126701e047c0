// The encoder of a send request: a fixed header, a SMIL presentation made
// from the slides as the first part, then one part for each medium. Names,
// addresses and subjects go out as their bytes; a text is taken up to its
// first 0, since a decoded UTF-8 subject keeps its closing 0 inside its
// length and would otherwise grow by one on every pass.
#include <cstring>

#include "detail/Mms.h"
#include "detail/MmsSmil.h"
#include "detail/MmsTables.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/MmsEd.h"
#include "tarnex/scratch.hpp"

namespace {

using namespace ostrel::detail;

constexpr uint8_t kUtf8 = 0xEA;   // charset 106 as a short integer
constexpr uint8_t kQuote = 0x7F;  // the quote of the Text-string form
constexpr const char *kSmilName = "0000.smil";

void put(IStrm *s, uint8_t b) { IStrm_putc(s, b); }
void putText(IStrm *s, const char *text) {
  IStrm_puts(s, text, -1);
  put(s, 0);
}

void mms_enc_uintvar(IStrm *s, uint32_t v) {
  uint8_t groups[5];
  int32_t n = 0;
  do {
    groups[n++] = static_cast<uint8_t>(v & 0x7F);
    v >>= 7;
  } while (v != 0);
  while (n-- > 1) put(s, groups[n] | 0x80);
  put(s, groups[0]);
}

int32_t uintvarSize(uint32_t v) {
  int32_t n = 1;
  while (v >>= 7) ++n;
  return n;
}

void mms_enc_len(IStrm *s, uint32_t v) {
  if (v < 31) {
    put(s, static_cast<uint8_t>(v));
    return;
  }
  put(s, 0x1F);
  mms_enc_uintvar(s, v);
}

int32_t lenSize(uint32_t v) { return v < 31 ? 1 : 1 + uintvarSize(v); }

void mms_enc_long(IStrm *s, uint32_t v) {
  int32_t n = 4;
  while (n > 1 && (v >> (8 * (n - 1))) == 0) --n;
  put(s, static_cast<uint8_t>(n));
  while (n-- > 0) put(s, static_cast<uint8_t>(v >> (8 * n)));
}

void mms_enc_text(IStrm *s, const char *text) {
  const auto n = static_cast<uint32_t>(std::strlen(text));
  if (kvo_str_all_ascii(text, -1)) {
    putText(s, text);
    return;
  }
  mms_enc_len(s, n + 3);
  put(s, kUtf8);
  put(s, kQuote);
  putText(s, text);
}

enum class AddrKind { kPhone = 1, kMail = 2, kOther = 5 };

AddrKind mms_addr_kind(const char *addr) {
  if (std::strchr(addr, '@') != nullptr) return AddrKind::kMail;
  if (*addr != '+' && !(*addr >= '0' && *addr <= '9')) return AddrKind::kOther;
  for (const char *p = addr + 1; *p != '\0'; ++p)
    if (!(*p >= '0' && *p <= '9')) return AddrKind::kOther;
  return AddrKind::kPhone;
}

// One field for each address the encoder can classify; any other is left
// out, and decided before its code byte is written, so the stream never
// has to step back (an append-mode file could not).
void mms_enc_addrs(IStrm *s, uint8_t code, MmsAddrEnum *addrs) {
  if (!OSTREL_REQUIRE(s && addrs, "pdu && addrEnum")) return;
  tarnex::ScratchStr<128> addr;
  while (MmsAddrEnum_next(addrs, addr)) {
    const AddrKind kind = mms_addr_kind(addr.c_str());
    if (kind == AddrKind::kOther) continue;
    put(s, code);
    IStrm_puts(s, addr.c_str(), -1);
    if (kind == AddrKind::kPhone) IStrm_puts(s, "/TYPE=PLMN", -1);
    put(s, 0);
  }
}

// Walks one address list of the header with an enumerator in local storage.
template <class Fn>
void eachAddrList(MmsHdr *hdr, Fn fn) {
  const struct {
    uint8_t code;
    KvoStr *list;
  } lists[] = {{0x97, &hdr->tos}, {0x82, &hdr->ccs}, {0x81, &hdr->bccs}};
  for (const auto &l : lists) {
    MmsAddrEnum walk;
    MmsAddrEnum_new(&walk, l.list);
    fn(l.code, &walk);
    MmsAddrEnum_delete(&walk);
  }
}

void mms_enc_hdr(IStrm *s, MmsItem *item) {
  MmsHdr *hdr = &item->hdr;
  put(s, 0x8C), put(s, 0x80);  // m-send-req
  put(s, 0x98), putText(s, "0000");
  put(s, 0x8D), put(s, 0x90);  // version 1.0
  put(s, 0x89), put(s, 0x01), put(s, 0x81);  // From: insert address
  // To, the subject, Cc, Bcc: in this order on the wire.
  eachAddrList(hdr, [&](uint8_t code, MmsAddrEnum *walk) {
    mms_enc_addrs(s, code, walk);
    if (code == 0x97 && KvoStr_buf(&hdr->title)[0] != '\0') {
      put(s, 0x96);
      mms_enc_text(s, KvoStr_buf(&hdr->title));
    }
  });
  put(s, 0x85);
  mms_enc_long(s, kvo_time32());
  put(s, 0x84), put(s, 0x1B), put(s, 0xB3);  // multipart.related
  put(s, 0x89), putText(s, "application/smil");
  put(s, 0x8A), putText(s, "<0000>");
  mms_enc_len(s, static_cast<uint32_t>(KvoList_count(&item->medias)) + 1);
}

void mms_enc_part_hdr(IStrm *s, const char *name, int64_t dataLen, bool isSmil) {
  tarnex::StackMemStrm<512> h;
  mms_enc_type(h, name);
  put(h, 0x86), putText(h, name);
  if (MemStrm_data(h)[0] == 0x83) put(h, 0x81), put(h, kUtf8);  // text/plain in UTF-8
  const auto contentLen = static_cast<uint32_t>(IStrm_size(h));
  put(h, 0x8E), putText(h, name);
  if (isSmil) put(h, 0xC0), putText(h, "\"<0000>");
  mms_enc_uintvar(s, static_cast<uint32_t>(IStrm_size(h)) + static_cast<uint32_t>(lenSize(contentLen)));
  mms_enc_uintvar(s, static_cast<uint32_t>(dataLen));
  mms_enc_len(s, contentLen);
  IStrm_appd(s, h);
}

void mms_xml_escape(KvoStr *out, const char *text) {
  KvoStr_clear(out);
  for (const char *p = text; *p != '\0'; ++p) {
    switch (*p) {
      case '<': KvoStr_appdStr(out, "&lt;"); break;
      case '>': KvoStr_appdStr(out, "&gt;"); break;
      case '&': KvoStr_appdStr(out, "&amp;"); break;
      case '\'': KvoStr_appdStr(out, "&apos;"); break;
      case '"': KvoStr_appdStr(out, "&quot;"); break;
      default: KvoStr_appdChar(out, *p);
    }
  }
}

void addItem(MmsSmilPar &par, const char *cls, const KvoStr &name, const char *region) {
  if (KvoStr_buf(&name)[0] == '\0') return;
  // A slide's fifth name has no slot: it stays out of the presentation,
  // and its medium still goes out as a part.
  if (par.itemCount >= kMmsSmilItems) return;
  MmsSmilItem &it = par.items[par.itemCount++];
  kvo_strxfrm(it.cls, cls, sizeof it.cls);
  kvo_strxfrm(it.src, KvoStr_buf(&name), sizeof it.src);
  if (region != nullptr) kvo_strxfrm(it.region, region, sizeof it.region);
}

void mms_smil_from_item(MmsSmil &smil, MmsItem *item) {
  std::memset(static_cast<void *>(&smil), 0, sizeof smil);
  smil.rootWidth = 128;
  smil.rootHeight = 112;
  for (const MmsRegionDef &def : kMmsRegionDefs) {
    MmsSmilRegion &r = smil.regions[smil.regionCount++];
    kvo_strxfrm(r.id, def.id, sizeof r.id);
    r.width = def.width, r.height = def.height, r.top = def.top, r.left = def.left;
  }
  MmsSlideEnum walk;
  MmsSlideEnum_new(&walk, &item->slides);
  while (const MmsSlide *slide = MmsSlideEnum_next(&walk)) {
    if (smil.parCount >= kMmsSmilPars) break;  // media of later slides still go out
    MmsSmilPar &par = smil.pars[smil.parCount++];
    par.dur = slide->dur;
    const int32_t l = slide->layout;
    addItem(par, "text", slide->text, mms_region_of(l, "text", 0));
    addItem(par, "audio", slide->audio, nullptr);
    addItem(par, "video", slide->video, mms_region_of(l, "video", 0));
    addItem(par, "img", slide->img1, mms_region_of(l, "img", 0));
    addItem(par, "img", slide->img2, mms_region_of(l, "img", 1));
  }
  MmsSlideEnum_delete(&walk);
}

void mms_smil_write(const MmsSmil &smil, IStrm *s) {
  IStrm_puts(s, "<smil>\r\n<head>\r\n<layout>\r\n", -1);
  IStrm_puts(s, "<root-layout width=\"128px\" height=\"112px\"/>\r\n", -1);
  for (uint32_t i = 0; i < smil.regionCount; ++i) {
    const MmsSmilRegion &r = smil.regions[i];
    IStrm_printf(s, "<region id=\"%s\" width=\"%d%%\" height=\"%d%%\" left=\"%d%%\" top=\"%d%%\"/>\r\n",
                 r.id, static_cast<int>(r.width), static_cast<int>(r.height),
                 static_cast<int>(r.left), static_cast<int>(r.top));
  }
  IStrm_puts(s, "</layout>\r\n</head>\r\n<body>\r\n", -1);
  tarnex::ScratchStr<256> src;
  for (uint32_t p = 0; p < smil.parCount; ++p) {
    const MmsSmilPar &par = smil.pars[p];
    IStrm_printf(s, "<par dur=\"%dms\">\r\n", static_cast<int>(par.dur));
    for (uint32_t i = 0; i < par.itemCount; ++i) {
      const MmsSmilItem &it = par.items[i];
      mms_xml_escape(src, it.src);
      const bool placed = kvo_stricmp(it.cls, "text") == 0 || kvo_stricmp(it.cls, "img") == 0 ||
                          kvo_stricmp(it.cls, "video") == 0;
      if (placed)
        IStrm_printf(s, "<%s src=\"%s\" region=\"%s\"/>\r\n", it.cls, src.c_str(), it.region);
      else
        IStrm_printf(s, "<%s src=\"%s\"/>\r\n", it.cls, src.c_str());
    }
    IStrm_puts(s, "</par>\r\n", -1);
  }
  IStrm_puts(s, "</body>\r\n</smil>\r\n", -1);
}

uint32_t nameLen(const KvoStr &s) { return static_cast<uint32_t>(std::strlen(KvoStr_buf(&s))); }

}  // namespace

extern "C" {

OSTREL_API int32_t mms_enc(IStrm *mms, MmsItem *item) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(mms && item, "mms && item")) return 0;
  mms_enc_hdr(mms, item);
  {
    tarnex::ScratchMemStrm text(4096);
    {
      SmilBlock smil;
      mms_smil_from_item(*smil, item);
      mms_smil_write(*smil, text);
    }
    mms_enc_part_hdr(mms, kSmilName, IStrm_size(text), true);
    IStrm_appd(mms, text);
  }
  MmsMediaEnum walk;
  MmsMediaEnum_new(&walk, &item->medias);
  while (MmsMedia *media = MmsMediaEnum_next(&walk)) {
    mms_enc_part_hdr(mms, KvoStr_buf(&media->name), IStrm_size(media->strm), false);
    IStrm_appd(mms, media->strm);
  }
  MmsMediaEnum_delete(&walk);
  return 0;
}

OSTREL_API uint32_t mms_approx_size(MmsItem *item) {
  if (!OSTREL_REQUIRE(item, "item")) return 0;
  uint32_t size = 13;
  tarnex::ScratchStr<128> addr;
  eachAddrList(&item->hdr, [&](uint8_t, MmsAddrEnum *walk) {
    while (MmsAddrEnum_next(walk, addr)) size += static_cast<uint32_t>(addr.len()) + 2;
  });
  size += 5 + 36 + nameLen(item->hdr.title);
  MmsMediaEnum media;
  MmsMediaEnum_new(&media, &item->medias);
  while (const MmsMedia *m = MmsMediaEnum_next(&media))
    size += static_cast<uint32_t>(IStrm_size(m->strm)) + 24 + 2 * nameLen(m->name);
  MmsMediaEnum_delete(&media);
  size += 696;
  MmsSlideEnum slides;
  MmsSlideEnum_new(&slides, &item->slides);
  while (const MmsSlide *s = MmsSlideEnum_next(&slides)) {
    size += 25;
    for (const KvoStr *n : {&s->img1, &s->img2, &s->text, &s->audio, &s->video})
      if (nameLen(*n) != 0) size += nameLen(*n) + 30;
  }
  MmsSlideEnum_delete(&slides);
  return size;
}

}  // extern "C"
