// ostrel extract and ostrel mms-encode: the media of a multimedia message
// out to files, and files into a message. Both parse their own arguments,
// since addresses and a directory are theirs alone.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "MmsCommands.h"
#include "ostrel/ostrel.h"

namespace ostrel_tool {

namespace {

namespace fs = std::filesystem;

int usage(const std::string &message, const char *line) {
  std::fprintf(stderr, "ostrel: %s\n%s", message.c_str(), line);
  return 2;
}

constexpr const char *kExtractUsage = "usage: ostrel extract FILE -d DIR [--force]\n";
constexpr const char *kEncodeUsage =
    "usage: ostrel mms-encode FILE... -o OUT [--to|--cc|--bcc ADDR]... [--subject TEXT]\n";

bool readAll(const std::string &path, std::string *bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes->assign(std::istreambuf_iterator<char>(in), {});
  return true;
}

struct Item {
  MmsItem *p = MmsItem_new(nullptr);
  ~Item() { MmsItem_delete(p); }
};

std::string typeWord(uint8_t type) {
  static const char *const kNames[] = {"m-send-req",       "m-send-conf",       "m-notification-ind",
                                       "m-notifyresp-ind", "m-retrieve-conf",   "m-acknowledge-ind",
                                       "m-delivery-ind",   "m-read-rec-ind",    "m-read-orig-ind"};
  if (type >= 0x80 && type < 0x80 + std::size(kNames)) return kNames[type - 0x80];
  char hex[8];
  std::snprintf(hex, sizeof hex, "0x%02X", type);
  return hex;
}

// A medium's name as a file name inside the directory: its last path
// component, without control bytes; a name that is left empty or is "."
// or ".." becomes "medium-N".
std::string safeName(std::string_view name, size_t index) {
  const size_t cut = name.find_last_of("/\\");
  if (cut != std::string_view::npos) name.remove_prefix(cut + 1);
  std::string out;
  for (char c : name)
    if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) out += c;
  if (out.empty() || out == "." || out == "..") out = "medium-" + std::to_string(index);
  return out;
}

// "a.jpg", then "a-2.jpg", "a-3.jpg" for later media of the same name.
std::string numbered(const std::string &name, int n) {
  if (n == 1) return name;
  const size_t dot = name.rfind('.');
  const size_t at = dot == std::string::npos || dot == 0 ? name.size() : dot;
  return name.substr(0, at) + "-" + std::to_string(n) + name.substr(at);
}

std::string mediaBytes(IStrm *s) {
  std::string out(static_cast<size_t>(IStrm_size(s)), '\0');
  IStrm_rewind(s);
  const int32_t got = IStrm_read(s, out.data(), static_cast<int32_t>(out.size()));
  out.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return out;
}

int runExtract(const std::vector<std::string> &args) {
  std::string file, dir;
  bool force = false;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "-d" && i + 1 < args.size())
      dir = args[++i];
    else if (args[i] == "--force")
      force = true;
    else if (args[i] == "--help" || args[i] == "-h")
      return std::fputs(kExtractUsage, stdout), 0;
    else if (!args[i].empty() && args[i][0] == '-')
      return usage("unknown option '" + args[i] + "'", kExtractUsage);
    else if (file.empty())
      file = args[i];
    else
      return usage("extract reads one FILE", kExtractUsage);
  }
  if (file.empty() || dir.empty()) return usage("extract needs FILE and -d DIR", kExtractUsage);
  std::string bytes;
  if (!readAll(file, &bytes)) return std::fprintf(stderr, "%s: cannot be read\n", file.c_str()), 1;
  std::error_code ec;
  fs::create_directories(dir, ec);
  if (!fs::is_directory(dir)) return std::fprintf(stderr, "%s: not a directory\n", dir.c_str()), 1;
  StrStrm storage;
  IStrm *in = StrStrm_xcreate__(&storage, bytes.data(), static_cast<int32_t>(bytes.size()),
                                __FILE__, __LINE__);
  Item item;
  const int32_t rc = mms_dec(in, item.p);
  IStrm_delete(in);
  int status = rc == 0 ? 0 : 1;
  if (rc != 0) std::fprintf(stderr, "%s: no message body (result %d)\n", file.c_str(), rc);
  std::set<std::string> used;
  size_t index = 0, written = 0;
  MmsMediaEnum *walk = MmsItem_medias(item.p);
  while (MmsMedia *m = MmsMediaEnum_next(walk)) {
    const std::string base = safeName(m->name.buf, ++index);
    std::string name;
    for (int n = 1; used.count(name = numbered(base, n)) != 0; ++n) {
    }
    used.insert(name);
    const fs::path path = fs::path(dir) / name;
    // "x" refuses a file that is there already, also one made meanwhile.
    std::FILE *out = std::fopen(path.c_str(), force ? "wb" : "wbx");
    if (out == nullptr) {
      std::fprintf(stderr, "%s: %s (use --force to overwrite)\n", path.c_str(),
                   fs::exists(path) ? "exists" : "cannot be written");
      status = 1;
      continue;
    }
    const std::string data = mediaBytes(m->strm);
    const bool ok = std::fwrite(data.data(), 1, data.size(), out) == data.size();
    if (std::fclose(out) != 0 || !ok) {
      std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
      status = 1;
      continue;
    }
    std::printf("%s (%s, %zu bytes)\n", path.c_str(), m->type.buf, data.size());
    ++written;
  }
  MmsMediaEnum_delete(walk);
  std::printf("%s: %zu media written to %s\n", file.c_str(), written, dir.c_str());
  return status;
}

// The encoder sends phone numbers ("+" or a digit, then digits) and
// addresses with an "@"; anything else it would leave out unsaid.
bool sendable(const std::string &addr) {
  if (addr.empty() || addr.find_first_of(",;") != std::string::npos) return false;
  if (addr.find('@') != std::string::npos) return true;
  if (addr[0] != '+' && (addr[0] < '0' || addr[0] > '9')) return false;
  for (size_t i = 1; i < addr.size(); ++i)
    if (addr[i] < '0' || addr[i] > '9') return false;
  return true;
}

enum class Kind { kImage, kVideo, kText, kAudio, kOther };

Kind kindOf(const std::string &name) {
  const size_t dot = name.rfind('.');
  std::string ext = dot == std::string::npos ? "" : name.substr(dot + 1);
  for (char &c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const auto in = [&ext](std::initializer_list<const char *> words) {
    for (const char *w : words)
      if (ext == w) return true;
    return false;
  };
  if (in({"jpg", "jpeg", "gif", "png", "bmp", "wbmp", "tif", "tiff"})) return Kind::kImage;
  if (in({"mp4", "3gp", "3g2", "avi", "mpeg"})) return Kind::kVideo;
  if (in({"txt"})) return Kind::kText;
  if (in({"amr", "mp3", "aac", "wav", "midi", "m4a", "awb", "imy", "ogg", "wma"}))
    return Kind::kAudio;
  return Kind::kOther;
}

struct SlideBuf {
  MmsSlide s{};
  SlideBuf() {
    for (KvoStr *k : {&s.text, &s.img1, &s.img2, &s.audio, &s.video}) KvoStr_new(k);
  }
  ~SlideBuf() {
    for (KvoStr *k : {&s.text, &s.img1, &s.img2, &s.audio, &s.video}) KvoStr_delete(k);
  }
  bool empty() const { return s.text.len + s.img1.len + s.audio.len + s.video.len == 0; }
  // Image top and text bottom, video top and text bottom, or full.
  void finish() {
    const bool text = s.text.len != 0;
    s.layout = s.img1.len != 0 ? (text ? 4 : 2) : s.video.len != 0 ? (text ? 8 : 3) : text ? 1 : 0;
    s.dur = 5000;
  }
};

int runEncode(const std::vector<std::string> &args) {
  std::vector<std::string> files;
  std::string output, subject;
  Item item;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string &a = args[i];
    const bool hasValue = i + 1 < args.size();
    if ((a == "--to" || a == "--cc" || a == "--bcc") && hasValue) {
      const std::string &addr = args[++i];
      if (!sendable(addr))
        return usage("'" + addr + "' is not an address the encoder sends (a phone number or "
                     "an address with \"@\")", kEncodeUsage);
      MmsHdr *h = &item.p->hdr;
      (a == "--to" ? MmsHdr_addTo : a == "--cc" ? MmsHdr_addCc : MmsHdr_addBcc)(h, addr.c_str());
    } else if (a == "--subject" && hasValue) {
      subject = args[++i];
    } else if (a == "-o" && hasValue) {
      output = args[++i];
    } else if (a == "--help" || a == "-h") {
      return std::fputs(kEncodeUsage, stdout), 0;
    } else if (!a.empty() && a[0] == '-') {
      return usage("unknown or incomplete option '" + a + "'", kEncodeUsage);
    } else {
      files.push_back(a);
    }
  }
  if (files.empty() || output.empty()) return usage("mms-encode needs FILE... and -o OUT", kEncodeUsage);
  KvoStr_setStr(&item.p->hdr.title, subject.c_str());
  SlideBuf slide;
  const auto flush = [&] {
    if (slide.empty()) return;
    slide.finish();
    MmsItem_addSlide(item.p, &slide.s);
    MmsSlide_clear(&slide.s);
  };
  for (const std::string &path : files) {
    std::string bytes;
    if (!readAll(path, &bytes)) return std::fprintf(stderr, "%s: cannot be read\n", path.c_str()), 1;
    const std::string name = fs::path(path).filename().string();
    MmsMedia m{};
    KvoStr_setStr(KvoStr_new(&m.name), name.c_str());
    KvoStr_new(&m.type);
    StrStrm storage;
    m.strm = StrStrm_xcreate__(&storage, bytes.data(), static_cast<int32_t>(bytes.size()),
                               __FILE__, __LINE__);
    MmsItem_addMedia(item.p, &m);
    IStrm_delete(m.strm);
    KvoStr_delete(&m.name);
    KvoStr_delete(&m.type);
    // Each image or video opens a slide; text and audio join the one before.
    switch (kindOf(name)) {
      case Kind::kImage:
      case Kind::kVideo:
        flush();
        KvoStr_setStr(kindOf(name) == Kind::kImage ? &slide.s.img1 : &slide.s.video, name.c_str());
        break;
      case Kind::kText:
        if (slide.s.text.len != 0) flush();
        KvoStr_setStr(&slide.s.text, name.c_str());
        break;
      case Kind::kAudio:
        if (slide.s.audio.len != 0) flush();
        KvoStr_setStr(&slide.s.audio, name.c_str());
        break;
      case Kind::kOther:
        break;
    }
  }
  flush();
  const std::string temp = output + ".part";
  {
    IStrm *out = FileStrm_xcreatex__(nullptr, temp.c_str(), "wb", 0, __FILE__, __LINE__);
    if (out == nullptr) return std::fprintf(stderr, "%s: cannot be written\n", temp.c_str()), 1;
    mms_enc(out, item.p);
    IStrm_delete(out);
  }
  // Read back what was written before it replaces OUT.
  std::string written;
  Item back;
  int32_t rc = -1;
  if (readAll(temp, &written)) {
    StrStrm storage;
    IStrm *in = StrStrm_xcreate__(&storage, written.data(), static_cast<int32_t>(written.size()),
                                  __FILE__, __LINE__);
    rc = mms_dec(in, back.p);
    IStrm_delete(in);
  }
  if (rc != 0 || MmsItem_mediaCount(back.p) != MmsItem_mediaCount(item.p)) {
    std::remove(temp.c_str());
    return std::fprintf(stderr, "%s: the message written does not read back\n", output.c_str()), 1;
  }
  std::error_code ec;
  fs::rename(temp, output, ec);
  if (ec) return std::fprintf(stderr, "%s: %s\n", output.c_str(), ec.message().c_str()), 1;
  const int32_t media = MmsItem_mediaCount(back.p), slides = MmsItem_slideCount(back.p);
  std::printf("%s: 1 MMS message (%s: %d %s, %d %s)\n", output.c_str(),
              typeWord(back.p->hdr.msgType).c_str(), media, media == 1 ? "medium" : "media",
              slides, slides == 1 ? "slide" : "slides");
  return 0;
}

}  // namespace

int runMmsCommand(const std::string &command, const std::vector<std::string> &args) {
  return command == "extract" ? runExtract(args) : runEncode(args);
}

bool isMmsCommand(const std::string &command) {
  return command == "extract" || command == "mms-encode";
}

}  // namespace ostrel_tool
