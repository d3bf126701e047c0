// Real vCard files from other programs: every card is read without a fault,
// none is lost or invented, and each comes back with the same fields from
// being written and read again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "ostrel/ostrel.h"
#include "tarnex/scratch.hpp"

namespace {

// A line that is `word` (case ignored), maybe followed by blanks.
bool isLine(std::string_view line, std::string_view word) {
  const auto same = [](char w, char c) { return w == std::toupper(static_cast<unsigned char>(c)); };
  if (line.size() < word.size() || !std::equal(word.begin(), word.end(), line.begin(), same))
    return false;
  return line.size() == word.size() || line[word.size()] == ' ' || line[word.size()] == '\t';
}

// What a reader must find in a text (a line end is CR LF, LF or CR).
// Cards: a BEGIN:VCARD line closed by an END:VCARD line; a BEGIN inside a
// card (an embedded AGENT card) starts nothing and its END closes the outer
// card. Broken: a line with no ":" that is neither empty, nor a fold, nor
// behind a quoted-printable soft break; or a fold behind an empty line (as
// CR CR LF line ends make), which folds onto nothing.
struct Expected {
  int cards = 0;
  bool broken = false;
};

Expected scan(const std::string &text) {
  Expected e;
  bool inside = false, softBreak = false, empty = false;
  for (size_t pos = 0; pos < text.size();) {
    const size_t eol = std::min(text.find_first_of("\r\n", pos), text.size());
    const std::string_view line = std::string_view(text).substr(pos, eol - pos);
    pos = eol + 1;
    if (eol < text.size() && text[eol] == '\r' && pos < text.size() && text[pos] == '\n') ++pos;
    if (isLine(line, "BEGIN:VCARD")) {
      inside = true;
    } else if (isLine(line, "END:VCARD") && inside) {
      ++e.cards;
      inside = false;
    }
    const bool fold = !line.empty() && (line[0] == ' ' || line[0] == '\t');
    if (!line.empty() && !fold && !softBreak && line.find(':') == std::string_view::npos)
      e.broken = true;
    if (fold && empty) e.broken = true;
    softBreak = !line.empty() && line.back() == '=';
    empty = line.empty();
  }
  return e;
}

// The card as the encoder gives it back: stream fields without content
// are not written, the rest keep their order.
void writable(PbItem *out, PbItem *in) {
  PbItem_clearx(out);
  PbEnum en;
  PbEnum_new(&en, in, nullptr);
  PbField *f = nullptr;
  int32_t slot = 0;
  while (PbEnum_next(&en, &f, nullptr)) {
    const bool stream = f->type[0] == 'P' || f->type[0] == 'S' || std::string_view(f->type) == "OL";
    if (!stream || PbSval_valid__(&f->sval)) PbField_assign(PbItem_write(out, slot++), f);
  }
  PbEnum_delete(&en);
}

std::string traced(PbItem *item) {
  tarnex::ScratchMemStrm out(0);
  PbItem_tracex(item, out, 0);
  return {reinterpret_cast<const char *>(MemStrm_data(out)), static_cast<size_t>(IStrm_size(out))};
}

TEST(VcardCorpus, EveryCardReadAndRoundTripped) {
  const char *root = std::getenv("OSTREL_CORPUS");
  const std::filesystem::path dir = root ? std::filesystem::path(root) / "vcard" : "";
  if (root == nullptr || !std::filesystem::is_directory(dir))
    GTEST_SKIP() << "no vcard corpus (OSTREL_CORPUS)";
  PbItem card, want, back;
  for (PbItem *item : {&card, &want, &back}) PbItem_new(item);
  int files = 0, total = 0, broken = 0, photos = 0;
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
      EXPECT_EQ(PbItem_cmp(&want, &back), 1)
          << name << " card " << cards << "\n" << traced(&want) << "----\n" << traced(&back);
      // Inline pictures and sounds went out as Base64 and came back compared.
      for (int32_t i = 0; i < want.size; ++i) {
        const PbField *f = PbItem_at(&want, i);
        if (f != nullptr && f->sval.strm != nullptr && f->sval.loc == VPI_LOC_INLINE &&
            IStrm_size(f->sval.strm) > 0)
          ++photos;
      }
    }
    const Expected e = scan(text);
    if (rc == OSTREL_MALFORMED) {
      // A file with a broken line stops there.
      EXPECT_TRUE(e.broken) << name << ": a fault after card " << cards;
      EXPECT_LE(cards, e.cards) << name;
      ++broken;
    } else {
      EXPECT_EQ(rc, 0) << name << ": a fault after card " << cards;
      EXPECT_EQ(cards, e.cards) << name;
    }
    ++files;
    total += cards;
  }
  for (PbItem *item : {&card, &want, &back}) PbItem_delete(item);
  std::cout << "vcard corpus: " << total << " cards in " << files << " files, " << broken
            << " files stopped at a broken line; " << photos
            << " inline pictures and sounds written and read back\n";
  EXPECT_GT(total, 0);
}

}  // namespace
