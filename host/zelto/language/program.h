// A script in the form that every worker can run.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <korlib/combstr.h>
#include <korlib/types.h>

#include "language/page_scope.h"

namespace zelto::language {

// How a line of the script ends in its source.
enum class LineEnd : unsigned char {
  newline,          // as in the script
  carriage_return,  // alone
  both,             // "\r\n"
  none,             // the piece of script ends, and "%>" or the like follows
};

// Where a line of the script comes from.
struct SourceLine {
  unsigned file = 0;          // index into Program::files
  int line = 0;               // from 1
  int column = 0;             // added to the column within the script's line
  bool is_generated = false;  // all of it stands for what is at that place: generated_lines.h
  bool is_compiled = false;   // it is of another language, and the shifts in it say nothing of its text
  LineEnd end = LineEnd::newline;
};

// A place in a line of the script where its text is not the source's.
struct ColumnShift {
  int line = 0;      // of the script, from 1
  int column = 0;    // in it, in characters from 0
  int inserted = 0;  // characters there that the source does not have
  int removed = 0;   // characters of the source that are not there
};

// A name that a script may also be asked for in other letters.
struct FoldedName {
  std::u16string folded;
  std::u16string name;  // as the program's text has it
};

// Immutable once made; any number of threads may run it at the same time.
struct Program {
  std::string url;  // what the script is called; unique among the programs that one realm runs
  std::u16string text;
  std::vector<std::string> files;
  std::vector<SourceLine> lines;    // of each line of `text`; empty: `url` and the line itself
  std::vector<ColumnShift> shifts;  // in the order of the text
  std::wstring removed;             // what they removed, one after the other, but for lines that are compiled
  std::vector<CComBSTR> literals;   // page text that the script writes by number
  PageScope scope;
  std::vector<FoldedName> folded_names;  // sorted; empty for a script whose names are as they are written
};

// What is put in front of the first line moves what stands in it.
void set_head(std::vector<ColumnShift>& shifts, int length);

// Where the script's author finds what the engine finds at a line and column (from 1; 0 is unknown).
struct SourcePlace {
  std::string file;  // the .asp or included file; empty when unknown
  int line = 0;      // from 1; 0 when unknown
  int column = 0;    // from 1; 0 when unknown
};
SourcePlace source_place(const Program& program, int line, int column);

// A function that was running, and how far it had come.
struct Frame : SourcePlace {
  std::wstring function;  // empty for what stands outside of every function
};

// A mark that failed in a template, or in which a script function failed.
struct TemplatePlace : SourcePlace {
  std::wstring mark;      // as it is written
  std::size_t calls = 0;  // how many of the error's calls were running inside of the mark
};

// What an error comes from, consists of, or speaks of beside its own place.
struct Cause : SourcePlace {
  enum Kind : unsigned char {
    cause,
    part,    // one of several errors that it stands for
    opener,  // a bracket that is still open
  };
  Kind kind = cause;
  std::wstring message;
  std::wstring source;
  std::vector<Frame> calls;  // from that place outwards; nothing when that place says all
  unsigned depth = 0;        // 1 for what the nearest one of depth 0 in front comes from or consists of, and so on
};

// What is wrong with a script, in words, and where in its source.
struct ScriptError : SourcePlace {
  std::wstring message;            // without the kind of error in front, unless the script threw no Error
  std::wstring source;             // whose error it is: that of a component such as "Mirt", or the error's name
  HRESULT number = 0;              // the failing result, or the error's own `number`
  std::vector<Frame> calls = {};   // from that place outwards
  std::size_t more_calls = 0;      // around those
  bool has_lost_calls = false;     // and more that the engine has not kept
  std::vector<Cause> causes = {};  // a tree, each with its own behind it, the nearest first
  std::size_t more_causes = 0;     // that are not among them
  std::vector<TemplatePlace> templates = {};  // that were being drawn, the innermost first
  std::size_t more_templates = 0;             // around those
};

// A program from a piece of script: assignments to calls of automation objects, methods named without
// parentheses and `throw` are rewritten (rewriter.h); lines stay where they are. Syntax errors show when
// it is run.
std::shared_ptr<const Program> compile(std::wstring_view text, std::string url);

}  // namespace zelto::language
