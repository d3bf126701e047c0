// Notes and bookmarks: the records, their text written byte for byte, the
// frame rules as the decoders see them, round trips and the real notes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "ostrel/ostrel.h"
#include "FullStrm.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;
using tarnex::ScratchStrStrm;

std::string contents(IStrm *s) {
  const uint8_t *p = MemStrm_data(s);
  return p == nullptr ? "" : std::string(reinterpret_cast<const char *>(p), IStrm_size(s));
}

std::string wide(const KvoWcs *w) {
  tarnex::ScratchStr<64> s;
  KvoStr_setCwcs(s, w);
  return std::string(s.view());
}

// Owners, so a failed assertion leaks nothing.
struct Note {
  Note() { NoteItem_new(&item); }
  ~Note() { NoteItem_delete(&item); }
  NoteItem item;
};
struct Bkm {
  Bkm() { BkmItem_new(&item); }
  ~Bkm() { BkmItem_delete(&item); }
  BkmItem item;
};

TEST(Vnote, WritesItsRowsInOrder) {
  Note n;
  KvoWcs_setStr(&n.item.summ, "Shopping");
  KvoWcs_setStr(&n.item.body, "Milk; bread");
  KvoStr_setStr(&n.item.cate, "Home");
  ScratchMemStrm out(0);
  ASSERT_EQ(Vnote_enc(out, &n.item, 0), 0);
  EXPECT_EQ(contents(out),
            "BEGIN:VNOTE\r\nVERSION:1.1\r\nSUMMARY:Shopping\r\nBODY:Milk\\; bread\r\n"
            "CATEGORIES:Home\r\nEND:VNOTE\r\n");
  // The local id stands behind CLASS and ahead of the dates.
  KvoStr_setStr(&n.item.cls, "PUBLIC");
  iso_dt_dec("20050405", &n.item.created);
  IStrm_clear(out);
  ASSERT_EQ(Vnote_encx(out, &n.item, 0x100, "7", nullptr), 0);
  EXPECT_NE(contents(out).find("VERSION:1.0\r\n"), std::string::npos);
  EXPECT_NE(contents(out).find("CLASS:PUBLIC\r\nX-IRMC-LUID:7\r\nDCREATED:20050405\r\nEND"),
            std::string::npos);
  // An empty note is three lines.
  Note empty;
  IStrm_clear(out);
  NoteItem_dump(&empty.item, out, 0);
  EXPECT_EQ(contents(out), "BEGIN:VNOTE\r\nVERSION:1.1\r\nEND:VNOTE\r\n");
}

TEST(Vbkm, WritesItsRowsInOrder) {
  Bkm b;
  KvoWcs_setStr(&b.item.title, "News");
  KvoStr_setStr(&b.item.url, "page;1");
  ScratchMemStrm out(0);
  ASSERT_EQ(Vbkm_encx(out, &b.item, 0, "9", nullptr), 0);
  EXPECT_EQ(contents(out), "BEGIN:VBKM\r\nVERSION:1.1\r\nX-IRMC-LUID:9\r\nTITLE:News\r\n"
                           "URL:page\\;1\r\nEND:VBKM\r\n");
  KvoWcs_setStr(&b.item.title, "\xD0\x9D\xD0\xBE\xD0\xB2\xD0\xBE\xD1\x81\xD1\x82\xD0\xB8");
  IStrm_clear(out);
  BkmItem_dump(&b.item, out, 0);
  EXPECT_NE(contents(out).find("TITLE;CHARSET=utf-8"), std::string::npos) << contents(out);
}

struct FrameRow {
  const char *text;
  std::vector<int32_t> results;  // of successive calls
  const char *firstBody;         // of the first note read
};

TEST(Vnote, FrameRules) {
  const FrameRow rows[] = {
      {"SUMMARY:before\r\nBEGIN:VNOTE\r\nBODY:one;two\r\nEND:VNOTE\r\n", {1, 0}, "one"},
      {"BEGIN:VNOTE\r\nBODY:one\\;two\r\nEND:VCARD\r\nX-UNKNOWN:1\r\nend:vnote\r\n", {1, 0}, "one;two"},
      {"BEGIN:VNOTE\r\nBODY:a\r\nEND:VNOTE\r\nBEGIN:VNOTE\r\nBODY:b\r\nEND:VNOTE\r\n", {1, 1, 0}, "a"},
      {"BEGIN:VNOTE\r\nBODY:cut\r\n", {0}, ""},
      {"BEGIN:VNOTE;X\r\nBODY:a\r\nEND:VNOTE\r\n", {0}, ""},  // BEGIN's value is read whole
      {"BEGIN:VNOTE\r\nBODY\r\nEND:VNOTE\r\n", {-251}, ""},
  };
  for (const FrameRow &row : rows) {
    SCOPED_TRACE(row.text);
    ScratchStrStrm in(row.text);
    Note n;
    for (size_t i = 0; i < row.results.size(); ++i) {
      ASSERT_EQ(Vnote_dec(in, &n.item, nullptr), row.results[i]);
      if (i == 0) {
        EXPECT_EQ(wide(&n.item.body), row.firstBody);  // cleared below 1
      }
    }
  }
}

TEST(Vnote, RecordsSurviveTheirText) {
  Note n;
  n.item.auxWord0 = 5;
  n.item.auxWord2 = 7;
  KvoWcs_setStr(&n.item.summ, "Caf\xC3\xA9");
  KvoWcs_setStr(&n.item.body, "two\r\nlines; and a \\ backslash");
  KvoStr_setStr(&n.item.cate, "Birthday,Friends");
  KvoStr_setStr(&n.item.cls, "CONFIDENTIAL");
  iso_dt_dec("20050405T010101Z", &n.item.created);
  iso_dt_dec("20050406T010101+0130", &n.item.modified);
  NoteItem *copy = NoteItem_clone(&n.item);
  EXPECT_EQ(copy->auxWord2, 7);
  ScratchMemStrm text(0), again(0), trace1(0), trace2(0);
  ASSERT_EQ(Vnote_encx(text, copy, 0, "id-1", nullptr), 0);
  EXPECT_NE(contents(text).find("BODY;ENCODING=QUOTED-PRINTABLE"), std::string::npos);
  IStrm_rewind(text);
  Note back;
  tarnex::ScratchStr<16> luid;
  uint32_t ver = 0;
  ASSERT_EQ(Vnote_decx(text, &back.item, &ver, luid), 1);
  EXPECT_EQ(ver, 0x101u);
  EXPECT_STREQ(luid.c_str(), "id-1");
  EXPECT_EQ(back.item.auxWord0, 0);  // the text carries no aux words
  NoteItem_tracex(copy, trace1, 0);
  NoteItem_tracex(&back.item, trace2, 0);
  EXPECT_EQ(contents(trace1), contents(trace2));
  EXPECT_EQ(contents(trace1),
            "# NoteItem beg ......\nsumm = Caf\xC3\xA9\nbody = two\r\nlines; and a \\ backslash\n"
            "cate = Birthday,Friends\ncls = CONFIDENTIAL\ncreated = 20050405T010101Z\n"
            "modified = 20050406T010101+0130\n# NoteItem end !!!!!!\n");
  NoteItem_delete(copy);
}

TEST(Vbkm, RoundTripAndTraceModule) {
  Bkm b;
  KvoWcs_setStr(&b.item.title, "a;b");
  KvoStr_setStr(&b.item.url, "http://x/?a=1;b=2");
  iso_dt_dec("20260101T000000", &b.item.modified);
  ScratchMemStrm text(0);
  BkmItem_dump(&b.item, text, 0);
  BkmItem_dump(&b.item, text, 1);
  IStrm_rewind(text);
  Bkm back;
  ASSERT_EQ(Vbkm_dec(text, &back.item, nullptr), 1);
  ASSERT_EQ(Vbkm_dec(text, &back.item, nullptr), 1);
  EXPECT_EQ(Vbkm_dec(text, &back.item, nullptr), 0);
  // Only under module 5, category 1, level 1 does the trace reach the sink.
  std::string seen;
  DbgMng_setSink([](void *ctx, const char *t, int32_t n) { static_cast<std::string *>(ctx)->append(t, n); },
                 &seen);
  DbgMng_select(6, 0x1, 3);
  BkmItem_trace(&b.item);
  EXPECT_EQ(seen, "");
  DbgMng_select(5, 0x1, 1);
  BkmItem_trace(&b.item);
  EXPECT_NE(seen.find("url = http://x/?a=1;b=2\nmodified = 20260101T000000\n# BkmItem end"),
            std::string::npos)
      << seen;
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
}

TEST(VnoteCorpus, RealNotesReadAndSurviveTheirText) {
  const char *root = std::getenv("OSTREL_CORPUS");
  if (root == nullptr || !std::filesystem::is_directory(std::filesystem::path(root) / "vnote"))
    GTEST_SKIP();
  int notes = 0;
  for (const auto &entry : std::filesystem::directory_iterator(std::filesystem::path(root) / "vnote")) {
    SCOPED_TRACE(entry.path().string());
    std::ifstream f(entry.path(), std::ios::binary);
    const std::string data{std::istreambuf_iterator<char>(f), {}};
    ScratchStrStrm in(data);
    Note n;
    ASSERT_EQ(Vnote_dec(in, &n.item, nullptr), 1);
    ++notes;
    EXPECT_NE(KvoWcs_len(&n.item.body) + KvoWcs_len(&n.item.summ), 0);
    ScratchMemStrm text(0), t1(0), t2(0);
    Vnote_enc(text, &n.item, 0);
    IStrm_rewind(text);
    Note back;
    ASSERT_EQ(Vnote_dec(text, &back.item, nullptr), 1);
    NoteItem_tracex(&n.item, t1, 0);
    NoteItem_tracex(&back.item, t2, 0);
    EXPECT_EQ(contents(t1), contents(t2));
  }
  std::printf("%d real notes read and written back\n", notes);
  EXPECT_EQ(notes, 11);
}

TEST(Vbkm, DecoderRows) {
  struct Row {
    const char *text;
    int32_t rc;
    const char *title, *url, *luid;
    uint32_t ver;
  };
  const Row rows[] = {
      {"BEGIN:VBKM\r\nVERSION:1.0\r\nX-IRMC-LUID:a;b\r\nTITLE:T\r\nURL:a;b\r\nEND:VBKM\r\n", 1, "T", "a",
       "a", 0x100},
      {"BEGIN:VBKM\r\nURL:a\\;b\r\nURL:late\\;r\r\nX-NEW:1\r\nEND:VNOTE\r\nEND:VBKM\r\n", 1, "", "late;r", "", 0},
      {"BEGIN:VBKM\r\nTITLE:cut\r\n", 0, "", "", "", 0},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    ScratchStrStrm in(row.text);
    Bkm b;
    tarnex::ScratchStr<16> luid;
    uint32_t ver = 0;
    ASSERT_EQ(Vbkm_decx(in, &b.item, &ver, luid), row.rc);
    EXPECT_EQ(wide(&b.item.title), row.title);
    EXPECT_STREQ(KvoStr_buf(&b.item.url), row.url);
    EXPECT_STREQ(luid.c_str(), row.luid);
    EXPECT_EQ(ver, row.ver);
  }
}

// A failed line ends the writing: its result, the property named in the
// trace, and no later line behind it.
TEST(NoteBkm, AFailedWriteIsTheResultAndNamesItsLine) {
  Note n;
  KvoWcs_setStr(&n.item.summ, "S");
  KvoWcs_setStr(&n.item.body, "B");
  KvoStr_setStr(&n.item.cls, "C");
  iso_dt_dec("20050405", &n.item.modified);
  Bkm b;
  KvoWcs_setStr(&b.item.title, "T");
  struct Row {
    bool note;
    const char *luid;
    int64_t limit;
    const char *trace;
  };
  const Row rows[] = {
      {true, nullptr, 0, "[BEGIN: VNOTE]"},
      {true, nullptr, 30, "[SUMMARY: ]S"},
      {true, nullptr, 40, "[BODY: ]B"},
      {true, "L9", 60, "[X-IRMC-LUID: L9]"},
      {true, nullptr, 70, "[LAST-MODIFIED: 20050405]"},
      {true, nullptr, 82, "[END: VNOTE]"},
      {false, "L9", 30, "[X-IRMC-LUID : L9]"},
      {false, nullptr, 30, "[TITLE: ]T"},
  };
  std::string seen;
  DbgMng_setSink([](void *ctx, const char *t, int32_t len) { static_cast<std::string *>(ctx)->append(t, len); },
                 &seen);
  DbgMng_select(6, 0x2, 1);
  for (const Row &row : rows) {
    SCOPED_TRACE(row.trace);
    seen.clear();
    FullStrm full(row.limit);
    ScratchMemStrm whole(0);
    int32_t rc;
    if (row.note) {
      rc = Vnote_encx(&full.base, &n.item, 0, row.luid, nullptr);
      Vnote_encx(whole, &n.item, 0, row.luid, nullptr);
    } else {
      rc = Vbkm_encx(&full.base, &b.item, 0, row.luid, nullptr);
      Vbkm_encx(whole, &b.item, 0, row.luid, nullptr);
    }
    EXPECT_LT(rc, 0);
    EXPECT_NE(seen.find(row.trace), std::string::npos) << seen;
    // What went out stays, and is the start of the whole text.
    const std::string part = contents(full.mem), all = contents(whole);
    EXPECT_EQ(all.compare(0, part.size(), part), 0) << part;
  }
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
}

}  // namespace
