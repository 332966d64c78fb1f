#include "page/mirt_session.h"

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_int.hpp>
#include <boost/random/variate_generator.hpp>
#include <cwchar>

#include <korlib/bstr.h>
#include <korlib/winapi.h>

#include "frame/error.h"
#include "frame/globals.h"
#include "page/dictionaries.h"
#include "page/text.h"

namespace {

// Whether a QueryInterface means the private interface (or plain IUnknown). Reads *ppv.
bool is_accepted(REFIID riid, void* const* ppv) {
  if (riid == IID_IUnknown) return true;
  if (riid != IID_NULL) return false;
  const auto* name = static_cast<const wchar_t*>(*ppv);
  return !name || !*name || std::wcscmp(name, L"IMirtSession") == 0;
}

HRESULT query(IMirtSession* session, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  const bool accepted = is_accepted(riid, ppv);
  *ppv = accepted ? session : nullptr;
  if (!accepted) return E_NOINTERFACE;
  session->AddRef();
  return S_OK;
}

std::wstring next_key() { return page::draw_command_key(static_cast<std::uint32_t>(GetTickCount())); }

}  // namespace

std::wstring page::draw_command_key(std::uint32_t seed) {
  constexpr wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr std::size_t kLength = 6;
  boost::variate_generator<boost::mt19937, boost::uniform_int<int>> draw(boost::mt19937(seed),
                                                                         boost::uniform_int<int>(0, 25));
  std::wstring key;
  for (std::size_t i = 0; i < kLength; ++i) key += kLetters[draw()];
  return key;
}

CMirtSession::CMirtSession() : key_(next_key()) {
  InterlockedIncrement(&g_nRefCount);
  if (!mirt::succeeded_or_forgotten(page::new_dictionary(bag_.put()))) bag_.reset();
}

CMirtSession::~CMirtSession() {
  bag_.reset();
  InterlockedDecrement(&g_nRefCount);
}

HRESULT CMirtSession::QueryInterface(REFIID riid, void** ppv) { return query(this, riid, ppv); }

ULONG CMirtSession::AddRef() { return static_cast<ULONG>(++count_); }

ULONG CMirtSession::Release() {
  const LONGLONG left = --count_;
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

HRESULT CMirtSession::get_Bag(IKorLibDictionary** bag) { return bag_.copy_to(bag); }

HRESULT CMirtSession::GetCommandName(BSTR* name) {
  return mirt::guarded(name, [&] {
    *name = page::join({key_, std::to_wstring(counter_)}).detach();
    return *name ? S_OK : E_OUTOFMEMORY;
  });
}

HRESULT CMirtSession::IncrementCommand() {
  return mirt::guarded([&] {
    key_ = next_key();
    ++counter_;
    return S_OK;
  });
}

HRESULT CMirtSessionNull::QueryInterface(REFIID riid, void** ppv) { return query(this, riid, ppv); }

HRESULT CMirtSessionNull::get_Bag(IKorLibDictionary** bag) {
  if (bag) *bag = nullptr;
  return page::raise({L"Could not get Bag. Please specify property 'Name'."});
}

HRESULT CMirtSessionNull::GetCommandName(BSTR* name) {
  if (name) *name = nullptr;
  return page::raise({L"Could not get Command Name. Please specify property 'Name'."});
}

HRESULT CMirtSessionNull::IncrementCommand() {
  return page::raise({L"Could not increment Command. Please specify property 'Name'."});
}
