// What a page keeps from one request to the next: a bag of values and a command key.
//
// The object is stored in the host's Session under the page's Name, so pages of one Name share it. Its count is not
// atomic: the host runs the requests of one session one after the other.
#pragma once

#include <cstdint>
#include <string>

#include <korlib/dictionary.h>
#include <korlib/ptr.h>

namespace page {

// The changing part of a command field's name: six capital letters from a Mersenne Twister that starts at `seed`.
// A name that changes, not a secret.
std::wstring draw_command_key(std::uint32_t seed);

}  // namespace page

// A private interface, asked for by name: QueryInterface with IID_NULL takes *ppv, before it is written,
// as the wanted name (null, empty or "IMirtSession"). The caller clears the slot first.
struct IMirtSession : IUnknown {
  virtual HRESULT get_Bag(IKorLibDictionary** bag) = 0;
  virtual HRESULT GetCommandName(BSTR* name) = 0;
  virtual HRESULT IncrementCommand() = 0;

 protected:
  ~IMirtSession() = default;
};

class CMirtSession final : public IMirtSession {
 public:
  // With a count of one. The bag stays null when the host cannot make a dictionary.
  CMirtSession();
  CMirtSession(const CMirtSession&) = delete;
  CMirtSession& operator=(const CMirtSession&) = delete;

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override;
  ULONG Release() override;
  HRESULT get_Bag(IKorLibDictionary** bag) override;
  HRESULT GetCommandName(BSTR* name) override;
  HRESULT IncrementCommand() override;

 private:
  ~CMirtSession();

  LONGLONG count_ = 1;
  CComPtr<IKorLibDictionary> bag_;
  std::wstring key_;  // drawn with the clock as its seed: two in one millisecond are alike
  LONGLONG counter_ = 0;
};

// Used while a page has no Name or the host no Session: every operation fails with an error that asks for the Name.
class CMirtSessionNull final : public IMirtSession {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  HRESULT get_Bag(IKorLibDictionary** bag) override;
  HRESULT GetCommandName(BSTR* name) override;
  HRESULT IncrementCommand() override;
};

extern KORLIB_API CMirtSessionNull g_oMirtSessionNull;
