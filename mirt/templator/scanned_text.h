// ScannedText: a text taken apart for streaming, as CTemplate is for replay.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <korlib/combstr.h>

#include "templator/mark_data.h"

struct ScannedText {
  // One of the three; a mark has letters too.
  struct Piece {
    std::wstring_view letters;        // of `text`, written one by one; of a mark, what it is written as
    BSTR delimiter = nullptr;         // an escaped one, or the escape itself, written whole; the engine's
    std::unique_ptr<CMarkData> mark;  // drawn
  };

  std::wstring text;
  std::vector<Piece> pieces;
};
