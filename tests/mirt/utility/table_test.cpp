// The table of calls that every road to the utility members must answer alike (tests/data/utility): here
// late-bound and through the typed interfaces, on both objects. A page runs the same table through the
// script bridge, on the full host.
#include <mirt/mirt.h>
#include <regex.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <type_traits>

#include <korlib/text.h>

#include "mirt/utility/utility_objects.h"

namespace test {
namespace {

using nlohmann::json;

std::wstring wide(const std::string& utf8) {
  std::wstring text(utf8_utf32(utf8.data(), utf8.size(), nullptr, 0), L'\0');
  utf8_utf32(utf8.data(), utf8.size(), text.data(), text.size());
  return text;
}

std::string narrow(std::wstring_view text) {
  std::string utf8(utf32_utf8(text.data(), text.size(), nullptr, 0), '\0');
  utf32_utf8(text.data(), text.size(), utf8.data(), utf8.size());
  return utf8;
}

CComVariant argument(const json& value) {
  if (value.is_null()) return null_value();
  if (value.is_boolean()) return value_of(value.get<bool>());
  if (value.is_number_integer()) return value_of(value.get<int>());
  if (value.is_number()) return value_of(value.get<double>());
  if (value.is_string()) return value_of(wide(value.get<std::string>()));
  if (value.is_object()) return value_of(value.at("bytes").get<std::vector<std::uint8_t>>());
  std::vector<CComVariant> elements;
  for (const json& each : value) elements.push_back(argument(each));
  return value_of(elements);
}

// An answer as the table writes it.
json shown(const Answer& answer) {
  if (FAILED(answer.hr)) {
    char code[9];
    std::snprintf(code, sizeof code, "%08x", static_cast<unsigned>(answer.hr));
    return {{"code", code}};
  }
  if (answer.value.vt == VT_EMPTY) return nullptr;
  if (answer.value.vt == VT_BSTR) return narrow(text_of(answer));
  if (answer.value.vt == VT_BOOL) return answer.value.boolVal == VARIANT_TRUE;
  if (answer.value.vt == (VT_ARRAY | VT_UI1)) return {{"bytes", bytes_of(answer)}};
  return "type " + std::to_string(answer.value.vt);
}

bool matches(const std::string& text, const std::string& pattern) {
  regex_t compiled;
  if (regcomp(&compiled, pattern.c_str(), REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool is_match = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return is_match;
}

bool agrees(const json& given, const json& expected) {
  if (!expected.is_object() || !expected.contains("like")) return given == expected;
  return given.is_string() && matches(given.get<std::string>(), expected["like"].get<std::string>());
}

using Arguments = std::vector<CComVariant>;

// An argument as a typed member takes it; the table gives each in its own type.
template <class Parameter>
Parameter taken(CComVariant& argument) {
  if constexpr (std::is_same_v<Parameter, VARIANT*>) {
    return &argument;
  } else if constexpr (std::is_same_v<Parameter, BSTR>) {
    return argument.bstrVal;
  } else if constexpr (std::is_same_v<Parameter, LONG>) {
    return argument.lVal;
  } else {
    return argument.boolVal;
  }
}

// What a typed member gives, as a script would hold it.
template <class Out>
Answer answer_with(HRESULT hr, Out out) {
  Answer answer;
  answer.hr = hr;
  if (FAILED(hr)) return answer;
  if constexpr (std::is_same_v<Out, VARIANT>) {
    answer.value.attach(&out);
  } else if constexpr (std::is_same_v<Out, BSTR>) {
    answer.value.vt = VT_BSTR;
    answer.value.bstrVal = out;
  } else {
    answer.value = CComVariant(out == VARIANT_TRUE);
  }
  return answer;
}

template <class Object, class First, class Out>
Answer call_member(Object* object, HRESULT (Object::*member)(First, Out*), Arguments& with) {
  Out out{};
  const HRESULT hr = (object->*member)(taken<First>(with.at(0)), &out);
  return answer_with(hr, out);
}

template <class Object, class First, class Second, class Out>
Answer call_member(Object* object, HRESULT (Object::*member)(First, Second, Out*), Arguments& with) {
  Out out{};
  const HRESULT hr = (object->*member)(taken<First>(with.at(0)), taken<Second>(with.at(1)), &out);
  return answer_with(hr, out);
}

template <class Base>
Answer typed(::UtilityMembers<Base>* object, const std::string& name, Arguments& with) {
  using Members = ::UtilityMembers<Base>;
  if (name == "MakeKey") return call_member(object, &Members::MakeKey, with);
  if (name == "MakeGUID") return call_member(object, &Members::MakeGUID, with);
  if (name == "MD5") return call_member(object, &Members::MD5, with);
  if (name == "SHA1") return call_member(object, &Members::SHA1, with);
  if (name == "FindString") return call_member(object, &Members::FindString, with);
  if (name == "HanToZen") return call_member(object, &Members::HanToZen, with);
  if (name == "ZenToHan") return call_member(object, &Members::ZenToHan, with);
  if (name == "SubmitDecode") return call_member(object, &Members::SubmitDecode, with);
  if (name == "Trim") return call_member(object, &Members::Trim, with);
  if (name == "HTMLEncode") return call_member(object, &Members::HTMLEncode, with);
  if (name == "Base64Encode") return call_member(object, &Members::Base64Encode, with);
  if (name == "URLEncode") return call_member(object, &Members::URLEncode, with);
  if (name == "Base64Decode") return call_member(object, &Members::Base64Decode, with);
  if (name == "URLDecode") return call_member(object, &Members::URLDecode, with);
  Answer answer;
  if (name == "Sleep") answer.hr = object->Sleep(with.at(0).lVal);
  return answer;
}

using MembersTable = UtilityMembers;
ON_BOTH_OBJECTS(MembersTable);

// Calls `road` with the name and the arguments of every row that is for this host.
template <class Road>
void expect_all_agree(const Road& road) {
  std::ifstream file(UTILITY_TABLE);
  std::set<std::string> called;
  for (const json& row : json::parse(file)) {
    if (row.value("host", "bare") != "bare") continue;
    Arguments with;
    for (const json& each : row["with"]) with.push_back(argument(each));
    const json given = shown(road(row["call"].get<std::string>(), with));
    EXPECT_TRUE(agrees(given, row["gives"])) << row << " gave " << given;
    called.insert(row["call"]);
  }
  EXPECT_EQ(15u, called.size()) << "some member is not in the table";
}

TEST_P(MembersTable, HoldsLateBound) {
  expect_all_agree([this](const std::string& name, const Arguments& with) {
    Answer answer = invoke(object_.get(), wide(name).c_str(), DISPATCH_METHOD, with);
    EXPECT_EQ(L"", answer.source + answer.description) << name << " fails with its code alone";
    return answer;
  });
}

TEST_P(MembersTable, HoldsThroughTheTypedInterface) {
  CComPtr<IUtility> utility;
  CComPtr<IMirt> mirt;
  ASSERT_TRUE(SUCCEEDED(object_.query(utility.put())) != SUCCEEDED(object_.query(mirt.put())));
  expect_all_agree([&](const std::string& name, Arguments& with) {
    return utility ? typed(utility.get(), name, with) : typed(mirt.get(), name, with);
  });
}

}  // namespace
}  // namespace test
