// KvoList, SmpList and StrIdMap.
#include <gtest/gtest.h>

#include <cctype>
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

int gDeleted = 0;
void countDelete(KvoListNode *n) {
  ++gDeleted;
  EXPECT_TRUE(n->next == nullptr && n->prev == nullptr);  // unlinked before it is handed over
}

// The backward links and the count must tell the same story as the forward links.
std::vector<int> values(const KvoList &list) {
  std::vector<int> out, back;
  for (const KvoListNode *n = list.head; n; n = n->next) out.push_back(val(n));
  for (const KvoListNode *n = list.tail; n; n = n->prev) back.insert(back.begin(), val(n));
  EXPECT_EQ(out, back);
  EXPECT_EQ(static_cast<int32_t>(out.size()), KvoList_count(&list));
  return out;
}

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

  // A node already taken out is not unlinked twice.
  int asserts = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int *>(ctx); }, &asserts,
      &oldCtx);
  EXPECT_EQ(KvoList_remove__(&list, &items[0].node), nullptr);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
  EXPECT_EQ(asserts, 1);
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));

  gDeleted = 0;
  KvoList_delAll(&list, countDelete);
  KvoList_delAll(&list, countDelete);  // an empty list hands over nothing
  EXPECT_EQ(gDeleted, 3);
  EXPECT_EQ(values(list), std::vector<int>{});
  KvoList_addHead__(&list, &items[0].node);  // usable again after delAll
  EXPECT_EQ(values(list), std::vector<int>{0});
}

// Standard layout, so that a Rec and its first member convert both ways.
struct Rec {
  SmpLink link;
  char name[8];
};

int gRecDeleted = 0;
SmpLink *cloneRec(const SmpLink *e) {  // upper-cases the name; no copy for "skip"
  const auto *r = reinterpret_cast<const Rec *>(e);
  if (std::string_view(r->name) == "skip") return nullptr;
  auto *copy = new Rec(*r);
  copy->name[0] = static_cast<char>(std::toupper(copy->name[0]));
  return &copy->link;
}
void deleteRec(SmpLink *e) {
  ++gRecDeleted;
  delete reinterpret_cast<Rec *>(e);
}

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
  SmpLink *copy = SmpList_clone(list.head, cloneRec);
  EXPECT_EQ(names(copy), "A,B,C,");
  EXPECT_EQ(copy->tag, 0x55u);
  EXPECT_EQ(names(list.head), "a,b,skip,c,");
  EXPECT_EQ(SmpList_clone(nullptr, cloneRec), nullptr);

  gRecDeleted = 0;
  SmpList_delete(copy, deleteRec);
  SmpList_delete(list.head, deleteRec);
  SmpList_delete(nullptr, deleteRec);
  EXPECT_EQ(gRecDeleted, 7);
}

TEST(StrIdMap, FirstRowWinsAndCaseIsIgnored) {
  static const StrIdMap map[] = {
      {1, "HOME"}, {2, "work"}, {3, "Home"}, {2, "office"}, {4, ""}, {0, nullptr}};
  const struct { const char *text; int32_t id; } byStr[] = {  // id -1: not found
      {"home", 1}, {"offICE", 2}, {"homes", -1}, {"hom", -1}, {"", 4}, {nullptr, 4}};
  for (const auto &r : byStr) {
    int32_t id = -1;
    EXPECT_EQ(StrIdMap_findByStr(map, r.text, &id) != 0, r.id != -1) << (r.text ? r.text : "null");
    EXPECT_EQ(id, r.id);
  }
  const struct { int32_t id; const char *word; } byId[] = {
      {1, "HOME"}, {2, "work"}, {4, ""}, {5, nullptr}, {0, nullptr}};
  for (const auto &r : byId) {
    const char *word = "?";
    EXPECT_EQ(StrIdMap_findById(map, r.id, &word) != 0, r.word != nullptr) << r.id;
    EXPECT_STREQ(word, r.word ? r.word : "?");
  }
  // Found without asking for the result; a missing map finds nothing.
  EXPECT_TRUE(StrIdMap_findByStr(map, "work", nullptr));
  EXPECT_FALSE(StrIdMap_findByStr(nullptr, "work", nullptr));
  EXPECT_FALSE(StrIdMap_findById(nullptr, 1, nullptr));
}

}  // namespace
