// The device records: file items of the listings and applications. Their
// trace texts are what the listings' callers read, so they are pinned byte
// for byte; copies must be deep.
#include <gtest/gtest.h>

#include <string>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

using tarnex::ScratchMemStrm;

std::string contents(IStrm *s) {
  const uint8_t *p = MemStrm_data(s);
  return p == nullptr ? "" : std::string(reinterpret_cast<const char *>(p), IStrm_size(s));
}

struct Fld {
  Fld() { FldItem_new(&item); }
  ~Fld() { FldItem_delete(&item); }
  std::string trace() {
    ScratchMemStrm out(0);
    FldItem_tracex(&item, out, 0);
    return contents(out);
  }
  FldItem item;
};

struct App {
  App() { AppItem_new(&item); }
  ~App() { AppItem_delete(&item); }
  std::string trace() {
    ScratchMemStrm out(0);
    AppItem_tracex(&item, out, 0);
    return contents(out);
  }
  AppItem item;
};

void fill(FldItem *f) {
  const KvoWchar name[] = {'P', 0xE4, 'r', 0xD83D, 0xDE00};  // "Pär" and an emoji
  KvoWcs_setWcsx(&f->name, name, 5);
  f->luid = 4000000000u;
  KvoStr_setStr(&f->width, "640");
  KvoStr_setStr(&f->title, "Song");
  f->attrs = FLD_ATTR_FILE | FLD_ATTR_FOLDER | FLD_ATTR_REMOVABLE;
  f->size = 4294967295u;
  f->perms = FLD_PERM_READ | FLD_PERM_DELETE;
  KvoStr_setStr(&f->type, "audio/mpeg");
  iso_dt_dec("20261124T101500Z", &f->modified);
}

TEST(FldItem, TraceTexts) {
  Fld fresh;
  EXPECT_EQ(fresh.trace(), "\n# FldItem beg ......\nattr = \n# FldItem end !!!!!!\n");

  Fld f;
  fill(&f.item);
  // Words in trace order whatever the bit order, two blanks after each;
  // unsigned numbers above 2^31 stay positive; perms never shows.
  EXPECT_EQ(f.trace(),
            "\n# FldItem beg ......\n"
            "name = P\xC3\xA4r\xF0\x9F\x98\x80\n"
            "luid = 4000000000\n"
            "width = 640\n"
            "title = Song\n"
            "attr = FILE  FLD  REMOVALBE DEV  \n"
            "size = 4294967295\n"
            "audio/mpeg\n"
            "modified = 20261124T101500Z\n"
            "# FldItem end !!!!!!\n");
  ScratchMemStrm dumped(0);
  FldItem_dump(&f.item, dumped, 0);
  EXPECT_EQ(contents(dumped), f.trace());
}

TEST(FldItem, ClearAssignAndClearx) {
  Fld f, copy;
  fill(&f.item);
  FldItem_assign(&copy.item, &f.item);
  EXPECT_EQ(copy.trace(), f.trace());
  EXPECT_EQ(copy.item.perms, FLD_PERM_READ | FLD_PERM_DELETE);
  EXPECT_EQ(FldItem_assign(&copy.item, &copy.item), &copy.item);
  EXPECT_EQ(copy.trace(), f.trace());

  FldItem_clear(&f.item);
  EXPECT_EQ(f.item.perms, -1);
  EXPECT_EQ(f.item.luid, 0u);
  EXPECT_EQ(f.trace(), Fld().trace());
  EXPECT_EQ(KvoStr_len(&copy.item.title), 4);  // the copy kept its own text

  // clearx gives the strings back; constructed anew, the record is usable
  // and its delete frees each string once (the sanitizer build checks).
  FldItem_clearx(&copy.item);
  EXPECT_EQ(copy.item.size, 4294967295u);
  KvoWcs_new(&copy.item.name);
  KvoWcs_new(&copy.item.dsplName);
  for (KvoStr *s : {&copy.item.width, &copy.item.height, &copy.item.orient, &copy.item.dur,
                    &copy.item.album, &copy.item.artist, &copy.item.title, &copy.item.type})
    KvoStr_new(s);
  KvoStr_setStr(&copy.item.album, "Again");
  EXPECT_NE(copy.trace().find("album = Again\n"), std::string::npos);
}

TEST(FldItem, NewCppLeavesStringsToTheWrapper) {
  FldItem item;
  item.luid = 7;
  FldItem_newCpp(&item);
  EXPECT_EQ(item.tag, FLD_ITEM_TAG | 0x80000000u);
  EXPECT_EQ(item.luid, 7u);
  EXPECT_EQ(item.perms, -1);
  EXPECT_EQ(item.attrs, 0);
}

TEST(AppItem, TraceTexts) {
  App fresh;
  EXPECT_EQ(fresh.trace(),
            "# AppItem beg......\n"
            "verCode : 0\r\n"
            "pkgType : def apk\r\n"
            "pkgSize : 0\r\n"
            "sysPkg : false\r\n"
            "iconType : def png\r\n"
            "icon : ......\r\n"
            "# AppItem end !!!!!!\n");

  struct Row {
    int32_t pkgPos;
    const char *line;  // null: no pkgPos line
  };
  for (const Row &row : {Row{0, nullptr}, Row{1, "pkgPos : Phone\r\n"},
                         Row{2, "pkgPos : SdCard\r\n"}, Row{-5, "pkgPos : SdCard\r\n"}}) {
    App a;
    a.item.pkgPos = row.pkgPos;
    const std::string text = a.trace();
    EXPECT_EQ(text.find("pkgPos"), row.line ? text.find(row.line) : std::string::npos)
        << row.pkgPos;
  }

  App a;
  KvoStr_setStr(&a.item.name, "Maps");
  KvoStr_setStr(&a.item.platform, "os");
  KvoStr_setStr(&a.item.perms, "net\nsms");
  a.item.verCode = -3;
  a.item.sysPkg = 1;
  const std::string text = a.trace();
  EXPECT_NE(text.find("name : Maps\r\nverCode : -3\r\nplatform : os\nperms :\nnet\nsms\r\n"),
            std::string::npos);
  EXPECT_NE(text.find("sysPkg : true\r\n"), std::string::npos);

  ScratchMemStrm out(0);
  IStrm_puts(out, "kept", -1);
  AppItem_dump(&a.item, out, 0);
  EXPECT_EQ(contents(out), "kept");
}

TEST(AppItem, IconsAreOwned) {
  App a;
  IStrm_write(a.item.icon, "\x89PNG\0x", 6);
  a.item.iconType = 2;
  KvoStr_setStr(&a.item.pkgPath, "/data/app.apk");

  AppItem *clone = AppItem_clone(&a.item);
  AppItem_clear(&a.item);  // the clone's bytes are its own
  EXPECT_EQ(IStrm_size(a.item.icon), 0);
  EXPECT_EQ(a.item.iconType, 0);
  EXPECT_EQ(contents(clone->icon), std::string("\x89PNG\0x", 6));
  EXPECT_EQ(clone->iconType, 2);

  // Assign with an icon stream missing on either side: the target's own
  // stream is emptied, never shared or replaced.
  App target;
  IStrm_write(target.item.icon, "old", 3);
  IStrm *saved = clone->icon;
  clone->icon = nullptr;
  AppItem_assign(&target.item, clone);
  EXPECT_EQ(IStrm_size(target.item.icon), 0);
  EXPECT_EQ(KvoStr_len(&target.item.pkgPath), 13);
  clone->icon = saved;
  IStrm *own = target.item.icon;
  target.item.icon = nullptr;
  AppItem_assign(&target.item, clone);
  EXPECT_EQ(target.item.icon, nullptr);
  target.item.icon = own;
  AppItem_assign(&target.item, clone);
  EXPECT_EQ(contents(target.item.icon), std::string("\x89PNG\0x", 6));
  AppItem_delete(clone);
}

TEST(XmmsItem, TraceByKind) {
  XmmsItem *item = XmmsItem_new();
  EXPECT_EQ(item->tag, XMMS_ITEM_TAG | 0x80000000u);
  ScratchMemStrm out(0);
  auto trace = [&] {
    XmmsItem_tracex(item, out, 0);
    return contents(out);
  };
  EXPECT_EQ(trace(), "# XmmsItem beg ......\r\n\tname: \"\"\r\n# XmmsItem end !!!!!!\r\n");

  KvoStr_setStr(&item->name, "Inbox");
  item->attrs = XMMS_ATTR_FOLDER | XMMS_ATTR_ITEM;  // a folder first, whatever else it is
  item->perms = FLD_PERM_WRITE | FLD_PERM_READ | FLD_PERM_DELETE;
  KvoStr_setStr(&item->from, "+4911");
  EXPECT_EQ(trace(), "# XmmsItem beg ......\r\n\tname: \"Inbox\"\r\n\tattrs: fld\r\n"
                     "\tperms: \"DRW\"\r\n# XmmsItem end !!!!!!\r\n");

  item->attrs = XMMS_ATTR_ITEM;
  item->stat = XMMS_STAT_SENT;
  item->size = 3000000000u;
  iso_dt_dec("20261124T080000", &item->xptTime);
  EXPECT_EQ(trace(), "# XmmsItem beg ......\r\n\tname: \"Inbox\"\r\n\tattrs: item\r\n"
                     "\tstat: \"sent\"\r\n\tsize: \"3000000000\"\r\n\tfrom: \"+4911\"\r\n"
                     "\txptTime: \"20261124T080000\"\r\n# XmmsItem end !!!!!!\r\n");

  XmmsItem_clear(item);
  EXPECT_EQ(item->perms, -1);
  EXPECT_EQ(KvoStr_len(&item->from), 0);
  XmmsItem_delete(item);
}

}  // namespace
