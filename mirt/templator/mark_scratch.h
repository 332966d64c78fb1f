// What scanning a mark needs besides the mark, and marks that have been drawn, to be filled again.
//
// Making a stream costs more than scanning the text that it will hold. A parsed template keeps its marks;
// streaming, which needs a mark only until it is drawn, takes it from here.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "templator/mark_data.h"

struct MarkScratch {
  std::wstring gathered;  // the text of the stream at hand
  std::vector<std::unique_ptr<std::wstringstream>> spare_params;

  std::unique_ptr<std::wstringstream> take_param();  // an empty one
};

// A mark that is filled more than once.
struct ReusableMark {
  CMarkData data;
  MarkScratch scratch;
  std::unique_ptr<ReusableMark> next_idle;

  // Makes `data` as good as new.
  void reset();
};

// The marks of one engine that wait to be filled. A mark whose handler draws a template in turn needs a
// second one meanwhile.
class IdleMarks {
 public:
  // One of them for as long as this lives.
  class Lease {
   public:
    explicit Lease(IdleMarks& owner) : owner_(owner), mark_(owner.take()) {}
    ~Lease() { owner_.give_back(std::move(mark_)); }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    // The mark, empty.
    ReusableMark& fresh() {
      mark_->reset();
      return *mark_;
    }

   private:
    IdleMarks& owner_;
    std::unique_ptr<ReusableMark> mark_;
  };

 private:
  std::unique_ptr<ReusableMark> take();
  void give_back(std::unique_ptr<ReusableMark> mark) noexcept;

  std::unique_ptr<ReusableMark> first_;
};
