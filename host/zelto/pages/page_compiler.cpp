#include "pages/page_compiler.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "pages/include_file.h"
#include "pages/page_scanner.h"
#include "pages/page_text.h"
#include "pages/tag_attributes.h"
#include "text/charset.h"

namespace zelto::pages {

namespace {

constexpr std::size_t kMaxIncludes = 10'000;
constexpr std::size_t kMaxNesting = 100;                   // files that are open at the same time
constexpr std::size_t kMaxSize = std::size_t{128} << 20;   // characters of all files, each as often as included
constexpr std::size_t kMaxScript = std::size_t{64} << 20;  // characters

class Compiler {
 public:
  // Includes that are not found fail, or are passed over, which `lacks_includes` receives.
  Compiler(const std::string& root, Language language, bool* lacks_includes = nullptr)
      : root_(root), lacks_includes_(lacks_includes), language_(language) {}

  CompiledPage compile(const std::string& physical, std::wstring* written) {
    add_file({physical, physical}, Piece::include, {});
    page_.has_vbscript = !script_.of(Language::vbscript).text.empty();
    script_.finish(language_, program_);
    program_.url = physical;
    if (written) *written = std::move(script_.of(Language::javascript).text);
    page_.program = std::make_shared<const language::Program>(std::move(program_));
    return std::move(page_);
  }

 private:
  struct Point {
    int line = 0;
    int column = 0;
  };

  struct Place {
    const std::string& file;
    unsigned index;
    LineCounter lines;
  };

  // Adds the file where the script has got to: its pieces, or as the script that it is. `from` is where
  // it is included.
  void add_file(const FileName& name, Piece::Kind as, Point from, std::optional<Language> language = std::nullopt) {
    const std::string& path = name.canonical;
    const bool is_page = open_.empty();
    const std::string& includer = is_page ? path : open_.back();
    if (std::ranges::find(open_, path) != open_.end()) fail_cycle(path, from);
    if (open_.size() > kMaxNesting) {
      throw PageSourceError("Includes are nested more than " + std::to_string(kMaxNesting) + " deep.", includer,
                            from.line, from.column);
    }
    if (!is_page && ++includes_ > kMaxIncludes) {
      throw PageSourceError("The page includes more than " + std::to_string(kMaxIncludes) + " files.", includer,
                            from.line, from.column);
    }
    std::optional<SourceBytes> source = read_source(path);
    if (!source)
      throw PageSourceError("The file \"" + shown(path) + "\" cannot be read.", includer, from.line, from.column);
    if (is_page) code_page_ = code_page_of_source(source->bytes);
    const std::wstring text = decode_source(source->bytes, code_page_);
    if ((size_ += text.size()) > kMaxSize)
      throw PageSourceError("The page is too large.", includer, from.line, from.column);
    watch(name.named, *source);
    const unsigned index = number_of(path);
    open_.push_back(path);
    const Place place{path, index, LineCounter(text)};
    if (as == Piece::script) {
      add_code(text, place, language.value_or(language_));
    } else {
      add_pieces(text, place, is_page);
    }
    open_.pop_back();
  }

  void add_pieces(const std::wstring& text, Place place, bool is_page) {
    std::optional<std::size_t> behind_directive;
    const std::vector<Piece> pieces = scan(text, place);
    if (is_page) find_language(pieces);
    for (Piece piece : pieces) {
      place.lines.move_to(piece.offset);
      switch (piece.kind) {
        case Piece::literal:
          // The line that holds nothing but the directive is not written.
          if (piece.offset == behind_directive) piece.text.remove_prefix(line_end(piece.text));
          add_literal(piece.text, place);
          break;
        case Piece::code:
          add_code(piece.text, place, piece.language.value_or(language_));
          break;
        case Piece::expression:
          add_expression(piece.text, place);
          break;
        case Piece::directive:
          if (behind_directive) fail("A page has one directive only.", place);
          behind_directive = piece.offset + piece.text.size() + 2;
          add_directive(piece.text, place, is_page);
          break;
        case Piece::include:
        case Piece::script:
          if (const auto file = resolve(piece, place)) add_file(*file, piece.kind, point_of(place), piece.language);
          break;
      }
      if (script_.size() > kMaxScript) fail("The page is too large.", place);
    }
  }

  static std::vector<Piece> scan(const std::wstring& text, Place& place) {
    try {
      return scan_page(text);
    } catch (const ScanFault& fault) {
      LineCounter lines(text);
      lines.move_to(fault.offset);
      throw PageSourceError(fault.what, place.file, lines.line(), lines.column() + 1);
    }
  }

  // The pieces in front of the directive are of its language as well.
  void find_language(const std::vector<Piece>& pieces) {
    const auto found = std::ranges::find(pieces, Piece::directive, &Piece::kind);
    if (found == pieces.end()) return;
    try {
      language_ = read_directive(found->text).language.value_or(language_);
    } catch (const std::string&) {
      return;  // said when it is its turn
    }
  }

  // The length of the line end that the text begins with; 0 without one.
  static std::size_t line_end(std::wstring_view text) {
    if (text.starts_with(L"\r\n")) return 2;
    return text.starts_with(L'\n') || text.starts_with(L'\r') ? 1 : 0;
  }

  // `at`: nothing where the text ends.
  static language::LineEnd kind_of_end(std::wstring_view text, std::size_t at) {
    if (at == std::wstring_view::npos) return language::LineEnd::none;
    if (text[at] == L'\n') return language::LineEnd::newline;
    return line_end(text.substr(at)) == 2 ? language::LineEnd::both : language::LineEnd::carriage_return;
  }

  void add_directive(std::wstring_view text, const Place& place, bool is_page) {
    try {
      const Directive directive = read_directive(text);
      if (is_page) page_.directive = directive;
    } catch (const std::string& what) {
      fail(what, place);
    }
  }

  void add_literal(std::wstring_view text, const Place& place) {
    if (text.empty()) return;
    script_.add_html(language_, program_.literals.size(), text, source_line(place));
    program_.literals.emplace_back(text);
  }

  void add_expression(std::wstring_view text, const Place& place) {
    // A semicolon that ends a statement elsewhere is not part of the expression.
    const std::size_t last = text.find_last_not_of(L" \t\r\n\f;");
    if (last == std::wstring_view::npos) fail("<%= %> holds no expression.", place);
    const std::wstring_view behind = text.substr(last + 1);
    script_.begin_out(language_, source_line(place));
    add_code(text.substr(0, last + 1), place, language_);
    script_.end_out(language_, behind, source_line(place));
  }

  // Line by line, so that each line of the script is backed by one line of the page.
  void add_code(std::wstring_view text, const Place& place, Language language) {
    int line = place.lines.line();
    int column = place.lines.column();
    while (true) {
      const std::size_t end = text.find_first_of(L"\r\n");
      script_.add_line(language, text.substr(0, end),
                       {.file = place.index, .line = line, .column = column, .end = kind_of_end(text, end)});
      if (end == std::wstring_view::npos) return;
      text.remove_prefix(end + line_end(text.substr(end)));
      ++line;
      column = 0;
    }
  }

  static language::SourceLine source_line(const Place& place) {
    return {place.index, place.lines.line(), place.lines.column()};
  }

  std::optional<FileName> resolve(const Piece& piece, const Place& place) const {
    try {
      return find_include(root_, place.file, piece);
    } catch (const std::string& what) {
      if (!lacks_includes_) fail(what, place);
      *lacks_includes_ = true;
      return std::nullopt;
    }
  }

  // By the name that the page uses: a symbolic link that leads elsewhere later is a change.
  void watch(const std::string& named, const SourceBytes& source) {
    page_.is_settled &= source.is_settled;
    if (watched_.insert(named).second) page_.files.emplace_back(named, source.stamp);
  }

  unsigned number_of(const std::string& path) {
    const auto [place, is_new] = numbers_.emplace(path, static_cast<unsigned>(program_.files.size()));
    if (is_new) program_.files.push_back(path);
    return place->second;
  }

  [[noreturn]] void fail_cycle(const std::string& path, Point from) const {
    std::string chain;
    for (auto it = std::ranges::find(open_, path); it != open_.end(); ++it) chain += shown(*it) + " includes ";
    throw PageSourceError("An include never ends: " + chain + shown(path) + ".", open_.back(), from.line, from.column);
  }
  [[noreturn]] static void fail(const std::string& what, const Place& place) {
    throw PageSourceError(what, place.file, place.lines.line(), place.lines.column() + 1);
  }
  static Point point_of(const Place& place) { return {place.lines.line(), place.lines.column() + 1}; }
  // A path as the site's author knows it.
  std::string shown(const std::string& path) const {
    return path.starts_with(root_ + "/") ? path.substr(root_.size()) : path;
  }

  const std::string& root_;
  bool* const lacks_includes_;
  Language language_;  // of the page
  PageText script_;
  language::Program program_;
  CompiledPage page_;
  LONG code_page_ = kUtf8CodePage;                     // of every file without a byte-order mark
  std::vector<std::string> open_;                      // the files that are being read, outermost first
  std::unordered_map<std::string, unsigned> numbers_;  // of program_.files
  std::unordered_set<std::string> watched_;            // the names in page_.files
  std::size_t includes_ = 0;
  std::size_t size_ = 0;
};

}  // namespace

CompiledPage compile_page(const std::string& root, const std::string& physical, Language language,
                          std::wstring* written) {
  return Compiler(root, language).compile(physical, written);
}

CompiledPage compile_present_files(const std::string& root, const std::string& physical, Language language,
                                   std::wstring& written, bool& lacks_includes) {
  lacks_includes = false;
  return Compiler(root, language, &lacks_includes).compile(physical, &written);
}

}  // namespace zelto::pages
