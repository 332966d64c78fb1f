#include "mirt/page/parts/parts_fixture.h"

#include "page/dictionaries.h"

namespace test {

Params::Params(std::initializer_list<std::wstring> texts) {
  for (const std::wstring& text : texts) {
    params_.push_back(streams_.emplace_back(std::make_unique<std::wstringstream>(text)).get());
  }
}

PartsTest::PartsTest() {
  asp_.server = fakes_.server.get();
  asp_.application = fakes_.application.get();
  asp_.session = fakes_.session.get();
  asp_.request = fakes_.request.get();
  asp_.response = fakes_.response.get();
  scripts_.add(script_.get());
  EXPECT_EQ(S_OK, engine_.putref_Output(sink_->unknown()));
}

void PartsTest::TearDown() {
  script_->forget_calls();
  take_error();
}

std::wstring PartsTest::drawn() {
  std::wstring text = sink_->text();
  sink_->outputs.clear();
  return text;
}

CComPtr<IKorLibDictionary> new_dictionary() {
  CComPtr<IKorLibDictionary> made;
  EXPECT_EQ(S_OK, page::new_dictionary(made.put()));
  return made;
}

std::wstring item(IKorLibDictionary* dictionary, const std::wstring& key) {
  const CComBSTR name{std::wstring_view(key)};
  VARIANT_BOOL exists = VARIANT_FALSE;
  EXPECT_EQ(S_OK, dictionary->Exists(korlib::borrowed(name.get()), &exists));
  if (!exists) return L"(none)";
  CComVariant value;
  EXPECT_EQ(S_OK, dictionary->get_Item(korlib::borrowed(name.get()), &value));
  return value.vt == VT_BSTR ? std::wstring(korlib::view_of(value.bstrVal)) : L"(no text)";
}

void set_item(IKorLibDictionary* dictionary, const std::wstring& key, const CComVariant& value) {
  const CComBSTR name{std::wstring_view(key)};
  EXPECT_EQ(S_OK, dictionary->put_Item(korlib::borrowed(name.get()), value));
}

}  // namespace test
