// The body of a binary multimedia message: every part becomes a medium,
// except the SMIL part, whose slides the presentation reader makes. Every
// length in a body comes from the network: a count ends where the bytes
// end, a medium that claims more than the message holds arrives empty, and
// no buffer is sized by a claim.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "detail/Mms.h"
#include "detail/MmsRead.h"
#include "detail/MmsSmil.h"
#include "detail/MmsTables.h"
#include "detail/Object.h"
#include "detail/Trace.h"
#include "ostrel/MmsEd.h"

namespace {

using namespace ostrel::detail;

// Names invented for parts that have none. Process-wide and never reset,
// so two messages decoded one after the other never share a name.
std::atomic<int32_t> partCounter{0};

constexpr int32_t kWordRoom = 1024;  // an encoded word decodes into this much

// Text up to a 0x00 or the end of the stream, into str (replaced).
void readText(MmsIn &in, KvoStr *str) {
  KvoStr_clear(str);
  char run[128];
  size_t n = 0;
  for (int32_t b = in.byte(); b > 0; b = in.byte()) {
    run[n++] = static_cast<char>(b);
    if (n == sizeof run) {
      KvoStr_appdStrx(str, run, static_cast<int32_t>(n));
      n = 0;
    }
  }
  KvoStr_appdStrx(str, run, static_cast<int32_t>(n));
}

// A Content-ID without its "<", ">" and double quotes.
void setId(KvoStr *id, const KvoStr *value) {
  KvoStr_clear(id);
  for (const char *p = KvoStr_buf(value); *p != '\0'; ++p)
    if (*p != '<' && *p != '>' && *p != '"') KvoStr_appdChar(id, *p);
}

// A name in the style of an RFC 2047 encoded word, found by its "?" alone:
// "=?charset?encoding?text?=". A name with a "?" that is no such word
// (fewer than four) gives the empty name.
void mms_dec_word(KvoStr *name, const char *text) {
  KvoStr_clear(name);
  const char *q1 = std::strchr(text, '?');
  if (q1 == nullptr) {
    KvoStr_setStr(name, text);
    return;
  }
  const char *q2 = std::strchr(q1 + 1, '?');
  const char *q3 = q2 != nullptr ? std::strchr(q2 + 1, '?') : nullptr;
  const char *q4 = q3 != nullptr ? std::strchr(q3 + 1, '?') : nullptr;
  if (q4 == nullptr) return;
  const auto word = [](const char *from, const char *to, const char *expect) {
    return static_cast<size_t>(to - from) == std::strlen(expect) &&
           kvo_stristr(from, expect) == from;
  };
  tarnex::ScratchStr<256> data;
  KvoStr_appdStrx(data, q3 + 1, static_cast<int32_t>(q4 - q3 - 1));
  uint8_t bytes[kWordRoom + 1];
  int32_t n;
  if (word(q2 + 1, q3, "Q"))
    n = qp_dec_str_to_buf(data.c_str(), bytes, kWordRoom);
  else if (word(q2 + 1, q3, "B"))
    n = b64_dec_str_to_buf(data.c_str(), bytes, kWordRoom);
  else {
    n = std::min(data.len(), kWordRoom);
    std::memcpy(bytes, data.c_str(), static_cast<size_t>(n));
  }
  bytes[n] = 0;
  const char *decoded = reinterpret_cast<const char *>(bytes);
  if (word(q1 + 1, q2, "UTF-8")) {
    KvoStr_setStr(name, decoded);
    return;
  }
  char utf8[kWordRoom];
  ansi_str_to_utf8_str(decoded, utf8, kWordRoom);
  KvoStr_setStr(name, utf8);
}

// Names written without an extension, completed from the type of their
// part: slides may name a medium either way, and are fixed after the last
// part, so the order of SMIL and media in a message does not matter.
class NameMap {
 public:
  NameMap() { KvoList_init(&rows_, 0); }
  ~NameMap() { KvoList_delAll(&rows_, deleteRow); }
  NameMap(const NameMap &) = delete;
  NameMap &operator=(const NameMap &) = delete;

  void add(const char *key, const char *full) {
    auto *row = static_cast<Row *>(kvo_malloc__(sizeof(Row), __FILE__, __LINE__));
    std::memset(static_cast<void *>(row), 0, sizeof *row);
    KvoStr_setStr(KvoStr_new(&row->key), key);
    KvoStr_setStr(KvoStr_new(&row->full), full);
    KvoList_addTail__(&rows_, &row->link);
  }

  // Rows of one key replace, in the order they were made, the members of
  // a slide that name it, audio first, then text, video, img1, img2. The
  // rows are sorted by key once, so each name costs a search, not a walk
  // of the whole map.
  void fix(MmsItem *item) {
    const auto count = static_cast<size_t>(KvoList_count(&rows_));
    if (count == 0) return;
    auto **index = static_cast<Row **>(kvo_malloc__(count * sizeof(Row *), __FILE__, __LINE__));
    size_t n = 0;
    for (KvoListNode *p = rows_.head; p != nullptr && n < count; p = p->next)
      index[n++] = reinterpret_cast<Row *>(p);
    const auto less = [](const Row *a, const Row *b) {
      return kvo_stricmp(KvoStr_buf(&a->key), KvoStr_buf(&b->key)) < 0;
    };
    std::stable_sort(index, index + n, less);
    MmsSlideEnum walk;
    MmsSlideEnum_new(&walk, &item->slides);
    while (MmsSlide *slide = MmsSlideEnum_next(&walk)) fixSlide(slide, index, n);
    MmsSlideEnum_delete(&walk);
    kvo_free__(index, __FILE__, __LINE__);
  }

 private:
  struct Row {
    KvoListNode link;  // first, as KvoList requires
    KvoStr key;
    KvoStr full;
  };

  static void deleteRow(KvoListNode *node) {
    Row *row = reinterpret_cast<Row *>(node);
    KvoStr_delete(&row->key);
    KvoStr_delete(&row->full);
    kvo_free__(row, __FILE__, __LINE__);
  }

  static void fixSlide(MmsSlide *slide, Row **index, size_t n) {
    KvoStr *members[] = {&slide->audio, &slide->text, &slide->video, &slide->img1, &slide->img2};
    const Row *replace[std::size(members)] = {};
    for (size_t i = 0; i < std::size(members); ++i) {
      const char *name = KvoStr_buf(members[i]);
      if (*name == '\0') continue;  // an empty member names no medium
      const auto [lo, hi] = std::equal_range(
          index, index + n, name, Less{});
      size_t rank = 0;  // earlier members of this slide with the same name
      for (size_t j = 0; j < i; ++j)
        if (kvo_stricmp(KvoStr_buf(members[j]), name) == 0) ++rank;
      if (rank < static_cast<size_t>(hi - lo)) replace[i] = lo[rank];
    }
    for (size_t i = 0; i < std::size(members); ++i)
      if (replace[i] != nullptr) KvoStr_setCstr(members[i], &replace[i]->full);
  }

  struct Less {
    bool operator()(const Row *row, const char *name) const {
      return kvo_stricmp(KvoStr_buf(&row->key), name) < 0;
    }
    bool operator()(const char *name, const Row *row) const {
      return kvo_stricmp(name, KvoStr_buf(&row->key)) < 0;
    }
  };

  KvoList rows_;
};

struct PartNames {
  tarnex::ScratchStr<64> type, name, id, ext;
};

// Content type and part headers, headersLen bytes from where they start.
// The stream is left at the part's data; a header cut by the end of the
// stream ends the headers with what was read.
int32_t mms_dec_part_hdr(MmsIn &in, uint32_t headersLen, PartNames &part) {
  const int32_t first = in.byte();
  if (first < 0) return first;
  in.unget();
  const int64_t end = in.pos() + headersLen;
  if (first < 0x20) mms_dec_len(in);  // the general form: its length is not needed
  const int32_t c = in.byte();
  if (c == 0) {
    KvoStr_setStr(part.type, "application/octet-stream");
  } else if (c > 0 && c < 0x80) {
    in.unget();
    readText(in, part.type);
    mms_ext_of_type(part.ext, part.type.c_str());
  } else if (c >= 0x80) {
    mms_type_of_code(part.type, static_cast<uint8_t>(c));
    mms_ext_of_code(part.ext, static_cast<uint8_t>(c));
  }
  tarnex::ScratchStr<128> text, value;
  while (!in.eos() && in.pos() < end) {
    const int32_t h = in.byte();
    if (h < 0) break;
    if (h < 0x80) {
      in.unget();
      readText(in, text);
      readText(in, value);
      if (kvo_stristr(text.c_str(), "Content-ID") != nullptr) setId(part.id, value);
      continue;
    }
    switch (h) {
      case 0x81:  // charset parameter
        in.byte();
        break;
      case 0x85:  // Name, Filename, Content-Location: the last one wins
      case 0x86:
      case 0x8E:
        readText(in, text);
        mms_dec_word(part.name, text.c_str());
        break;
      case 0x89:  // the rest (Content-Disposition and its like) is not wanted
      case 0x8A:
      case 0x8B:
      case 0x8F:
      case 0x90:
      case 0xAE:
        in.skip(static_cast<uint64_t>(end - in.pos()));
        break;
      case 0x92:
        if (const int32_t n = in.byte(); n >= 0) in.skip(static_cast<uint64_t>(n));
        break;
      case 0xB0:
        readText(in, text);
        break;
      case 0xC0:  // Content-ID
        readText(in, text);
        setId(part.id, text);
        break;
      default:
        break;
    }
  }
  return 0;
}

// The medium's name: its own, cut to what follows a backslash and given
// the extension of its type when it has none; else its Content-ID or a
// number, and the extension.
void nameMedium(PartNames &part, NameMap &map) {
  if (part.name.len() == 0) {
    if (part.id.len() == 0) {
      char number[16];
      const int32_t next = partCounter.fetch_add(1, std::memory_order_relaxed) + 1;
      std::snprintf(number, sizeof number, "%d", next);
      KvoStr_setStr(part.id, number);
    }
    KvoStr_setCstr(part.name, part.id);
    KvoStr_appdChar(part.name, '.');
    KvoStr_appdStr(part.name, part.ext.c_str());
    return;
  }
  if (const char *slash = std::strrchr(part.name.c_str(), '\\')) {
    tarnex::ScratchStr<64> base;
    KvoStr_setStr(base, slash + 1);
    KvoStr_setCstr(part.name, base);
  }
  if (std::strchr(part.name.c_str(), '.') != nullptr) return;
  tarnex::ScratchStr<64> full;
  KvoStr_setCstr(full, part.name);
  KvoStr_appdChar(full, '.');
  KvoStr_appdStr(full, part.ext.c_str());
  map.add(part.name.c_str(), full.c_str());
  KvoStr_setCstr(part.name, full);
}

int32_t mms_dec_part(MmsIn &in, MmsItem *item, NameMap &map) {
  const uint32_t headersLen = mms_dec_uintvar(in);
  const uint32_t dataLen = mms_dec_uintvar(in);
  PartNames part;
  const int32_t rc = mms_dec_part_hdr(in, headersLen, part);
  if (rc < 0) return rc;
  nameMedium(part, map);
  if (kvo_stricmp(part.type.c_str(), "application/smil") == 0) {
    // A presentation with no room for its claimed size is not read.
    if (dataLen > static_cast<uint64_t>(in.left())) return 0;
    tarnex::ScratchStr<256> spill;
    std::string_view smil;
    in.take(dataLen, &smil, spill);
    mms_dec_smil(item, smil);
    return 0;
  }
  MmsMedia *media = MmsMedia_new();
  KvoStr_setCstr(&media->name, part.name);
  KvoStr_setCstr(&media->type, part.type);
  in.copyTo(media->strm, dataLen);  // no room: the medium stays empty
  IStrm_rewind(media->strm);
  MmsItem_adoptMedia(item, media);
  return 0;
}

}  // namespace

extern "C" {

OSTREL_API int32_t mms_dec(IStrm *mms, MmsItem *item) {
  OSTREL_FUNC_TRACE();
  if (!OSTREL_REQUIRE(mms && item, "mms && item")) return 0;
  NameMap map;
  const int32_t rc = mms_dec_hdr(mms, &item->hdr);
  if (rc < 0) return rc;
  MmsIn in(mms);
  const int64_t count = mms_dec_len(in);
  if (count < 0) return OSTREL_PARTS;
  for (int64_t i = 0; i < count; ++i) {
    if (in.left() == 0) break;  // a count larger than the parts present
    const int32_t part = mms_dec_part(in, item, map);
    if (part < 0) return part;
  }
  map.fix(item);
  return 0;
}

}  // extern "C"
