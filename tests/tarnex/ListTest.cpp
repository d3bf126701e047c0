// KvoList, SmpList and StrIdMap.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tarnex/list.h"

namespace {

struct Item {
  KvoListNode node;  // first member: the list's view of the item
  int value;
};

int gDeleted = 0;
void countingDelete(KvoListNode *n) {
  ++gDeleted;
  delete reinterpret_cast<Item *>(n);
}

std::vector<int> values(const KvoList &list) {
  std::vector<int> out;
  for (const KvoListNode *n = list.head; n; n = n->next) {
    out.push_back(reinterpret_cast<const Item *>(n)->value);
  }
  // The backward links must tell the same story.
  std::vector<int> back;
  for (const KvoListNode *n = list.tail; n; n = n->prev) {
    back.insert(back.begin(), reinterpret_cast<const Item *>(n)->value);
  }
  EXPECT_EQ(out, back);
  EXPECT_EQ(static_cast<int32_t>(out.size()), KvoList_count(&list));
  return out;
}

int at(const KvoList &list, int32_t i) {
  const KvoListNode *n = KvoList_at(&list, i);
  return n ? reinterpret_cast<const Item *>(n)->value : -1;
}

TEST(KvoList, AddRemoveAtAndDelAll) {
  KvoList list;
  KvoList_init(&list, 7);
  EXPECT_EQ(list.flags, 7);
  std::vector<Item *> items;
  for (int v = 0; v < 6; ++v) items.push_back(new Item{{}, v});
  KvoList_addTail__(&list, &items[1]->node);
  KvoList_addTail__(&list, &items[2]->node);
  KvoList_addHead__(&list, &items[0]->node);
  KvoList_addTail__(&list, &items[3]->node);
  KvoList_addTail__(&list, &items[4]->node);
  KvoList_addTail__(&list, &items[5]->node);
  EXPECT_EQ(values(list), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(at(list, i), i);  // both walking directions
  EXPECT_EQ(at(list, -1), -1);
  EXPECT_EQ(at(list, 6), -1);

  // Middle, head and tail each fix different links.
  EXPECT_EQ(KvoList_remove__(&list, &items[2]->node), &items[2]->node);
  EXPECT_EQ(KvoList_remove__(&list, &items[0]->node), &items[0]->node);
  EXPECT_EQ(KvoList_remove__(&list, &items[5]->node), &items[5]->node);
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));
  EXPECT_EQ(items[2]->node.next, nullptr);
  EXPECT_EQ(items[2]->node.prev, nullptr);

  // A node already taken out is not unlinked twice.
  int asserts = 0;
  void *oldCtx = nullptr;
  KvoAssertHandler old = Tarnex_setAssertHandler(
      [](void *ctx, const char *, const char *, int32_t) { ++*static_cast<int *>(ctx); }, &asserts,
      &oldCtx);
  EXPECT_EQ(KvoList_remove__(&list, &items[0]->node), nullptr);
  Tarnex_setAssertHandler(old, oldCtx, nullptr);
  EXPECT_EQ(asserts, 1);
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));

  gDeleted = 0;
  KvoList_delAll(&list, countingDelete);
  EXPECT_EQ(gDeleted, 3);
  EXPECT_EQ(values(list), std::vector<int>{});
  EXPECT_EQ(list.head, nullptr);
  EXPECT_EQ(list.tail, nullptr);
  KvoList_delAll(&list, countingDelete);  // an empty list hands over nothing
  EXPECT_EQ(gDeleted, 3);
  delete items[0];
  delete items[2];
  delete items[5];

  // The list is usable again after delAll.
  Item again{{}, 9};
  KvoList_addHead__(&list, &again.node);
  EXPECT_EQ(values(list), std::vector<int>{9});
  KvoList_delAll(&list, nullptr);
  EXPECT_EQ(KvoList_count(&list), 0);
}

// Standard layout, so that a Rec and its first member convert both ways.
struct Rec {
  SmpLink link;
  char name[8];
};

int gRecDeleted = 0;
SmpLink *cloneRec(const SmpLink *e) {
  const auto *r = reinterpret_cast<const Rec *>(e);
  if (std::string_view(r->name) == "skip") return nullptr;
  auto *copy = new Rec{{r->link.tag, nullptr}, {}};
  const size_t n = strnlen(r->name, sizeof copy->name - 2);
  std::memcpy(copy->name, r->name, n);
  copy->name[n] = '\'';
  return &copy->link;
}
void deleteRec(SmpLink *e) {
  ++gRecDeleted;
  delete reinterpret_cast<Rec *>(e);
}

std::vector<std::string> names(const SmpLink *head) {
  std::vector<std::string> out;
  for (; head; head = head->next) out.push_back(reinterpret_cast<const Rec *>(head)->name);
  return out;
}

TEST(SmpList, BuildCloneInOrderAndDelete) {
  SmpList list;
  SmpList_init(&list);
  for (const char *n : {"a", "b", "skip", "c"}) {
    auto *r = new Rec{{0x55, reinterpret_cast<SmpLink *>(0x1)}, {}};  // next is overwritten
    std::snprintf(r->name, sizeof r->name, "%s", n);
    SmpList_addTail(&list, &r->link);
  }
  EXPECT_EQ(list.count, 4);
  EXPECT_EQ(names(list.head), (std::vector<std::string>{"a", "b", "skip", "c"}));

  SmpLink *copy = SmpList_clone(list.head, cloneRec);
  EXPECT_EQ(names(copy), (std::vector<std::string>{"a'", "b'", "c'"}));
  EXPECT_EQ(copy->tag, 0x55u);
  EXPECT_EQ(names(list.head).size(), 4u);  // the original is untouched
  EXPECT_EQ(SmpList_clone(nullptr, cloneRec), nullptr);

  gRecDeleted = 0;
  SmpList_delete(copy, deleteRec);
  EXPECT_EQ(gRecDeleted, 3);
  SmpList_delete(list.head, deleteRec);
  EXPECT_EQ(gRecDeleted, 7);
  SmpList_delete(nullptr, deleteRec);
  EXPECT_EQ(gRecDeleted, 7);
}

TEST(StrIdMap, FirstRowWinsAndCaseIsIgnored) {
  static const StrIdMap map[] = {
      {1, "HOME"}, {2, "work"}, {3, "Home"}, {2, "office"}, {4, ""}, {0, nullptr},
  };
  struct ByStr {
    const char *text;
    int32_t found, id;
  };
  const ByStr byStr[] = {
      {"home", 1, 1}, {"HOME", 1, 1}, {"Work", 1, 2}, {"offICE", 1, 2},
      {"homes", 0, -1}, {"hom", 0, -1}, {"", 1, 4}, {nullptr, 1, 4},
  };
  for (const ByStr &r : byStr) {
    int32_t id = -1;
    EXPECT_EQ(StrIdMap_findByStr(map, r.text, &id) != 0, r.found != 0) << (r.text ? r.text : "null");
    EXPECT_EQ(id, r.id);
  }
  struct ById {
    int32_t id;
    const char *word;
  };
  const ById byId[] = {{1, "HOME"}, {2, "work"}, {3, "Home"}, {4, ""}, {5, nullptr}, {0, nullptr}};
  for (const ById &r : byId) {
    const char *word = nullptr;
    EXPECT_EQ(StrIdMap_findById(map, r.id, &word) != 0, r.word != nullptr) << r.id;
    if (r.word) {
      EXPECT_STREQ(word, r.word);
    }
  }
  // Found without asking for the result; a missing map finds nothing.
  EXPECT_TRUE(StrIdMap_findByStr(map, "work", nullptr));
  EXPECT_FALSE(StrIdMap_findByStr(nullptr, "work", nullptr));
  EXPECT_FALSE(StrIdMap_findById(nullptr, 1, nullptr));
}

}  // namespace
