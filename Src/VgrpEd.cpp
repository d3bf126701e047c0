// Group cards: the vCard frame with group properties inside.
#include <cstdlib>

#include "detail/Object.h"
#include "detail/TextFrame.h"
#include "detail/Trace.h"
#include "ostrel/GrpItem.h"
#include "tarnex/scratch.hpp"

namespace {

using ostrel::detail::FrameProp;
using ostrel::detail::FrameRow;

struct Group {
  GrpItem *item;
  uint32_t *ver;
};

// The value read whole and raw (no unescaping, no split on ";").
void readRaw(IStrm *val, KvoStr *out) { VpiVal_getCstr(val, out, 0, nullptr); }

constexpr FrameRow<Group> kProps[] = {
    {"VERSION", ostrel::detail::readVersion<Group>},
    {"X-GRPV",
     [](Group &g, const FrameProp &p) { VpiVal_getCwcs(p.val, &g.item->name, 1, nullptr); }},
    {"X-GRPI",
     [](Group &g, const FrameProp &p) { VpiVal_getCstr(p.val, &g.item->id, 1, nullptr); }},
    // The same field: when both stand in a card, the later line wins.
    {"X-IRMC-LUID",
     [](Group &g, const FrameProp &p) { VpiVal_getCstr(p.val, &g.item->id, 1, nullptr); }},
    {"X-ACC-NAME",
     [](Group &g, const FrameProp &p) { VpiVal_getCstr(p.val, &g.item->accName, 1, nullptr); }},
    {"X-ACC-TYPE",
     [](Group &g, const FrameProp &p) { VpiVal_getCstr(p.val, &g.item->accType, 1, nullptr); }},
    {"X-ATTRS",
     [](Group &g, const FrameProp &p) {
       tarnex::ScratchStr<32> text;
       readRaw(p.val, text);
       g.item->attr = static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
     }},
};

}  // namespace

extern "C" {

OSTREL_API int32_t Vgrp_dec(IStrm *vcard, GrpItem *item, uint32_t *ver) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vcard && item, "vcard && item")) return 0;
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  GrpItem_clear(item);
  Group group{item, ver};
  const int32_t rc = ostrel::detail::decodeFrame(vcard, "VCARD", kProps, group);
  if (rc < 1) GrpItem_clear(item);
  return rc;
}

OSTREL_API int32_t Vgrp_encx(IStrm *vcard, const GrpItem *item, uint32_t ver,
                             const VpiEncOpts *opts) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(vcard && item, "vcard && item")) return 0;
  OSTREL_CHECK(item, GRP_ITEM_TAG);
  char version[16];
  ver_to_ver_str(ver != 0 ? ver : 0x201, version, sizeof version, 0);
  // Escaped text is written up to its first 0 byte, so that is what decides
  // whether a line is written: a text of NUL bytes read from a card must not
  // come back as an empty line that the next reading drops.
  auto putIfSet = [&](const char *name, const KvoStr *text) {
    if (*KvoStr_buf(text) != '\0') VpiEnc_putStr(vcard, name, nullptr, KvoStr_buf(text), -1, opts);
  };
  VpiEnc_putStr(vcard, "BEGIN", nullptr, "VCARD", -1, opts);
  VpiEnc_putStr(vcard, "VERSION", nullptr, version, -1, opts);
  putIfSet("X-GRPI", &item->id);
  VpiEnc_putStrW(vcard, "X-GRPV", nullptr, KvoWcs_buf(&item->name), KvoWcs_len(&item->name), opts);
  putIfSet("X-ACC-NAME", &item->accName);
  putIfSet("X-ACC-TYPE", &item->accType);
  VpiEnc_putStr(vcard, "END", nullptr, "VCARD", -1, nullptr);
  return 0;
}

OSTREL_API int32_t Vgrp_enc(IStrm *vcard, const GrpItem *item, uint32_t ver) {
  return Vgrp_encx(vcard, item, ver, nullptr);
}

}  // extern "C"
