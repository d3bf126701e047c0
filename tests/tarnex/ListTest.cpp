// KvoList, SmpList and StrIdMap.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "tarnex/list.h"

namespace {

struct Item {
  KvoListNode node;  // first member: the list's view of the item
  int value;
};

int val(const KvoListNode *n) { return n ? reinterpret_cast<const Item *>(n)->value : -1; }

// The forward walk, checked against the backward links and the count.
std::vector<int> values(const KvoList &list) {
  std::vector<int> out, back;
  for (const KvoListNode *n = list.head; n; n = n->next) out.push_back(val(n));
  for (const KvoListNode *n = list.tail; n; n = n->prev) back.insert(back.begin(), val(n));
  EXPECT_EQ(out, back);
  EXPECT_EQ(static_cast<int32_t>(out.size()), KvoList_count(&list));
  return out;
}

int gDeleted = 0;

TEST(KvoList, AddRemoveAtAndDelAll) {
  KvoList list;
  KvoList_init(&list, 0);
  Item items[6];
  for (int v = 0; v < 6; ++v) items[v].value = v;
  for (int v = 1; v < 6; ++v) KvoList_addTail__(&list, &items[v].node);
  KvoList_addHead__(&list, &items[0].node);  // onto an empty list: below, after delAll
  EXPECT_EQ(values(list), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  // Both walking directions, and one past each end.
  for (int32_t i = -1; i <= 6; ++i) EXPECT_EQ(val(KvoList_at(&list, i)), i < 6 ? i : -1) << i;

  // Middle, head and tail each fix different links.
  for (int v : {2, 0, 5}) EXPECT_EQ(KvoList_remove__(&list, &items[v].node), &items[v].node);
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));
  EXPECT_TRUE(items[2].node.next == nullptr && items[2].node.prev == nullptr);

  // A node already taken out is reported, not unlinked twice.
  int asserts = 0;
  auto count = [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int *>(ctx); };
  Tarnex_setAssertHandler(count, &asserts, nullptr);
  EXPECT_EQ(KvoList_remove__(&list, &items[0].node), nullptr);
  Tarnex_setAssertHandler(nullptr, nullptr, nullptr);
  EXPECT_EQ(asserts, 1);
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));

  gDeleted = 0;
  auto countDelete = [](KvoListNode *n) {  // each node is unlinked before it is handed over
    ++gDeleted;
    EXPECT_TRUE(n->next == nullptr && n->prev == nullptr);
  };
  KvoList_delAll(&list, countDelete);
  KvoList_delAll(&list, countDelete);  // an empty list hands over nothing
  EXPECT_EQ(gDeleted, 3);
  EXPECT_EQ(values(list), std::vector<int>{});
  KvoList_addHead__(&list, &items[0].node);  // usable again after delAll
  EXPECT_EQ(values(list), std::vector<int>{0});
}

struct Rec {  // standard layout: a Rec and its first member convert both ways
  SmpLink link;
  char name[8];
};

std::string names(const SmpLink *head) {
  std::string out;
  for (; head; head = head->next) out.append(reinterpret_cast<const Rec *>(head)->name) += ',';
  return out;
}

TEST(SmpList, BuildCloneInOrderAndDelete) {
  SmpList list;
  SmpList_init(&list);
  for (const char *n : {"a", "b", "skip", "c"}) {  // a stale next is overwritten on add
    auto *r = new Rec{{0x55, reinterpret_cast<SmpLink *>(0x1)}, {}};
    std::snprintf(r->name, sizeof r->name, "%s", n);
    SmpList_addTail(&list, &r->link);
  }
  EXPECT_EQ(list.count, 4);
  EXPECT_EQ(names(list.head), "a,b,skip,c,");

  // A null copy is left out rather than ending the chain; the original is untouched.
  SmpLink *copy = SmpList_clone(list.head, [](const SmpLink *e) -> SmpLink * {
    const auto *r = reinterpret_cast<const Rec *>(e);
    if (std::string_view(r->name) == "skip") return nullptr;
    auto *c = new Rec(*r);
    c->name[0] = static_cast<char>(c->name[0] - 'a' + 'A');
    return &c->link;
  });
  EXPECT_EQ(names(copy), "A,B,C,");
  EXPECT_EQ(copy->tag, 0x55u);
  EXPECT_EQ(names(list.head), "a,b,skip,c,");
  EXPECT_EQ(SmpList_clone(nullptr, nullptr), nullptr);

  gDeleted = 0;
  auto deleteRec = [](SmpLink *e) { ++gDeleted; delete reinterpret_cast<Rec *>(e); };
  SmpList_delete(copy, deleteRec);
  SmpList_delete(list.head, deleteRec);
  SmpList_delete(nullptr, deleteRec);
  EXPECT_EQ(gDeleted, 7);  // LeakSanitizer reports any record left behind
}

TEST(StrIdMap, FirstRowWinsAndCaseIsIgnored) {
  static const StrIdMap map[] = {
      {1, "HOME"}, {2, "work"}, {3, "Home"}, {2, "office"}, {4, ""}, {0, nullptr}};
  const struct { const char *text; int32_t id; } byStr[] = {  // id -1: not found
      {"home", 1}, {"offICE", 2}, {"homes", -1}, {"hom", -1}, {nullptr, 4}};
  for (const auto &r : byStr) {
    int32_t id = -1;
    EXPECT_EQ(StrIdMap_findByStr(map, r.text, &id) != 0, r.id != -1) << (r.text ? r.text : "null");
    EXPECT_EQ(id, r.id);
    EXPECT_EQ(StrIdMap_findByStr(map, r.text, nullptr) != 0, r.id != -1) << "without a result";
  }
  const struct { int32_t id; const char *word; } byId[] = {
      {1, "HOME"}, {2, "work"}, {4, ""}, {5, nullptr}, {0, nullptr}};
  for (const auto &r : byId) {
    const char *word = "?";
    EXPECT_EQ(StrIdMap_findById(map, r.id, &word) != 0, r.word != nullptr) << r.id;
    EXPECT_STREQ(word, r.word ? r.word : "?");
  }
  EXPECT_FALSE(StrIdMap_findByStr(nullptr, "work", nullptr) || StrIdMap_findById(nullptr, 1, 0));
}

}  // namespace
