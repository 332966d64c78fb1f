#include "zelto/intrinsics/request_fixture.h"

namespace {

using namespace test;

class RequestBody : public RequestTest {};

TEST_F(RequestBody, ReadsTheBodyInPieces) {
  post_form("abcdef");
  EXPECT_EQ(6, get(request_object().get(), L"TotalBytes").value.lVal);
  const auto object = request_object();
  CComVariant count(LONG{4});
  CComVariant data;
  EXPECT_EQ(S_OK, object->BinaryRead(&count, &data));
  EXPECT_EQ(4, count.lVal);
  EXPECT_EQ((std::vector<std::uint8_t>{'a', 'b', 'c', 'd'}), bytes_of({S_OK, data, {}, {}}));
  EXPECT_EQ(S_OK, object->BinaryRead(&count, data.put()));
  EXPECT_EQ(2, count.lVal);
  EXPECT_EQ((std::vector<std::uint8_t>{'e', 'f'}), bytes_of({S_OK, data, {}, {}}));
  EXPECT_EQ(S_OK, object->BinaryRead(&count, data.put()));
  EXPECT_EQ(0, count.lVal);
  EXPECT_EQ(VT_NULL, data.vt);
}

// A component that kept what it read before is told that there is no body any more; a script reads on and
// finds no bytes.
TEST_F(RequestBody, GivesNullForABodyThatIsSpentToComponentsOnly) {
  post_form("");
  const auto object = request_object();
  CComVariant count(LONG{9});
  CComVariant data;
  EXPECT_EQ(S_OK, object->BinaryRead(&count, &data));
  EXPECT_EQ(VT_ARRAY | VT_UI1, data.vt) << "an empty body was not read before";
  for (int i = 0; i < 2; ++i) {
    const Answer of_script = call(object.get(), L"BinaryRead", 9);
    EXPECT_EQ(VT_ARRAY | VT_UI1, of_script.value.vt);
    EXPECT_EQ(0u, bytes_of(of_script).size());
    count = CComVariant(LONG{9});
    EXPECT_EQ(S_OK, object->BinaryRead(&count, data.put()));
    EXPECT_EQ(VT_NULL, data.vt);
    EXPECT_EQ(0, count.lVal);
  }
}

TEST_F(RequestBody, HandsAWholeBodyOverWithoutACopy) {
  post_form("abcdef");
  const void* const received = std::string_view(request.body).data();
  const auto object = request_object();
  CComVariant count(LONG{6});
  CComVariant data;
  ASSERT_EQ(S_OK, object->BinaryRead(&count, &data));
  EXPECT_EQ(6, count.lVal);
  EXPECT_EQ(received, data.parray->pvData);
  EXPECT_EQ((std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'}), bytes_of({S_OK, data, {}, {}}));
  EXPECT_EQ(6, get(object.get(), L"TotalBytes").value.lVal) << "read or not";
  EXPECT_EQ(L"6", text(L"ServerVariables", L"CONTENT_LENGTH"));
  CComVariant more;
  EXPECT_EQ(S_OK, object->BinaryRead(&count, &more));
  EXPECT_EQ(0, count.lVal);
  EXPECT_EQ(VT_NULL, more.vt);
}

TEST_F(RequestBody, ReadsAnEmptyBodyAsAnEmptyArray) {
  CComVariant count(LONG{6});
  CComVariant data;
  EXPECT_EQ(S_OK, request_object()->BinaryRead(&count, &data));
  EXPECT_EQ(0, count.lVal);
  EXPECT_EQ(VT_ARRAY | VT_UI1, data.vt);
  EXPECT_EQ(0u, bytes_of({S_OK, data, {}, {}}).size());
}

TEST_F(RequestBody, WritesTheCountReadBackThroughAReference) {
  post_form("abc");
  LONG wanted = 10;
  VARIANT count{};
  count.vt = VT_BYREF | VT_I4;
  count.plVal = &wanted;
  CComVariant data;
  EXPECT_EQ(S_OK, request_object()->BinaryRead(&count, &data));
  EXPECT_EQ(3, wanted);
  EXPECT_EQ(VT_BYREF | VT_I4, count.vt);
}

TEST_F(RequestBody, ExcludesTheFormAfterBinaryRead) {
  post_form("a=1");
  EXPECT_EQ(S_OK, call(request_object().get(), L"BinaryRead", 1).hr);
  const Answer answer = get(collection(L"Form"), L"Item", L"a");
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"Form cannot be used after BinaryRead.", answer.description);
  EXPECT_EQ(VT_EMPTY, get(request_object().get(), L"Item", L"a").value.vt);
}

TEST_F(RequestBody, ExcludesBinaryReadAfterTheForm) {
  post_form("a=1");
  EXPECT_EQ(L"1", text(L"Form", L"a"));
  const Answer answer = call(request_object().get(), L"BinaryRead", 1);
  EXPECT_EQ(E_FAIL, answer.hr);
  EXPECT_EQ(L"BinaryRead cannot be used after Form.", answer.description);
}

TEST_F(RequestBody, LeavesTheBodyAloneWhenANameIsSearchedAndItIsNoForm) {
  post_form("a=1");
  request.headers.back().value = "multipart/form-data; boundary=x";
  EXPECT_EQ(VT_EMPTY, get(request_object().get(), L"Item", L"a").value.vt);
  EXPECT_EQ(S_OK, call(request_object().get(), L"BinaryRead", 3).hr);
}

TEST_F(RequestBody, RefusesABodyOverTheLimitWithACountOfZero) {
  request.method = "POST";
  request.body_too_large = true;
  request.body_length = 5000;
  EXPECT_EQ(5000, get(request_object().get(), L"TotalBytes").value.lVal);
  CComVariant count(LONG{5000});
  CComVariant data(L"poison");
  EXPECT_EQ(E_FAIL, request_object()->BinaryRead(&count, data.put()));
  EXPECT_EQ(VT_I4, count.vt);
  EXPECT_EQ(0, count.lVal);
  EXPECT_EQ(VT_EMPTY, data.vt);
}

TEST_F(RequestBody, RefusesANegativeCount) {
  EXPECT_EQ(E_INVALIDARG, call(request_object().get(), L"BinaryRead", -1).hr);
}

}  // namespace
