#include "templator/mark_scratch.h"

namespace {

constexpr std::size_t kMostSpareParams = 16;  // a mark of a hundred thousand leaves no more behind

}  // namespace

std::unique_ptr<std::wstringstream> MarkScratch::take_param() {
  if (spare_params.empty()) return std::make_unique<std::wstringstream>();
  auto param = std::move(spare_params.back());
  spare_params.pop_back();
  return param;
}

void ReusableMark::reset() {
  data.Type = 0;
  data.Name.str({});
  data.Key.reset();
  scratch.spare_params.reserve(kMostSpareParams);
  while (!data.Params.empty()) {
    std::unique_ptr<std::wstringstream> param(data.Params.back());
    data.Params.pop_back();
    param->str({});
    if (scratch.spare_params.size() < kMostSpareParams) scratch.spare_params.push_back(std::move(param));
  }
}

std::unique_ptr<ReusableMark> IdleMarks::take() {
  if (!first_) return std::make_unique<ReusableMark>();
  auto mark = std::move(first_);
  first_ = std::move(mark->next_idle);
  return mark;
}

void IdleMarks::give_back(std::unique_ptr<ReusableMark> mark) noexcept {
  mark->next_idle = std::move(first_);
  first_ = std::move(mark);
}
