// The keyword tables of the calendar record, shared by the vCalendar decoder
// and encoder.
//
// A row with an empty word gives id 1 to an empty or absent text; it stands
// below the word of id 1 so that an id lookup finds the word first. The
// category and resource ids are single bits, so one member holds several.
#ifndef OSTREL_DETAIL_CALTABLES_H
#define OSTREL_DETAIL_CALTABLES_H

#include "tarnex/list.h"

namespace ostrel::cal {

inline constexpr StrIdMap kClsMap[] = {
    {0x1, "PUBLIC"}, {0x2, "PRIVATE"}, {0x4, "CONFIDENTIAL"}, {0x1, ""}, {0, nullptr}};

inline constexpr StrIdMap kCateMap[] = {
    {0x1, "APPOINTMENT"},     {0x2, "BUSINESS"},    {0x4, "EDUCATION"},
    {0x8, "HOLIDAY"},         {0x10, "MEETING"},    {0x20, "MISCELLANEOUS"},
    {0x40, "PERSONAL"},       {0x80, "PHONE_CALL"}, {0x100, "SICK_DAY"},
    {0x200, "SPECIAL OCCASION"}, {0x400, "TRAVEL"}, {0x800, "VACATION"},
    {0x1000, "ANNIVERSARY"},  {0x2000, "BIRTHDAY"}, {0x4000, "MISSION"},
    {0x8000, "MEMO"},         {0, nullptr}};

inline constexpr StrIdMap kStatMap[] = {
    {0x1, "NEEDS ACTION"}, {0x2, "ACCEPTED"},  {0x4, "SENT"},      {0x8, "TENTATIVE"},
    {0x10, "CONFIRMED"},   {0x20, "DECLINED"}, {0x40, "COMPLETED"}, {0x80, "DELEGATED"},
    {0x1, ""},             {0, nullptr}};

inline constexpr StrIdMap kRoleMap[] = {
    {0x1, "ATTENDEE"}, {0x2, "ORGANIZER"}, {0x4, "OWNER"}, {0x8, "DELEGATE"}, {0x1, ""},
    {0, nullptr}};

inline constexpr StrIdMap kExpectMap[] = {
    {0x1, "FYI"}, {0x2, "REQUIRE"}, {0x4, "REQUEST"}, {0x8, "IMMEDIATE"}, {0x1, ""},
    {0, nullptr}};

inline constexpr StrIdMap kRscMap[] = {
    {0x1, "CATERING"},      {0x2, "CHAIRS"},         {0x4, "COMPUTER PROJECTOR"},
    {0x8, "EASEL"},         {0x10, "OVERHEAD PROJECTOR"}, {0x20, "SPEAKER PHONE"},
    {0x40, "TABLE"},        {0x80, "TV"},            {0x100, "VCR"},
    {0x200, "VIDEO PHONE"}, {0x400, "VEHICLE"},      {0, nullptr}};

}  // namespace ostrel::cal

#endif  // OSTREL_DETAIL_CALTABLES_H
