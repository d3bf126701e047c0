#include "Dropped.h"

#include <cstdio>
#include <string_view>

#include "ostrel/ostrel.h"

namespace ostrel_tool {
namespace {

constexpr uint32_t kCatUnknown = 0x4;
constexpr int32_t kLibrary = 6, kFoundation = 5;

// The name between the quotes of an "un-handled ... field \"NAME\"" text.
bool droppedName(std::string_view text, std::string *name) {
  if (text.substr(0, 11) != "un-handled ") return false;
  const size_t open = text.find("field \"");
  if (open == std::string_view::npos) return false;
  const size_t from = open + 7;
  const size_t close = text.find('"', from);
  if (close == std::string_view::npos) return false;
  name->assign(text.substr(from, close - from));
  return true;
}

}  // namespace

DroppedLines::DroppedLines(uint32_t userCategories) : user_(userCategories) {
  DbgMng_setSink(&DroppedLines::sink, this);
  DbgMng_select(kLibrary, user_ | kCatUnknown, 3);
  if (user_ != 0) DbgMng_select(kFoundation, user_, 3);
}

DroppedLines::~DroppedLines() {
  DbgMng_reset();
  DbgMng_setSink(nullptr, nullptr);
}

std::vector<std::string> DroppedLines::take() {
  std::vector<std::string> out;
  out.swap(names_);
  return out;
}

void DroppedLines::sink(void *ctx, const char *text, int32_t len) {
  auto *self = static_cast<DroppedLines *>(ctx);
  const std::string_view block(text, static_cast<size_t>(len < 0 ? 0 : len));
  std::string name;
  const bool dropped = droppedName(block, &name);
  if (dropped) self->names_.push_back(std::move(name));
  if (self->user_ != 0 && (!dropped || (self->user_ & kCatUnknown) != 0))
    std::fwrite(block.data(), 1, block.size(), stderr);
}

}  // namespace ostrel_tool
