// The word tables of the vCard codec, shared by its decoder and encoder.
//
// Parameter words are searched anywhere in the parameter text (";HOME",
// ";TYPE=HOME", ";TYPE=WORK,HOME" all count), so a rule is an ordered list
// of {word, letter} rows and the first word found wins. The encoder writes
// these same words back, which is why a decoded type survives a round trip.
#ifndef OSTREL_DETAIL_VCARDTABLES_H
#define OSTREL_DETAIL_VCARDTABLES_H

#include <array>
#include <cstdint>
#include <string_view>

#include "tarnex/text.h"

namespace ostrel::vcard {

struct WordLetter {
  const char *word;
  char letter;
};

// One search rule: rows in test order, and the letter when none is found
// (0: the rule has no default and the line is dropped).
struct LetterRule {
  const WordLetter *rows;
  int32_t count;
  char fallback;

  char find(const char *params) const {
    for (int32_t i = 0; i < count; ++i)
      if (kvo_stristr(params, rows[i].word) != nullptr) return rows[i].letter;
    return fallback;
  }
};

inline constexpr WordLetter kTelPosRows[] = {{"HOME", 'H'}, {"WORK", 'W'}};
inline constexpr WordLetter kTelDevRows[] = {{"FAX", 'F'},   {"CELL", 'C'},  {"VIDEO", 'E'},
                                             {"PAGER", 'P'}, {"MSG", 'M'},   {"CAR", 'R'},
                                             {"ISDN", 'N'},  {"MODEM", 'D'}};
inline constexpr WordLetter kEmailPosRows[] = {{"HOME", 'H'}, {"WORK", 'W'}, {"CELL", 'C'}};
inline constexpr WordLetter kExtTelRows[] = {
    {"COMPM", 'H'}, {"ASSISTANT", 'A'}, {"CALLBACK", 'K'}, {"RADIO", 'I'}, {"TTYTDD", 'Y'},
    {"MMS", 'S'},   {"TELEX", 'G'},     {"MAIN", 'Z'},     {"NET", 'T'}};

template <size_t N>
constexpr LetterRule rule(const WordLetter (&rows)[N], char fallback) {
  return {rows, static_cast<int32_t>(N), fallback};
}

// Position of TEL, URL and ADR; position of EMAIL; device of TEL; the
// extension of X-MS-TEL, which has no default.
inline constexpr LetterRule kPosRule = rule(kTelPosRows, 'P');
inline constexpr LetterRule kEmailPosRule = rule(kEmailPosRows, 'P');
inline constexpr LetterRule kDevRule = rule(kTelDevRows, 'V');
inline constexpr LetterRule kExtTelRule = rule(kExtTelRows, '\0');

// The words the encoder writes for a letter: the same rows, read backwards,
// plus VOICE, the device the decoder assumes when none is named.
inline constexpr WordLetter kTelDevWords[] = {{"VOICE", 'V'}, {"CELL", 'C'},  {"FAX", 'F'},
                                              {"PAGER", 'P'}, {"MSG", 'M'},   {"VIDEO", 'E'},
                                              {"CAR", 'R'},   {"ISDN", 'N'},  {"MODEM", 'D'}};

template <size_t N>
constexpr const char *wordOf(const WordLetter (&rows)[N], char letter) {
  for (const WordLetter &row : rows)
    if (row.letter == letter) return row.word;
  return nullptr;
}

// Every letter of a table names one word, or a decoded type could be
// written back under another word.
template <size_t N>
constexpr bool lettersUnique(const WordLetter (&rows)[N]) {
  for (size_t i = 0; i < N; ++i)
    for (size_t j = i + 1; j < N; ++j)
      if (rows[i].letter == rows[j].letter) return false;
  return true;
}
static_assert(lettersUnique(kTelPosRows) && lettersUnique(kTelDevRows) &&
              lettersUnique(kEmailPosRows) && lettersUnique(kExtTelRows) &&
              lettersUnique(kTelDevWords));
// The encoder knows a word for every device the decoder can give.
static_assert([] {
  for (const WordLetter &row : kTelDevRows)
    if (wordOf(kTelDevWords, row.letter) == nullptr) return false;
  return wordOf(kTelDevWords, kDevRule.fallback) != nullptr;
}());

}  // namespace ostrel::vcard

#endif  // OSTREL_DETAIL_VCARDTABLES_H
