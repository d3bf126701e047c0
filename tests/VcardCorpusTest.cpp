// Real vCard files from other programs: every card is read without a fault,
// none is lost or invented, and each comes back with the same fields from
// being written and read again.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <algorithm>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

bool startsLine(const std::string &text, size_t pos, const char *word) {
  const size_t n = std::strlen(word);
  if (pos + n > text.size()) return false;
  for (size_t i = 0; i < n; ++i)
    if (std::toupper(static_cast<unsigned char>(text[pos + i])) != word[i]) return false;
  return pos + n == text.size() || text[pos + n] == '\r' || text[pos + n] == '\n' ||
         text[pos + n] == ' ' || text[pos + n] == '\t';
}

// Walks the lines of a text (a line end is CR LF, LF or CR).
template <class OnLine>
void eachLine(const std::string &text, OnLine onLine) {
  for (size_t pos = 0; pos < text.size();) {
    const size_t eol = std::min(text.find_first_of("\r\n", pos), text.size());
    onLine(pos, std::string_view(text).substr(pos, eol - pos));
    pos = eol + 1;
    if (eol < text.size() && text[eol] == '\r' && pos < text.size() && text[pos] == '\n') ++pos;
  }
}

// Cards a reader must find: a BEGIN:VCARD line at a line start closed by an
// END:VCARD line. A BEGIN inside a card (an AGENT card embedded in 2.1
// style) starts nothing: its END closes the outer card, whose own END then
// stands outside any card. A card never closed is no card.
int expectedCards(const std::string &text) {
  int count = 0;
  bool inside = false;
  eachLine(text, [&](size_t pos, std::string_view) {
    if (startsLine(text, pos, "BEGIN:VCARD")) {
      inside = true;
    } else if (startsLine(text, pos, "END:VCARD") && inside) {
      ++count;
      inside = false;
    }
  });
  return count;
}

// What the property grammar rejects: a line with no ":" that is neither
// empty, nor a fold, nor the text after a quoted-printable soft break; or
// a fold behind an empty line (as CR CR LF line ends make), which folds
// onto nothing.
bool hasBrokenLine(const std::string &text) {
  bool broken = false, softBreak = false, empty = false;
  eachLine(text, [&](size_t, std::string_view line) {
    const bool fold = !line.empty() && (line[0] == ' ' || line[0] == '\t');
    if (!line.empty() && !fold && !softBreak && line.find(':') == std::string_view::npos)
      broken = true;
    if (fold && empty) broken = true;
    softBreak = !line.empty() && line.back() == '=';
    empty = line.empty();
  });
  return broken;
}

bool isStreamKind(const char *type) {
  return type[0] == 'P' || type[0] == 'S' || (type[0] == 'O' && type[1] == 'L');
}

// The card as the encoder gives it back: stream fields without content
// are not written, the rest keep their order.
void writable(PbItem *out, PbItem *in) {
  PbItem_clearx(out);
  PbEnum en;
  PbEnum_new(&en, in, nullptr);
  PbField *f = nullptr;
  int32_t slot = 0;
  while (PbEnum_next(&en, &f, nullptr))
    if (!isStreamKind(f->type) || PbSval_valid__(&f->sval))
      PbField_assign(PbItem_write(out, slot++), f);
  PbEnum_delete(&en);
}

TEST(VcardCorpus, EveryCardReadAndRoundTripped) {
  const char *root = std::getenv("OSTREL_CORPUS");
  const std::filesystem::path dir = root ? std::filesystem::path(root) / "vcard" : "";
  if (root == nullptr || !std::filesystem::is_directory(dir))
    GTEST_SKIP() << "no vcard corpus (OSTREL_CORPUS)";
  PbItem card, want, back;
  PbItem_new(&card);
  PbItem_new(&want);
  PbItem_new(&back);
  int files = 0, total = 0, broken = 0;
  for (const auto &entry : std::filesystem::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const std::string name = entry.path().filename().string();
    tarnex::ScratchStrStrm in(text);
    int cards = 0;
    int32_t rc;
    uint32_t ver = 0;
    while ((rc = Vcard_dec(in, &card, &ver)) == 1) {
      ++cards;
      writable(&want, &card);
      tarnex::ScratchMemStrm out(0);
      EXPECT_EQ(Vcard_enc(out, &card, ver), 0) << name;
      IStrm_rewind(out);
      PbItem_clearx(&back);  // cleared fields of the last card would keep slots
      ASSERT_EQ(Vcard_dec(out, &back, nullptr), 1) << name << " card " << cards;
      tarnex::ScratchMemStrm a(0), b(0);
      PbItem_tracex(&want, a, 0);
      PbItem_tracex(&back, b, 0);
      EXPECT_EQ(PbItem_cmp(&want, &back), 1)
          << name << " card " << cards << "\n"
          << MemStrm_data(a) << "----\n"
          << MemStrm_data(b);
    }
    if (rc == OSTREL_MALFORMED) {
      // A file with a broken line stops there, as the format's rules say.
      EXPECT_TRUE(hasBrokenLine(text)) << name << ": a fault after card " << cards;
      EXPECT_LE(cards, expectedCards(text)) << name;
      ++broken;
    } else {
      EXPECT_EQ(rc, 0) << name << ": a fault after card " << cards;
      EXPECT_EQ(cards, expectedCards(text)) << name;
    }
    ++files;
    total += cards;
  }
  PbItem_delete(&back);
  PbItem_delete(&want);
  PbItem_delete(&card);
  testing::Test::RecordProperty("cards", total);
  std::cout << "vcard corpus: " << total << " cards in " << files << " files, " << broken
            << " files stopped at a broken line\n";
  EXPECT_GT(total, 0);
}

}  // namespace
