// The call record and the call listing. Every listing is read at each read
// size of ChunkedStrm.h; all must give the same records and results.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ChunkedStrm.h"
#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using testutil::ChunkedStrm;
using testutil::kReadSizes;

const std::string kHead =
    "<?xml version=\"1.0\"?>\r\n<!DOCTYPE call-listing SYSTEM \"xml-call-listing.dtd\">\r\n"
    "<call-listing version=\"1.0\">\r\n";
const std::string kClose = "</call-listing>\r\n";
std::string listing(const std::string &entries) { return kHead + entries + kClose; }

std::string text(IStrm *s) {
  return std::string(reinterpret_cast<const char *>(MemStrm_data(s)),
                     static_cast<size_t>(IStrm_size(s)));
}

// A record in one line: the members that are set.
std::string render(const CallItem &c) {
  std::string out = "{";
  if (c.luid != -1) out += "luid=" + std::to_string(c.luid) + " ";
  if (c.tel.len) out += std::string("tel=") + c.tel.buf + " ";
  if (c.data.year != KVO_DT_UNSET) {
    tarnex::ScratchStr<48> d;
    iso_dt_enc(d, &c.data);
    out += std::string("date=") + d.c_str() + " ";
  }
  if (c.dur.len) out += std::string("dur=") + c.dur.buf + " ";
  if (c.type.len) out += std::string("type=") + c.type.buf + " ";
  return out + "}";
}

// Every result and the record behind each 0 or 1, then the result of one
// more call, which must repeat the last.
std::string readAll(const std::string &doc, int32_t readSize) {
  ChunkedStrm in(doc, readSize);
  CallItem item;
  CallItem_new(&item);
  XmlListDec *dec = Xcalls_decBeg(in.get());
  std::string out;
  int32_t r;
  while ((r = Xcalls_decItem(dec, &item)) == 0 || r == 1) out += std::to_string(r) + render(item) + " ";
  out += std::to_string(r);
  EXPECT_EQ(Xcalls_decItem(dec, &item), r) << "after the end";
  EXPECT_EQ(Xcalls_decEnd(dec), 0);
  CallItem_delete(&item);
  return out;
}

std::string nested(int depth) {
  std::string s;
  for (int i = 0; i < depth; ++i) s += "<x>";
  return s;
}

TEST(Xcalls, ReadsEntriesAndFailsWhereTheListingDoes) {
  const struct {
    const char *what;
    std::string doc;
    std::string want;
  } rows[] = {
      {"no entries", listing(""), "-202"},
      {"two entries", listing("\t<Call number=\"1\" />\r\n\t<Call number=\"2\" />\r\n"),
       "0{tel=1 } 0{tel=2 } -202"},
      {"every attribute, and one not ours",
       listing("<Call number='+4930' date='20261120T101500' duration='65' type='missed' "
               "luid='7' sim='2'/>"),
       "0{luid=7 tel=+4930 date=20261120T101500 dur=65 type=missed } -202"},
      {"the writer's date word is not read", listing("<Call data='20261120T101500'/>"), "0{} -202"},
      {"no attributes: a cleared record", listing("<Call number='1'/><Call/>"),
       "0{tel=1 } 0{} -202"},
      {"case is ignored in names; the later wins", listing("<CALL number='1' NUMBER='2'/>"),
       "0{tel=2 } -202"},
      {"the same name twice", listing("<Call number='1' number='2'/>"), "-251"},
      {"entries inside unknown elements and entries",
       listing("<x><Call number='1'><y/><call number='2'/></Call></x><z/><Call number='3'/>"),
       "0{tel=1 } 0{tel=2 } 0{tel=3 } -202"},
      {"luid as a 32-bit strtoul",
       listing("<Call luid='-1'/><Call luid='4294967296'/><Call luid='x'/><Call luid=' +12z'/>"
               "<Call luid='4294967295'/><Call luid='-2'/>"),
       "0{} 0{} 0{luid=0 } 0{luid=12 } 0{} 0{luid=-2 } -202"},
      {"an empty stream", "", "-261"},
      {"cut behind the last entry", kHead + "<Call number='1'/>", "0{tel=1 } -261"},
      {"cut inside an entry", kHead + "<Call number='1'/><Call num", "0{tel=1 } -261"},
      {"a bare ampersand", listing("<Call number='1'/><Call type='Tom & Jerry'/>"),
       "0{tel=1 } -251"},
      {"two trailing NULs", listing("<Call number='1'/>") + std::string(2, '\0'),
       "0{tel=1 } -202"},
      {"surrogate references", listing("<Call number='1'/><Call type='&#55357;&#56838;'/>"),
       "0{tel=1 } -251"},
      {"a real character reference", listing("<Call type='&#128518;&amp;'/>"),
       "0{type=\xF0\x9F\x98\x86& } -202"},
      {"an expansion bomb",
       "<!DOCTYPE call-listing [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;&a;&a;'>]>"
       "<call-listing><Call type='&b;'/></call-listing>",
       "-262"},
      {"nested too deep", kHead + "<Call number='1'/>" + nested(100000), "0{tel=1 } -264"},
  };
  for (const auto &row : rows) {
    for (int32_t size : kReadSizes) {
      SCOPED_TRACE(std::string(row.what) + ", read size " + std::to_string(size));
      EXPECT_EQ(readAll(row.doc, size), row.want);
    }
  }
}

// 100 MB of attribute text, made as it is read: the parser gives up at
// its budget, long before the end.
TEST(Xcalls, OneHugeEntryIsOverBudget) {
  struct Endless {
    IStrm base;
    std::string head;
    int64_t pos, size;
    static int32_t read(IStrm *s, void *buf, int32_t n) {
      Endless *e = reinterpret_cast<Endless *>(s);
      int32_t i = 0;
      for (char *out = static_cast<char *>(buf); i < n && e->pos < e->size; ++i, ++e->pos)
        out[i] = e->pos < static_cast<int64_t>(e->head.size()) ? e->head[e->pos] : 'v';
      return i;
    }
  };
  static constexpr IStrmOps kOps = {nullptr, nullptr, nullptr, nullptr, Endless::read,
                                    nullptr, nullptr, [](IStrm *s) {
                                      return reinterpret_cast<Endless *>(s)->pos;
                                    },
                                    [](IStrm *s) { return reinterpret_cast<Endless *>(s)->size; },
                                    nullptr, nullptr};
  Endless in{{&kOps}, kHead + "<Call number='1'/><Call type='", 0, int64_t{100} << 20};
  CallItem item;
  CallItem_new(&item);
  XmlListDec *dec = Xcalls_decBeg(&in.base);
  EXPECT_EQ(Xcalls_decItem(dec, &item), 0);
  EXPECT_EQ(Xcalls_decItem(dec, &item), XML_PSR_OVER_BUDGET);
  EXPECT_LT(in.pos, int64_t{2 * XML_PSR_BUDGET});
  Xcalls_decEnd(dec);
  CallItem_delete(&item);
}

std::string encoded(const std::vector<CallItem> &items) {
  tarnex::ScratchMemStrm out(0);
  Xcalls_encBeg(out);
  for (const CallItem &c : items) EXPECT_EQ(Xcalls_encItem(out, &c), 0);
  Xcalls_encEnd(out);
  return text(out);
}

struct Calls {
  std::vector<CallItem> items;
  explicit Calls(size_t n) : items(n) {
    for (CallItem &c : items) CallItem_new(&c);
  }
  ~Calls() {
    for (CallItem &c : items) CallItem_delete(&c);
  }
};

TEST(Xcalls, WritesTheMembersThatAreSetAsTheyStand) {
  Calls calls(3);
  CallItem &full = calls.items[1], &raw = calls.items[2];
  KvoStr_setStr(&full.tel, "+4930123");
  iso_dt_dec("20261120T101500", &full.data);
  KvoStr_setStr(&full.dur, "65");
  KvoStr_setStr(&full.type, "missed");
  full.luid = 12;
  KvoStr_setStr(&raw.type, "a&b");
  EXPECT_EQ(encoded(calls.items),
            listing("\t<Call />\r\n"
                    "\t<Call number=\"+4930123\" data=\"20261120T101500\" duration=\"65\" "
                    "type=\"missed\" />\r\n"
                    "\t<Call type=\"a&b\" />\r\n"));
}

// Records to a listing and back are equal but for what the listing loses:
// the date (written as "data", read as "date") and luid.
TEST(Xcalls, RecordsSurviveAListingButForDateAndLuid) {
  Calls calls(3);
  const char *const tels[] = {"+4930123", "", "0049 (30) 1-2"};
  for (size_t i = 0; i < 3; ++i) {
    CallItem &c = calls.items[i];
    KvoStr_setStr(&c.tel, tels[i]);
    KvoStr_setStr(&c.dur, i == 1 ? "" : "00:01:05");
    KvoStr_setStr(&c.type, i == 2 ? "dialed" : "received");
    iso_dt_dec("20261120T101500Z", &c.data);
    c.luid = static_cast<int32_t>(i);
  }
  const std::string doc = encoded(calls.items);
  std::string want;
  for (CallItem &c : calls.items) {
    KvoDt_init(&c.data);
    c.luid = -1;
    want += "0" + render(c) + " ";
  }
  for (int32_t size : kReadSizes) EXPECT_EQ(readAll(doc, size), want + "-202");
}

// A listing read and written again is stable from the second writing on:
// the first loses the dates.
TEST(Xcalls, AListingIsStableAfterOnePass) {
  const std::string doc = listing(
      "<Call number='1' date='20261120T101500' luid='3'/><x><CALL TYPE='missed'/></x>"
      "<Call duration='5' number='&#x32;'/>");
  std::string first, second, third;
  const std::string *from = &doc;
  for (std::string *out : {&first, &second, &third}) {
    ChunkedStrm in(*from, 7);
    from = out;
    XmlListDec *dec = Xcalls_decBeg(in.get());
    Calls read(1), kept(0);
    while (Xcalls_decItem(dec, &read.items[0]) == 0) {
      kept.items.emplace_back();
      CallItem_assign(CallItem_new(&kept.items.back()), &read.items[0]);
    }
    Xcalls_decEnd(dec);
    *out = encoded(kept.items);
  }
  EXPECT_NE(second, first) << "the first pass writes the date as \"data\"";
  EXPECT_EQ(third, second);
}

TEST(CallItem, TraceAssignAndLife) {
  CallItem a, b;
  CallItem_new(&a);
  CallItem_new(&b);
  tarnex::ScratchMemStrm out(0);
  CallItem_tracex(&a, out, 0);
  EXPECT_EQ(text(out), "# CallItem beg......\nluid = -1\n# CallItem end !!!!!!\n");
  KvoStr_setStr(&a.tel, "1");
  iso_dt_dec("20261120T101500", &a.data);
  KvoStr_setStr(&a.dur, "2");
  KvoStr_setStr(&a.type, "t");
  a.luid = 5;
  CallItem_assign(&b, &a);
  KvoStr_setStr(&a.tel, "changed");
  CallItem_dump(&b, out, 0);
  EXPECT_EQ(text(out),
            "# CallItem beg......\nluid = 5\ntel = 1\r\ndata = 20261120T101500\ndur = 2\r\n"
            "type = t\r\n# CallItem end !!!!!!\n");
  CallItem_clear(&b);
  CallItem_tracex(&b, out, 1);
  EXPECT_EQ(text(out).substr(text(out).size() - 53),
            "# CallItem beg......\nluid = -1\n# CallItem end !!!!!!\n");
  CallItem_delete(&a);
  EXPECT_EQ(a.tag, 0u);
  CallItem_delete(&b);
  CallItem *heap = CallItem_new(nullptr);
  EXPECT_EQ(heap->tag, CALL_ITEM_TAG | 0x80000000u);
  CallItem_delete(heap);
}

}  // namespace
