#include "vbscript/words.h"

#include <algorithm>
#include <utility>

#include "base/letter_case.h"

namespace zelto::vbscript {
namespace {

using Entry = std::pair<std::wstring_view, Word>;

// clang-format off
constexpr Entry kWords[] = {
    {L"and", Word::and_}, {L"byref", Word::byref}, {L"byval", Word::byval}, {L"call", Word::call},
    {L"case", Word::case_}, {L"class", Word::class_}, {L"const", Word::const_}, {L"default", Word::default_},
    {L"dim", Word::dim}, {L"do", Word::do_}, {L"each", Word::each}, {L"else", Word::else_},
    {L"elseif", Word::elseif}, {L"empty", Word::empty}, {L"end", Word::end}, {L"eqv", Word::eqv},
    {L"erase", Word::erase}, {L"error", Word::error}, {L"execute", Word::execute}, {L"exit", Word::exit},
    {L"explicit", Word::explicit_}, {L"false", Word::false_}, {L"for", Word::for_}, {L"function", Word::function},
    {L"get", Word::get}, {L"goto", Word::goto_}, {L"if", Word::if_}, {L"imp", Word::imp}, {L"in", Word::in},
    {L"is", Word::is}, {L"let", Word::let}, {L"loop", Word::loop}, {L"me", Word::me}, {L"mod", Word::mod},
    {L"new", Word::new_}, {L"next", Word::next}, {L"not", Word::not_}, {L"nothing", Word::nothing},
    {L"null", Word::null}, {L"on", Word::on}, {L"option", Word::option}, {L"or", Word::or_},
    {L"preserve", Word::preserve}, {L"private", Word::private_}, {L"property", Word::property},
    {L"public", Word::public_}, {L"redim", Word::redim}, {L"rem", Word::rem}, {L"resume", Word::resume},
    {L"select", Word::select}, {L"set", Word::set}, {L"step", Word::step}, {L"stop", Word::stop},
    {L"sub", Word::sub}, {L"then", Word::then}, {L"to", Word::to}, {L"true", Word::true_}, {L"until", Word::until},
    {L"wend", Word::wend}, {L"while", Word::while_}, {L"with", Word::with}, {L"xor", Word::xor_},
};
// clang-format on

static_assert(std::ranges::is_sorted(kWords, {}, &Entry::first));

constexpr std::size_t kLongest = 8;

}  // namespace

Word word_of(std::wstring_view name) {
  if (name.size() > kLongest) return Word::none;
  const std::wstring lowered = base::ascii_lowered(name);
  const auto* const found = std::ranges::lower_bound(kWords, std::wstring_view(lowered), {}, &Entry::first);
  return found != std::end(kWords) && found->first == lowered ? found->second : Word::none;
}

}  // namespace zelto::vbscript
