// The utility members through their typed interface, on inputs of 16 bytes, 1 KiB and 1 MiB, beside
// OpenSSL's digests and base64 and a plain copy of as many bytes or characters. Rates count input bytes
// for the byte members and characters for the text members. Widths are mapped by the full host's function.
#include <benchmark/benchmark.h>
#include <mirt/mirt.h>
#include <openssl/evp.h>

#include <cstring>
#include <string>
#include <vector>

#include <korlib/comvariant.h>

#include "support/late_bound.h"
#include "support/module.h"

namespace {

IUtility* utility() {
  static const test::Module module;
  static const CComPtr<IUtility> object = module.create<IUtility>(L"Utility");
  return object.get();
}

void sizes(benchmark::internal::Benchmark* each) { each->Arg(16)->Arg(1 << 10)->Arg(1 << 20); }

void count(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * state.range(0)); }

std::vector<std::uint8_t> bytes(const benchmark::State& state) {
  std::vector<std::uint8_t> made(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < made.size(); ++i) made[i] = static_cast<std::uint8_t>(i * 131);
  return made;
}

// English-like text; every `special`-th character is one that encoders replace.
std::wstring text(const benchmark::State& state, std::size_t special = 64) {
  std::wstring made(static_cast<std::size_t>(state.range(0)), L'a');
  for (std::size_t i = special - 1; i < made.size(); i += special) made[i] = L'<';
  return made;
}

// A member from bytes to text.
template <HRESULT (UtilityMembers<IDispatch>::*Member)(VARIANT*, LONG, BSTR*)>
void of_bytes(benchmark::State& state) {
  CComVariant input = test::value_of(bytes(state));
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize((utility()->*Member)(&input, 0, out.put()));
  }
  count(state);
}

// A member from text to text.
template <HRESULT (UtilityMembers<IDispatch>::*Member)(BSTR, BSTR*)>
void of_text(benchmark::State& state) {
  const CComBSTR input(std::wstring_view{text(state)});
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize((utility()->*Member)(input, out.put()));
  }
  count(state);
}

// A decoder, to a byte array, of what its encoder made of as many bytes.
template <HRESULT (UtilityMembers<IDispatch>::*Encode)(VARIANT*, LONG, BSTR*),
          HRESULT (UtilityMembers<IDispatch>::*Decode)(BSTR, LONG, VARIANT*)>
void decoding(benchmark::State& state) {
  CComVariant input = test::value_of(bytes(state));
  CComBSTR encoded;
  (utility()->*Encode)(&input, 0, encoded.put());
  for ([[maybe_unused]] auto _ : state) {
    CComVariant out;
    benchmark::DoNotOptimize((utility()->*Decode)(encoded, -2, &out));
  }
  count(state);
}

void submit_decode(benchmark::State& state) {
  std::wstring submitted = text(state);
  for (std::size_t i = 0; i + 64 < submitted.size(); i += 64) submitted.replace(i, 8, L"&#12354;");
  const CComBSTR input(std::wstring_view{submitted});
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize(utility()->SubmitDecode(input, out.put()));
  }
  count(state);
}

void md5_of_text(benchmark::State& state) {
  CComVariant input(std::wstring_view{text(state)});
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize(utility()->MD5(&input, 0, out.put()));
  }
  count(state);
}

void make_key(benchmark::State& state) {
  const CComBSTR alphabet(L"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize(utility()->MakeKey(static_cast<LONG>(state.range(0)), alphabet, out.put()));
  }
  count(state);
}

void make_guid(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize(utility()->MakeGUID(VARIANT_TRUE, out.put()));
  }
}

// The last of as many values as the range says.
void find_string(benchmark::State& state) {
  std::vector<CComVariant> values;
  for (std::int64_t i = 0; i < state.range(0); ++i) values.emplace_back(std::to_wstring(i).c_str());
  CComVariant list = test::value_of(values);
  CComVariant wanted(values.back());
  for ([[maybe_unused]] auto _ : state) {
    VARIANT_BOOL found = VARIANT_FALSE;
    benchmark::DoNotOptimize(utility()->FindString(&list, &wanted, &found));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Half ASCII, half kana with voiced marks, in the form that the member changes.
template <HRESULT (UtilityMembers<IDispatch>::*Member)(BSTR, BSTR*)>
void of_width(benchmark::State& state, std::wstring_view pattern) {
  std::wstring made;
  while (made.size() < static_cast<std::size_t>(state.range(0))) made += pattern;
  made.resize(static_cast<std::size_t>(state.range(0)));
  const CComBSTR input(std::wstring_view{made});
  for ([[maybe_unused]] auto _ : state) {
    CComBSTR out;
    benchmark::DoNotOptimize((utility()->*Member)(input, out.put()));
  }
  count(state);
}

void han_to_zen(benchmark::State& state) { of_width<&UtilityMembers<IDispatch>::HanToZen>(state, L"half ｶﾞﾊﾟ"); }
void zen_to_han(benchmark::State& state) {
  of_width<&UtilityMembers<IDispatch>::ZenToHan>(state, L"ｆｕｌｌ　ガパアイウ");
}

void sleep_for_nothing(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(utility()->Sleep(0));
}

// By name, as a script's engine calls once it knows the identifier.
void late_bound_trim(benchmark::State& state) {
  CComVariant input(std::wstring_view{text(state)});
  DISPPARAMS params{&input, nullptr, 1, 0};
  for ([[maybe_unused]] auto _ : state) {
    CComVariant out;
    benchmark::DoNotOptimize(utility()->Invoke(50, IID_NULL, 0, DISPATCH_METHOD, &params, &out, nullptr, nullptr));
  }
  count(state);
}

template <const EVP_MD* (*Algorithm)()>
void openssl_digest(benchmark::State& state) {
  const std::vector<std::uint8_t> input = bytes(state);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(EVP_Digest(input.data(), input.size(), digest, &size, Algorithm(), nullptr));
    benchmark::ClobberMemory();
  }
  count(state);
}

// Into bytes, where the members write characters of four.
void openssl_base64_encode(benchmark::State& state) {
  const std::vector<std::uint8_t> input = bytes(state);
  for ([[maybe_unused]] auto _ : state) {
    std::vector<unsigned char> out((input.size() + 2) / 3 * 4 + 1);
    benchmark::DoNotOptimize(EVP_EncodeBlock(out.data(), input.data(), static_cast<int>(input.size())));
    benchmark::ClobberMemory();
  }
  count(state);
}

void openssl_base64_decode(benchmark::State& state) {
  const std::vector<std::uint8_t> input = bytes(state);
  std::vector<unsigned char> encoded((input.size() + 2) / 3 * 4 + 1);
  const int length = EVP_EncodeBlock(encoded.data(), input.data(), static_cast<int>(input.size()));
  for ([[maybe_unused]] auto _ : state) {
    std::vector<unsigned char> out(encoded.size());
    benchmark::DoNotOptimize(EVP_DecodeBlock(out.data(), encoded.data(), length));
    benchmark::ClobberMemory();
  }
  count(state);
}

void copy_bytes(benchmark::State& state) {
  const std::vector<std::uint8_t> input = bytes(state);
  for ([[maybe_unused]] auto _ : state) {
    CComSafeArray out(VT_UI1, static_cast<ULONG>(input.size()));
    std::memcpy(out.data<void>(), input.data(), input.size());
    benchmark::ClobberMemory();
  }
  count(state);
}

void copy_text(benchmark::State& state) {
  const CComBSTR input(std::wstring_view{text(state)});
  for ([[maybe_unused]] auto _ : state) {
    const CComBSTR out(input.view());
    benchmark::DoNotOptimize(out.get());
    benchmark::ClobberMemory();
  }
  count(state);
}

// As many characters as base64 makes of the bytes.
void copy_base64_text(benchmark::State& state) {
  const CComBSTR input(std::wstring_view{std::wstring(static_cast<std::size_t>(state.range(0) + 2) / 3 * 4, L'A')});
  for ([[maybe_unused]] auto _ : state) {
    const CComBSTR out(input.view());
    benchmark::DoNotOptimize(out.get());
    benchmark::ClobberMemory();
  }
  count(state);
}

using Members = UtilityMembers<IDispatch>;

BENCHMARK(copy_bytes)->Apply(sizes);
BENCHMARK(copy_text)->Apply(sizes);
BENCHMARK(copy_base64_text)->Apply(sizes);
BENCHMARK(of_bytes<&Members::MD5>)->Name("MD5")->Apply(sizes);
BENCHMARK(openssl_digest<EVP_md5>)->Name("openssl_md5")->Apply(sizes);
BENCHMARK(of_bytes<&Members::SHA1>)->Name("SHA1")->Apply(sizes);
BENCHMARK(openssl_digest<EVP_sha1>)->Name("openssl_sha1")->Apply(sizes);
BENCHMARK(md5_of_text)->Name("MD5_of_text")->Apply(sizes);
BENCHMARK(of_bytes<&Members::Base64Encode>)->Name("Base64Encode")->Apply(sizes);
BENCHMARK(openssl_base64_encode)->Apply(sizes);
BENCHMARK(decoding<&Members::Base64Encode, &Members::Base64Decode>)->Name("Base64Decode")->Apply(sizes);
BENCHMARK(openssl_base64_decode)->Apply(sizes);
BENCHMARK(of_bytes<&Members::URLEncode>)->Name("URLEncode")->Apply(sizes);
BENCHMARK(decoding<&Members::URLEncode, &Members::URLDecode>)->Name("URLDecode")->Apply(sizes);
BENCHMARK(of_text<&Members::HTMLEncode>)->Name("HTMLEncode")->Apply(sizes);
BENCHMARK(of_text<&Members::Trim>)->Name("Trim")->Apply(sizes);
BENCHMARK(late_bound_trim)->Name("Trim_late_bound")->Apply(sizes);
BENCHMARK(submit_decode)->Name("SubmitDecode")->Apply(sizes);
BENCHMARK(find_string)->Name("FindString")->Arg(1)->Arg(100)->Arg(10'000);
BENCHMARK(make_key)->Name("MakeKey")->Apply(sizes);
BENCHMARK(make_guid)->Name("MakeGUID");
BENCHMARK(sleep_for_nothing)->Name("Sleep");
BENCHMARK(han_to_zen)->Name("HanToZen")->Apply(sizes);
BENCHMARK(zen_to_han)->Name("ZenToHan")->Apply(sizes);

}  // namespace
