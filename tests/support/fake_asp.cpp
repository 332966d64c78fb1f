#include "support/fake_asp.h"

#include <algorithm>

#include <korlib/text.h>

namespace fake {
namespace {

HRESULT give_text(std::wstring_view text, BSTR* out) {
  *out = korlib::new_bstr(text);
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

std::span<const korlib::Member> Response::members() {
  static constexpr korlib::Member table[] = {method<&Response::Write>(L"Write")};
  return table;
}

HRESULT Response::Write(VARIANT text) {
  RETURN_IF_FAILED(calls_->note("Response.Write"));
  if (text.vt != VT_BSTR) return DISP_E_TYPEMISMATCH;
  writes.emplace_back(korlib::view_of(text.bstrVal));
  return S_OK;
}
HRESULT Response::BinaryWrite(VARIANT) { return E_NOTIMPL; }
HRESULT Response::AddHeader(BSTR name, BSTR value) {
  RETURN_IF_FAILED(calls_->note("Response.AddHeader"));
  headers.push_back(std::wstring(korlib::view_of(name)) + L": " + std::wstring(korlib::view_of(value)));
  return S_OK;
}
HRESULT Response::AppendToLog(BSTR text) {
  RETURN_IF_FAILED(calls_->note("Response.AppendToLog"));
  log.emplace_back(korlib::view_of(text));
  return S_OK;
}
HRESULT Response::get_Status(BSTR* text) { return give_text(status, text); }
HRESULT Response::put_Status(BSTR text) {
  RETURN_IF_FAILED(calls_->note("Response.Status"));
  status = korlib::view_of(text);
  return S_OK;
}
HRESULT Response::get_CodePage(LONG* page) {
  *page = 0;
  RETURN_IF_FAILED(calls_->note("Response.CodePage"));
  *page = code_page;
  return S_OK;
}

std::wstring Response::text() const {
  std::wstring all;
  for (const std::wstring& write : writes) all += write;
  return all;
}

std::span<const korlib::Member> Server::members() { return {}; }

HRESULT Server::HTMLEncode(BSTR text, BSTR* encoded) {
  *encoded = nullptr;
  RETURN_IF_FAILED(calls_->note("Server.HTMLEncode"));
  return give_text(L"«" + std::wstring(korlib::view_of(text)) + L"»", encoded);
}

HRESULT Server::URLEncode(BSTR text, BSTR* encoded) {
  *encoded = nullptr;
  RETURN_IF_FAILED(calls_->note("Server.URLEncode"));
  const std::wstring_view wide = korlib::view_of(text);
  std::string bytes(utf32_utf8(wide.data(), wide.size(), nullptr, 0), '\0');
  utf32_utf8(wide.data(), wide.size(), bytes.data(), bytes.size());
  std::wstring out;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte)) {
      out += static_cast<wchar_t>(byte);
    } else if (byte == ' ') {
      out += L'+';
    } else {
      constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
      out += {L'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return give_text(out, encoded);
}

HRESULT Server::MapPath(BSTR, BSTR* physical) {
  *physical = nullptr;
  return E_NOTIMPL;
}
HRESULT Server::CreateObject(BSTR, IDispatch** object) {
  *object = nullptr;
  return E_NOTIMPL;
}

std::span<const korlib::Member> Contents::members() { return {}; }

HRESULT Contents::get_Count(int* count) {
  *count = static_cast<int>(values_->size());
  return S_OK;
}
HRESULT Contents::Remove(VARIANT index) {
  const HRESULT hr = calls_->note("Contents.Remove");
  RETURN_IF_FAILED(hr);
  if (index.vt != VT_BSTR) return DISP_E_TYPEMISMATCH;
  // The value goes after its entry: its last reference may come back here.
  auto node = values_->extract(std::wstring(korlib::view_of(index.bstrVal)));
  return hr;
}
HRESULT Contents::RemoveAll() {
  values_->clear();
  return S_OK;
}

std::span<const korlib::Member> Session::members() { return {}; }

HRESULT Session::get_Value(BSTR name, VARIANT* value) {
  VariantInit(value);
  RETURN_IF_FAILED(calls_->note("Session.Value"));
  const auto found = values_->find(std::wstring(korlib::view_of(name)));
  return found == values_->end() ? S_OK : VariantCopy(value, &found->second);
}
HRESULT Session::put_Value(BSTR name, VARIANT value) {
  RETURN_IF_FAILED(calls_->note("Session.put_Value"));
  (*values_)[std::wstring(korlib::view_of(name))] = value;
  return S_OK;
}
HRESULT Session::putref_Value(BSTR name, VARIANT value) {
  RETURN_IF_FAILED(calls_->note("Session.putref_Value"));
  (*values_)[std::wstring(korlib::view_of(name))] = value;
  return S_OK;
}
HRESULT Session::get_Contents(asp::IVariantDictionary** contents) {
  *contents = nullptr;
  RETURN_IF_FAILED(calls_->note("Session.Contents"));
  *contents = korlib::make<Contents>(calls_, values_).detach();
  return S_OK;
}

std::span<const korlib::Member> Application::members() { return {}; }

HRESULT Application::get_Value(BSTR name, VARIANT* value) {
  VariantInit(value);
  RETURN_IF_FAILED(calls_->note("Application.Value"));
  const auto found = values.find(std::wstring(korlib::view_of(name)));
  return found == values.end() ? S_OK : VariantCopy(value, &found->second);
}

ULONG Context::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}
HRESULT Context::Count(LONG* count) {
  *count = static_cast<LONG>(properties.size());
  return S_OK;
}
HRESULT Context::GetProperty(BSTR name, VARIANT* value) {
  VariantInit(value);
  const std::wstring key(korlib::view_of(name));
  RETURN_IF_FAILED(calls_->note("Context." + std::string(key.begin(), key.end())));
  const auto found = properties.find(key);
  return found == properties.end() ? E_INVALIDARG : VariantCopy(value, &found->second);
}

Asp::Asp()
    : server(korlib::make<Server>(calls)),
      application(korlib::make<Application>(calls)),
      request(korlib::make<Request>(calls)),
      response(korlib::make<Response>(calls)),
      session(korlib::make<Session>(calls)) {
  context.attach(new Context(calls));
  const auto as_value = [](IDispatch* object) { return CComVariant(object); };
  context->properties[L"Server"] = as_value(server.get());
  context->properties[L"Application"] = as_value(application.get());
  context->properties[L"Request"] = as_value(request.get());
  context->properties[L"Response"] = as_value(response.get());
  context->properties[L"Session"] = as_value(session.get());
  request->server_variables->set(L"HTTP_METHOD", {L"GET"});
  request->server_variables->set(L"HTTP_CONTENT_TYPE", {L""});
}

void Asp::post_form() {
  request->server_variables->set(L"HTTP_METHOD", {L"POST"});
  request->server_variables->set(L"HTTP_CONTENT_TYPE", {L"application/x-www-form-urlencoded; charset=UTF-8"});
}

void Asp::without_session() { context->properties.erase(L"Session"); }

}  // namespace fake
