// The parts of the library's source: together they are the body of one function, and see each other's names.
#pragma once

#include <string_view>

namespace zelto::script::vbscript {

extern const std::u16string_view kValuesSource;
extern const std::u16string_view kConversionsSource;
extern const std::u16string_view kTextSource;
extern const std::u16string_view kArithmeticSource;
extern const std::u16string_view kLogicSource;
extern const std::u16string_view kArraysSource;
extern const std::u16string_view kMembersSource;
extern const std::u16string_view kErrorsSource;
extern const std::u16string_view kLifetimesSource;
extern const std::u16string_view kStringsSource;
extern const std::u16string_view kBytesSource;
extern const std::u16string_view kNumbersSource;
extern const std::u16string_view kDatesSource;
extern const std::u16string_view kDateTextSource;
extern const std::u16string_view kFormatsSource;
extern const std::u16string_view kRegExpSource;
extern const std::u16string_view kLibrarySource;

}  // namespace zelto::script::vbscript
