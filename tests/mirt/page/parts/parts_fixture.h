// What the parts of a page controller take from it, without one: an engine that draws into a text, a script, and the
// objects of a request.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include <korlib/dictionary.h>

#include "frame/intrinsics.h"
#include "frame/script_event.h"
#include "mirt/templator/engine.h"
#include "support/fake.h"
#include "support/fake_asp.h"

namespace test {

// Parameters of a mark.
class Params {
 public:
  Params(std::initializer_list<std::wstring> texts);
  Params(const Params&) = delete;
  Params& operator=(const Params&) = delete;
  operator const MarkParams&() const { return params_; }

 private:
  std::vector<std::unique_ptr<std::wstringstream>> streams_;
  MarkParams params_;
};

class PartsTest : public testing::Test {
 protected:
  PartsTest();
  void TearDown() override;

  // What the engine has drawn since the last call. A mark draws itself in pointed brackets, unless a test says
  // otherwise.
  std::wstring drawn();

  fake::Asp fakes_;
  mirt::Intrinsics asp_;  // the fakes
  CComPtr<FakeScript> script_ = FakeScript::make();
  CEventHandler scripts_;  // the one
  Engine engine_;

 private:
  CComPtr<RecordingSink> sink_ = RecordingSink::make(kTextStream);
};

// A dictionary of the host, and what one holds under a key; "(none)" for nothing, "(no text)" for no text.
CComPtr<IKorLibDictionary> new_dictionary();
std::wstring item(IKorLibDictionary* dictionary, const std::wstring& key);
void set_item(IKorLibDictionary* dictionary, const std::wstring& key, const CComVariant& value);

}  // namespace test
