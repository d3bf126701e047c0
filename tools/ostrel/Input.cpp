#include "Input.h"

#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <algorithm>
#include <memory>

#include "Format.h"

namespace ostrel_tool {
namespace {

// The library's streams count in 32-bit signed bytes.
constexpr uint64_t kMaxBytes = INT32_MAX;

bool readAll(const std::string &path, std::string *out) {
  std::FILE *in = stdin;
  if (path != "-") {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
      errno = EISDIR;
      return false;
    }
    in = std::fopen(path.c_str(), "rb");
    if (in == nullptr) return false;
  }
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) {
    // Stop reading once past the limit: the file is refused anyway.
    if (out->size() + n > kMaxBytes) {
      out->append(buf, n);
      break;
    }
    out->append(buf, n);
  }
  const bool ok = !std::ferror(in);
  if (in != stdin) std::fclose(in);
  return ok;
}

// Of the first pairs of bytes, how many have a zero in the high (BE: first)
// or low (LE: second) place: ASCII text in UTF-16 has one in nearly every
// pair, UTF-8 text almost never.
std::string guessByZeros(const std::string &data) {
  const size_t pairs = std::min<size_t>(data.size() / 2, 512);
  if (pairs < 2) return {};
  size_t zeroFirst = 0, zeroSecond = 0;
  for (size_t i = 0; i < pairs; ++i) {
    const bool a = data[2 * i] == '\0', b = data[2 * i + 1] == '\0';
    if (a && !b) ++zeroFirst;
    if (b && !a) ++zeroSecond;
  }
  if (zeroFirst * 10 >= pairs * 6 && zeroSecond * 10 < pairs) return "UTF-16BE";
  if (zeroSecond * 10 >= pairs * 6 && zeroFirst * 10 < pairs) return "UTF-16LE";
  return {};
}

struct IconvCloser {
  void operator()(void *cd) const { iconv_close(static_cast<iconv_t>(cd)); }
};

// UTF-16 to UTF-8; a unit iconv refuses (a lone surrogate) becomes U+FFFD.
bool toUtf8(const std::string &from, const char *charset, size_t skip, std::string *out,
            size_t *replaced) {
  const iconv_t cd = iconv_open("UTF-8", charset);
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  std::unique_ptr<void, IconvCloser> guard(cd);
  char *in = const_cast<char *>(from.data()) + skip;
  size_t inLeft = (from.size() - skip) & ~static_cast<size_t>(1);
  char buf[16384];
  while (inLeft > 0) {
    char *o = buf;
    size_t oLeft = sizeof buf;
    const size_t rc = iconv(cd, &in, &inLeft, &o, &oLeft);
    out->append(buf, static_cast<size_t>(o - buf));
    if (rc != static_cast<size_t>(-1) || errno == E2BIG) continue;
    // EILSEQ or EINVAL: one unit that does not convert.
    out->append("\xEF\xBF\xBD");
    ++*replaced;
    const size_t step = std::min<size_t>(2, inLeft);
    in += step;
    inLeft -= step;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  return true;
}

}  // namespace

std::string detectUtf16(const std::string &data, size_t *markLen) {
  *markLen = 0;
  if (data.size() >= 2) {
    const auto b0 = static_cast<uint8_t>(data[0]), b1 = static_cast<uint8_t>(data[1]);
    if (b0 == 0xFE && b1 == 0xFF) return *markLen = 2, "UTF-16BE";
    if (b0 == 0xFF && b1 == 0xFE) return *markLen = 2, "UTF-16LE";
  }
  return guessByZeros(data);
}

namespace {

// An XML declaration that names the UTF-16 the text was read from must
// name UTF-8 once the text is UTF-8, or an XML parser refuses it.
bool utf8Declared(std::string *text) {
  if (text->compare(0, 5, "<?xml") != 0) return false;
  const size_t end = text->find("?>");
  const size_t at = text->find("encoding=", 5);
  if (at == std::string::npos || end == std::string::npos || at > end) return false;
  const size_t from = at + 10, to = text->find_first_of("\"'", from);
  if (to == std::string::npos || to > end || (*text)[from - 1] != (*text)[to]) return false;
  std::string name = text->substr(from, to - from);
  for (char &c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (name.compare(0, 6, "UTF-16") != 0) return false;
  text->replace(from, to - from, "UTF-8");
  return true;
}

}  // namespace

bool loadInput(const std::string &path, Input *in) {
  in->name = path == "-" ? "<stdin>" : path;
  std::error_code ec;
  if (path != "-" && std::filesystem::is_regular_file(path, ec) &&
      std::filesystem::file_size(path, ec) > kMaxBytes && !ec) {
    std::fprintf(stderr, "ostrel: %s: larger than 2 GiB, not read\n", in->name.c_str());
    return false;
  }
  std::string raw;
  if (!readAll(path, &raw)) {
    std::fprintf(stderr, "ostrel: %s: cannot read: %s\n", in->name.c_str(), std::strerror(errno));
    return false;
  }
  if (raw.size() > kMaxBytes) {
    std::fprintf(stderr, "ostrel: %s: larger than 2 GiB, not read\n", in->name.c_str());
    return false;
  }
  size_t mark = 0;
  // A file that is one binary record is taken as its bytes: its zeros say
  // nothing of a text encoding.
  const bool binary = std::any_of(formats().begin(), formats().end(), [&](const Format &f) {
    return f.wholeFile && f.claims(raw) == size_t{0};
  });
  const std::string charset = binary ? std::string() : detectUtf16(raw, &mark);
  if (charset.empty()) {
    in->data = std::move(raw);
    return true;
  }
  size_t replaced = 0;
  if (!toUtf8(raw, charset.c_str(), mark, &in->data, &replaced)) {
    std::fprintf(stderr, "ostrel: %s: %s text, but this system cannot convert it\n",
                 in->name.c_str(), charset.c_str());
    return false;
  }
  in->note = charset + " text" + (mark ? " with a byte-order mark" : "") +
             ", read as UTF-8 (offsets and lines below count in the UTF-8 text)";
  if (raw.size() % 2 != 0) in->note += "; its odd last byte was dropped";
  if (replaced != 0)
    in->note += "; " + std::to_string(replaced) + " broken unit(s) replaced by U+FFFD";
  if (utf8Declared(&in->data)) in->note += "; its XML declaration now names UTF-8";
  if (in->data.size() > kMaxBytes) {
    std::fprintf(stderr, "ostrel: %s: larger than 2 GiB as UTF-8, not read\n", in->name.c_str());
    return false;
  }
  return true;
}

}  // namespace ostrel_tool
