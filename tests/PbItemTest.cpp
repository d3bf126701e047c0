// The contact record: slot table, finders, enumerators, copies, compare and
// trace text, checked through the C interface.
#include <gtest/gtest.h>

#include <cstdio>

#include <cstring>
#include <string>
#include <vector>

#include "ostrel/PbItem.h"
#include "tarnex/scratch.hpp"

namespace {

using Slots = std::vector<int32_t>;

const KvoWchar *W(const char16_t *text) { return reinterpret_cast<const KvoWchar *>(text); }

std::string utf8(const KvoWcs *w) {
  tarnex::ScratchStr<64> s;
  KvoStr_setCwcs(s, w);
  return std::string(s.view());
}

PbField *put(PbItem *item, int32_t index, const char *type, const char *v0 = nullptr) {
  PbField *f = PbItem_write(item, index);
  // At most three characters, always terminated.
  std::snprintf(f->type, sizeof f->type, "%s", type);
  if (v0 != nullptr) KvoWcs_setStr(&f->vals[0], v0);
  return f;
}

// The slots an enumerator gives, checking each field it hands out.
Slots walk(PbEnum *en) {
  Slots slots;
  PbField *f = nullptr;
  for (int32_t i = -1; PbEnum_next(en, &f, &i);) {
    EXPECT_EQ(f, en->item->fields[i]);
    slots.push_back(i);
  }
  return slots;
}

// Collects misuse reports; item_ is a fresh heap record.
class PbItemTest : public testing::Test {
 protected:
  void SetUp() override {
    auto onAssert = [](void *ctx, const char *text, const char *, int32_t) {
      static_cast<std::vector<std::string> *>(ctx)->push_back(text);
    };
    Tarnex_setAssertHandler(onAssert, &asserts_, nullptr);
    item_ = PbItem_new(nullptr);
  }
  void TearDown() override {
    PbItem_delete(item_);
    Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  }
  std::vector<std::string> asserts_;
  PbItem *item_ = nullptr;
};

// Growth keeps every field; sizes are 28, then whole units of 32, at most 128.
TEST_F(PbItemTest, TableGrowsTo28ThenByUnitsOf32AndRefusesOutside) {
  EXPECT_EQ(PbItem_write(item_, PB_FIELD_MAX), nullptr);
  EXPECT_EQ(PbItem_write(item_, -1), nullptr);
  EXPECT_EQ(asserts_.size(), 2u);
  EXPECT_EQ(item_->size, 0) << "a refused write must not grow the table";
  const struct { int32_t index, size; } steps[] = {
      {0, 28}, {27, 28}, {28, 32}, {32, 64}, {63, 64}, {64, 96}, {127, 128}};
  std::vector<PbField *> made;
  for (const auto &s : steps) {
    made.push_back(PbItem_write(item_, s.index));
    EXPECT_EQ(item_->size, s.size) << "write " << s.index;
  }
  for (size_t k = 0; k < made.size(); ++k)
    EXPECT_EQ(PbItem_at(item_, steps[k].index), made[k]) << "growth lost a field";
  EXPECT_EQ(PbItem_count(item_), 7);
  for (int32_t bad : {-1, 128, 1000, INT32_MIN}) EXPECT_EQ(PbItem_at(item_, bad), nullptr) << bad;
  // A first table asked for by size: {asked, size}, new slots all null.
  const std::pair<int32_t, int32_t> sizes[] = {{-5, 0}, {0, 0}, {28, 28}, {29, 32}, {128, 128}};
  for (const auto &c : sizes) {
    PbItem *item = PbItem_newx(nullptr, c.first);
    EXPECT_EQ(item->size, c.second) << c.first;
    EXPECT_EQ(item->fields == nullptr, c.second == 0) << c.first;
    for (int32_t i = 0; i < item->size; ++i) EXPECT_EQ(item->fields[i], nullptr);
    PbItem_delete(item);
  }
  EXPECT_EQ(asserts_.size(), 2u);
}

TEST_F(PbItemTest, ClearKeepsFieldObjectsButHidesThem) {
  PbField *a = put(item_, 0, "N", "Doe");
  put(item_, 5, "TWC", "1");
  PbSval_set(&a->sval, W(u"x"), -1);
  PbItem_clear(item_);
  EXPECT_EQ(PbItem_count(item_), 2) << "cleared fields still hold their slot";
  EXPECT_EQ(PbItem_write(item_, 0), a) << "a later write reuses the field";
  EXPECT_EQ(a->type[0], '\0');
  EXPECT_EQ(KvoWcs_len(&a->vals[0]), 0);
  EXPECT_EQ(a->sval.strm, nullptr);
  PbItem_clearx(item_);
  EXPECT_EQ(item_->size, 0);
  EXPECT_EQ(item_->fields, nullptr);
  PbItem_clear(item_);  // an empty table is fine to clear
  EXPECT_TRUE(asserts_.empty());
}

TEST_F(PbItemTest, InsertTakesTheFirstNullSlotNeverACleared) {
  put(item_, 0, "N");
  put(item_, 2, "M");
  PbField_clear(PbItem_at(item_, 0));
  int32_t at = -1;
  PbField *f = PbItem_insert(item_, &at);
  EXPECT_EQ(at, 1);
  EXPECT_EQ(PbItem_at(item_, 1), f);
  for (int32_t i = 3; i < PB_FIELD_MAX; ++i) PbItem_insert(item_, &at);
  EXPECT_EQ(at, PB_FIELD_MAX - 1);
  at = -7;
  EXPECT_EQ(PbItem_insert(item_, &at), nullptr);
  EXPECT_EQ(at, -7);
  EXPECT_EQ(asserts_.size(), 1u);
  EXPECT_EQ(PbItem_count(item_), PB_FIELD_MAX);
  EXPECT_EQ(PbItem_find(item_, "T", nullptr), nullptr) << "a full table without a match";
}

// Slot 0 cleared (never found), then N TP TWV TWC TXA EH XGV XGI in 2..9.
class PbFindTest : public PbItemTest {
 protected:
  void SetUp() override {
    PbItemTest::SetUp();
    const char *types[] = {"N", "TP", "TWV", "TWC", "TXA", "EH", "XGV", "XGI"};
    PbField_clear(put(item_, 0, "TWC"));
    for (int32_t i = 0; i < 8; ++i) put(item_, i + 2, types[i]);
  }
};

TEST_F(PbFindTest, FindMatchesTypePrefixFirstSlotWins) {
  // {type, slot}, then the named finders: {found, slot}; -1 for none.
  const std::pair<const char *, int32_t> cases[] = {
      {"N", 2}, {"T", 3}, {"TW", 4}, {"TWC", 5}, {"XGI", 9}, {"TWCX", -1}, {"TH", -1}};
  for (const auto &[type, slot] : cases) {
    int32_t at = -1;
    PbField *f = PbItem_find(item_, type, &at);
    EXPECT_EQ(f == nullptr ? -1 : at, slot) << type;
    EXPECT_TRUE(f == nullptr || f == item_->fields[at]);
  }
  const std::pair<PbField *, int32_t> named[] = {
      {PbItem_grp(item_), 9},     {PbItem_name(item_), 2},       {PbItem_tel(item_, nullptr), 3},
      {PbItem_tel(item_, ""), 3}, {PbItem_tel(item_, "TWC"), 5}, {PbItem_email(item_, nullptr), 7},
      {PbItem_email(item_, "EW"), -1}};
  for (const auto &[found, slot] : named)
    EXPECT_EQ(found, slot < 0 ? nullptr : item_->fields[slot]) << &found - &named[0].first;
  EXPECT_TRUE(asserts_.empty());
  EXPECT_EQ(PbItem_find(item_, "", nullptr), nullptr);
  EXPECT_EQ(PbItem_find(item_, nullptr, nullptr), nullptr);
  EXPECT_EQ(asserts_.size(), 2u);
}

TEST_F(PbFindTest, FiltersCompareKindAndPositionOnly) {
  const Slots all = {2, 3, 4, 5, 6, 7, 8, 9};
  const struct { const char *filter; Slots slots; } cases[] = {
      {nullptr, all},  {"", all},        {"T", {3, 4, 5, 6}},
      {"TW", {4, 5}}, {"TWCXYZ", {4, 5}}, {"Q", {}}};
  for (const auto &c : cases) {
    PbEnum *en = PbItem_enums(item_, c.filter);
    EXPECT_EQ(walk(en), c.slots) << (c.filter ? c.filter : "(null)");
    EXPECT_EQ(PbEnum_next(en, nullptr, nullptr), 0) << "the end stays the end";
    PbEnum_reset(en);
    EXPECT_EQ(walk(en), c.slots) << "after reset";
    PbEnum_delete(en);
  }
  for (const auto &[en, slots] : {std::pair{PbItem_tels(item_), Slots{3, 4, 5, 6}},
                                  std::pair{PbItem_emails(item_), Slots{7}}}) {
    EXPECT_EQ(walk(en), slots);
    PbEnum_delete(en);
  }
}

TEST_F(PbFindTest, EnumeratorReadsTheRecordLive) {
  PbEnum en;
  PbEnum_new(&en, item_, "T");
  int32_t at = -1;
  ASSERT_EQ(PbEnum_next(&en, nullptr, &at), 1);
  EXPECT_EQ(at, 3);
  PbItem_move(item_, 20, 4);  // emptied ahead of the walk: skipped, found later
  put(item_, 60, "TH");       // written behind the table's old end: found
  EXPECT_EQ(walk(&en), (Slots{5, 6, 20, 60}));
  PbEnum_delete(&en);
}

TEST_F(PbItemTest, MoveWithinARecord) {
  const struct { int32_t dst; bool moved; int32_t size; } cases[] = {
      {1, false, 28},    // onto itself: nothing
      {2, true, 28},     // onto an occupied slot, whose field is destroyed
      {5, true, 28},     // onto a null slot
      {70, true, 96},    // beyond the table: grows
      {128, false, 28},  // no room: refused
      {-1, false, 28}};
  for (const auto &c : cases) {
    PbItem_clearx(item_);
    PbField *moving = put(item_, 1, "N");
    put(item_, 2, "M");
    PbItem_move(item_, c.dst, 1);
    EXPECT_EQ(item_->size, c.size) << c.dst;
    EXPECT_EQ(PbItem_at(item_, c.moved ? c.dst : 1), moving) << c.dst;
    EXPECT_EQ(PbItem_at(item_, 1) == nullptr, c.moved) << c.dst;
    EXPECT_EQ(PbItem_count(item_), c.dst == 2 ? 1 : 2) << c.dst;
  }
  EXPECT_EQ(asserts_.size(), 2u);
  PbItem_move(item_, 0, 40);  // sources outside the table
  PbItem_move(item_, 0, -1);
  EXPECT_EQ(asserts_.size(), 4u);
}

TEST_F(PbItemTest, MovexCarriesThePointerBetweenRecords) {
  PbItem other;
  PbItem_new(&other);
  PbField *f = put(&other, 30, "TWC", "555");
  put(item_, 3, "N");
  PbItem_movex(item_, 3, &other, 30);
  EXPECT_EQ(PbItem_at(item_, 3), f) << "moves a pointer, copies no text";
  EXPECT_EQ(PbItem_at(&other, 30), nullptr);
  EXPECT_EQ(PbItem_count(item_), 1);
  PbItem_movex(item_, 7, item_, 3);  // same record: a plain move
  EXPECT_EQ(PbItem_at(item_, 7), f);
  PbItem_movex(&other, 0, item_, 28);  // past the source table
  EXPECT_EQ(asserts_.size(), 1u);
  PbItem_delete(&other);
}

// Assign copies deep into the fields already in place and clears the rest;
// a clone is a heap copy of the same table size.
TEST_F(PbItemTest, AssignAndCloneCopyDeep) {
  PbItem src;
  PbItem_newx(&src, 40);
  put(&src, 0, "N", "Doe");
  PbField *s5 = put(&src, 5, "TWC", "123");
  KvoWcs_setStr(&s5->desc, "desk");
  PbSval_setx(&s5->sval, W(u"http://x"), -1, 3, "URL");
  put(&src, 40, "EH", "a@b");
  PbItem *copy = PbItem_clone(&src);
  EXPECT_EQ(copy->size, 64);
  EXPECT_NE(PbItem_at(copy, 5)->sval.strm, s5->sval.strm);
  EXPECT_EQ(PbItem_cmp(copy, &src), 1);
  PbItem_delete(copy);
  PbField_clear(put(&src, 9, "M"));
  PbField *t2 = put(item_, 2, "OF", "old");
  PbField *t5 = put(item_, 5, "B", "1990");
  PbField *t9 = put(item_, 9, "G", "co");
  PbField *t90 = put(item_, 90, "XS", "1");
  PbItem_assign(item_, &src);

  EXPECT_EQ(item_->size, 96) << "assign never shrinks the table";
  EXPECT_EQ(PbItem_at(item_, 5), t5) << "field objects stay in their slots";
  EXPECT_NE(t5->sval.strm, s5->sval.strm) << "streams are copied, not shared";
  for (PbField *cleared : {t2, t9, t90}) {
    EXPECT_FALSE(PbField_valid__(cleared));
    EXPECT_EQ(KvoWcs_len(&cleared->vals[0]), 0);
  }
  EXPECT_EQ(PbItem_at(item_, 90), t90);
  KvoWcs_setStr(&s5->vals[0], "changed");
  PbItem_assign(item_, item_);
  EXPECT_EQ(utf8(&t5->vals[0]), "123") << "no sharing with src, and self-assign keeps text";
  KvoWcs_setStr(&s5->vals[0], "123");
  EXPECT_EQ(PbItem_cmp(item_, &src), 0) << "cleared fields where src has none differ";
  PbItem_delete(&src);
  EXPECT_TRUE(asserts_.empty());
}

TEST_F(PbItemTest, CompareSeesEveryMemberButStreamContent) {
  const struct { const char *what; void (*edit)(PbItem *); int32_t equal; } cases[] = {
      {"nothing", [](PbItem *) {}, 1},
      {"type", [](PbItem *r) { std::strcpy(r->fields[4]->type, "TWV"); }, 0},
      {"desc", [](PbItem *r) { KvoWcs_setStr(&r->fields[4]->desc, "d"); }, 0},
      {"flags", [](PbItem *r) { r->fields[4]->flags = 1; }, 0},
      {"last value", [](PbItem *r) { KvoWcs_setStr(&r->fields[4]->vals[6], "z"); }, 0},
      {"loc", [](PbItem *r) { r->fields[4]->sval.loc = 2; }, 0},
      {"fmt", [](PbItem *r) { std::strcpy(r->fields[4]->sval.fmt, "PNG"); }, 0},
      {"slot", [](PbItem *r) { PbItem_move(r, 5, 4); }, 0},
      {"null to cleared", [](PbItem *r) { PbItem_write(r, 9); }, 0},
      {"stream bytes", [](PbItem *r) { PbSval_set(&r->fields[4]->sval, W(u"other"), -1); }, 1},
      {"bigger table", [](PbItem *r) { PbItem_write(r, 100), PbItem_move(r, 99, 100); }, 0},
      {"empty slots beyond", [](PbItem *r) { PbItem_move(r, 100, 4), PbItem_move(r, 4, 100); }, 1},
  };
  for (const auto &c : cases) {
    PbItem a, b;
    for (PbItem *r : {PbItem_new(&a), PbItem_new(&b)}) {
      put(r, 4, "TWC", "1");
      PbSval_setx(&r->fields[4]->sval, W(u"same"), -1, 0, "JPEG");
    }
    c.edit(&b);
    EXPECT_EQ(PbItem_cmp(&a, &b), c.equal) << c.what;
    EXPECT_EQ(PbItem_cmp(&b, &a), c.equal) << c.what;
    PbItem_delete(&a);
    PbItem_delete(&b);
  }
}

TEST_F(PbItemTest, FieldComponentsAndEmptiness) {
  PbField *f = put(item_, 0, "AH");
  EXPECT_EQ(PbField_at(f, 6), &f->vals[6]);
  EXPECT_EQ(PbField_at(f, 7), nullptr);
  EXPECT_EQ(PbField_at(f, -1), nullptr);
  EXPECT_EQ(asserts_.size(), 2u);
  KvoWcs_setStr(&f->desc, "desc does not count");
  EXPECT_EQ(PbField_empty(f), 1);
  KvoWcs_setStr(&f->vals[6], "x");
  EXPECT_EQ(PbField_empty(f), 0);
  EXPECT_EQ(PbField_cplex(f), 0) << "only a value besides the first two makes it complex";
  KvoWcs_setStr(&f->vals[2], "y");
  EXPECT_EQ(PbField_cplex(f), 1);
  PbField_clearx(f);
  EXPECT_STREQ(f->type, "AH") << "clearx keeps the type";
  EXPECT_EQ(PbField_empty(f), 1);
  EXPECT_EQ(KvoWcs_len(&f->desc), 0);
  PbSval_set(&f->sval, W(u"a"), -1);
  EXPECT_EQ(PbField_empty(f), 0) << "a stream value with content counts";
  PbField_clear(f);
  EXPECT_FALSE(PbField_valid__(f));
  EXPECT_FALSE(PbField_valid__(nullptr));
}

TEST_F(PbItemTest, StreamValueOwnershipAndText) {
  PbSval sv{};
  const struct { const KvoWchar *text; int32_t len; int64_t bytes; } cases[] = {
      {nullptr, 5, 0}, {W(u"abc"), -1, 6}, {W(u"abc"), 0, 0}, {W(u"abc"), 2, 4}};
  for (const auto &c : cases) {
    PbSval_set(&sv, c.text, c.len);
    ASSERT_NE(sv.strm, nullptr);
    EXPECT_EQ(IStrm_size(sv.strm), c.bytes);
    EXPECT_EQ(IStrm_tell(sv.strm), 0);
    EXPECT_EQ(PbSval_valid__(&sv), c.bytes > 0 ? 1 : 0);
  }
  PbSval_setx(&sv, W(u"u"), -1, 3, "ABCDEFGHIJKLMNOP");
  EXPECT_STREQ(sv.fmt, "ABCDEFGHIJK") << "fmt holds 11 characters";
  PbSval copy{}, none{};
  PbSval_assign(&copy, &sv);
  EXPECT_EQ(IStrm_size(copy.strm), 2);
  PbSval_assign(&copy, &none);
  EXPECT_EQ(copy.strm, nullptr) << "a source without stream releases ours";
  IStrm *mine = MemStrm_xcreatex__(nullptr, 0, __FILE__, __LINE__);
  PbSval_fillx(&sv, mine, 0, nullptr);
  PbSval_fill(&sv, mine);  // handing the same stream again must not free it
  EXPECT_EQ(sv.strm, mine);
  EXPECT_STREQ(sv.fmt, "");
  PbSval_clear(&sv);
  EXPECT_EQ(sv.strm, nullptr);
  EXPECT_EQ(PbSval_valid__(nullptr), 0);
}

TEST(PbTypeCmp, ComparedCharactersOnly) {
  using Cmp = int32_t (*)(const char *, const char *);
  const struct { Cmp fn; const char *a, *b; int32_t want; } cases[] = {
      {pb_kind_cmp__, "TWC", "TH", 1}, {pb_kind_cmp__, "TWC", "E", 0},
      {pb_pos_cmp__, "TWC", "W", 1},   {pb_pos_cmp__, "TWC", "H", 0},
      {pb_dev_cmp__, "TWC", "C", 1},   {pb_dev_cmp__, "TWC", "V", 0},
      {pb_dev_cmp__, "T", "", 1},      {pb_dev_cmp__, "T", "V", 0},
      {pb_oth_cmp__, "OF", "XF", 1},   {pb_oth_cmp__, "OF", "OR", 0},
      {pb_ext_cmp__, "TXA", "TXB", 1}, {pb_ext_cmp__, "TXA", "TWA", 0},
      {pb_kind_cmp__, nullptr, "", 1}};
  for (const auto &c : cases) EXPECT_EQ(c.fn(c.a, c.b), c.want) << &c - cases;
}

TEST_F(PbItemTest, TracexShowsValidFieldsInSlotOrder) {
  PbField *n = put(item_, 0, "N", "Doe");
  KvoWcs_setStr(&n->vals[1], "J\xC3\xA9r\xC3\xB4me");
  PbField *tel = put(item_, 3, "TWC", "+1 555");
  tel->flags = 1;
  KvoWcs_setStr(&tel->desc, "desk");
  PbField_clear(put(item_, 4, "M", "gone"));
  PbSval_setx(&put(item_, 30, "P")->sval, W(u"\x89PNG"), -1, 0, "PNG");
  PbField *logo = put(item_, 31, "OL");
  PbSval_setx(&logo->sval, W(u"http://e.x/l.gif"), -1, 3, "GIF");
  IStrm_seek(logo->sval.strm, 4, KVO_SEEK_SET);

  tarnex::ScratchMemStrm out(0);
  IStrm_puts(out, "stale", -1);
  PbItem_tracex(item_, out, 0);
  const std::string want =
      "# PbItem beg, count=5 ......\n"
      "fields[0]: N, 0\n\tvals[0]: \"Doe\"\n\tvals[1]: \"J\xC3\xA9r\xC3\xB4me\"\n"
      "fields[3]: TWC, 1, desc=\"desk\"\n\tvals[0]: \"+1 555\"\n"
      "fields[30]: P, 0, sval\n\tsval: fmt=PNG, loc=0, bin=\n"
      "fields[31]: OL, 0, sval\n\tsval: fmt=GIF, loc=3, txt=\"http://e.x/l.gif\"\n"
      "# PbItem end !!!!!!\n";
  EXPECT_EQ(reinterpret_cast<const char *>(MemStrm_data(out)), want);
  EXPECT_EQ(IStrm_tell(logo->sval.strm), 4) << "tracing leaves the value's position";
  PbItem_clearx(item_);
  PbItem_tracex(item_, out, 1);
  EXPECT_EQ(reinterpret_cast<const char *>(MemStrm_data(out)),
            want + "# PbItem beg, count=0 ......\n# PbItem end !!!!!!\n");
  PbItem_tracex(item_, nullptr, 0);
  EXPECT_EQ(asserts_, std::vector<std::string>{"strm"});
}

// _trace hands the _tracex text to the trace output, only while tracing is on.
TEST_F(PbItemTest, TraceHandsTheTextToTheTraceOutput) {
  std::string seen;
  DbgMng_setSink([](void *ctx, const char *text,
                    int32_t len) { static_cast<std::string *>(ctx)->append(text, len); },
                 &seen);
  put(item_, 2, "OI", "42");
  DbgMng_select(6, 0x8, 3);
  PbItem_trace(item_);
  DbgMng_reset();
  PbItem_write(item_, 40);
  PbItem_trace(item_);
  DbgMng_setSink(nullptr, nullptr);
  EXPECT_NE(seen.find("count=1 ......\nfields[2]: OI, 0\n\tvals[0]: \"42\"\n"), std::string::npos)
      << seen;
  EXPECT_EQ(seen.find("count=2"), std::string::npos) << "traced with tracing off";
}

TEST(PbItemDeathTest, DeadOrForeignRecordsEndTheProcess) {
  PbItem local;
  PbItem_new(&local);
  PbItem_delete(&local);
  EXPECT_DEATH(PbItem_count(&local), "crash exit");
  PbEnum en;
  PbEnum_new(&en, nullptr, "T");
  EXPECT_EQ(PbEnum_next(&en, nullptr, nullptr), 0) << "an enumerator over nothing ends";
  EXPECT_DEATH(PbItem_count(reinterpret_cast<PbItem *>(&en)), "crash exit");
  PbEnum_delete(&en);
  EXPECT_DEATH(PbEnum_reset(&en), "crash exit");
}

}  // namespace
