// The intrinsic objects of a page, as a component sees them.
//
// The interfaces hold what components call early-bound; what only scripts use (Response.Clear, say) is
// reached late-bound on the same objects. Out-parameters receive new references and new strings.
#pragma once

#include <korlib/dispatch.h>

namespace ZeltoTypeLibrary {

// The values of one name in a request. An omitted index (VT_ERROR) asks for all values, joined with
// ", "; indices start at 1, others are DISP_E_BADINDEX.
struct IStringList : IDispatch {
  virtual HRESULT get_Item(VARIANT index, VARIANT* value) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  virtual HRESULT get__NewEnum(IUnknown** values) = 0;

 protected:
  ~IStringList() = default;
};

// A request collection. get_Item of a name gives an IStringList as VT_DISPATCH; get_Key takes a
// 1-based index. Names keep their letter case and are found in any.
struct IRequestDictionary : IDispatch {
  virtual HRESULT get_Item(VARIANT key, VARIANT* value) = 0;
  virtual HRESULT get__NewEnum(IUnknown** names) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  virtual HRESULT get_Key(VARIANT index, VARIANT* key) = 0;

 protected:
  ~IRequestDictionary() = default;
};

// The Contents of a session or of the application: names and values of any type. An index is a name or
// a 1-based number.
struct IVariantDictionary : IDispatch {
  virtual HRESULT get_Item(VARIANT index, VARIANT* value) = 0;
  virtual HRESULT put_Item(VARIANT index, VARIANT value) = 0;
  virtual HRESULT putref_Item(VARIANT index, VARIANT value) = 0;
  virtual HRESULT get_Key(VARIANT index, VARIANT* key) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  virtual HRESULT get__NewEnum(IUnknown** names) = 0;
  virtual HRESULT Remove(VARIANT index) = 0;
  virtual HRESULT RemoveAll() = 0;

 protected:
  ~IVariantDictionary() = default;
};

struct IRequest : IDispatch {
  // The first of QueryString, Form, Cookies, ClientCertificate, ServerVariables that has the name; an
  // empty IStringList when none has it, so that a field which was not sent reads as nothing.
  virtual HRESULT get_Item(BSTR name, IDispatch** value) = 0;
  virtual HRESULT get_QueryString(IRequestDictionary** values) = 0;
  virtual HRESULT get_Form(IRequestDictionary** values) = 0;
  virtual HRESULT get_ServerVariables(IRequestDictionary** values) = 0;
  virtual HRESULT get_ClientCertificate(IRequestDictionary** values) = 0;
  virtual HRESULT get_Cookies(IRequestDictionary** values) = 0;
  virtual HRESULT get_TotalBytes(LONG* bytes) = 0;
  // Reads up to *count bytes (a VT_I4) of the body into a byte array; the number read goes back in
  // *count. A body over the host's limit is E_FAIL with a count of 0. Excludes Form, and Form it. A body
  // that was read to its end is VT_NULL with a count of 0, so that a component which kept what it read
  // before goes on with that.
  virtual HRESULT BinaryRead(VARIANT* count, VARIANT* data) = 0;

 protected:
  ~IRequest() = default;
};

struct IResponse : IDispatch {
  virtual HRESULT Write(VARIANT text) = 0;
  virtual HRESULT BinaryWrite(VARIANT bytes) = 0;
  virtual HRESULT AddHeader(BSTR name, BSTR value) = 0;
  virtual HRESULT AppendToLog(BSTR text) = 0;
  virtual HRESULT get_Status(BSTR* status) = 0;
  virtual HRESULT put_Status(BSTR status) = 0;
  virtual HRESULT get_CodePage(LONG* code_page) = 0;

 protected:
  ~IResponse() = default;
};

struct IServer : IDispatch {
  virtual HRESULT HTMLEncode(BSTR text, BSTR* encoded) = 0;
  virtual HRESULT URLEncode(BSTR text, BSTR* encoded) = 0;
  virtual HRESULT MapPath(BSTR path, BSTR* physical) = 0;
  virtual HRESULT CreateObject(BSTR prog_id, IDispatch** object) = 0;

 protected:
  ~IServer() = default;
};

// A value that is missing reads as VT_EMPTY. Values keep their type: a VT_UNKNOWN stored is a
// VT_UNKNOWN read. put_Value stores an object's default value, putref_Value the object.
struct ISessionObject : IDispatch {
  virtual HRESULT get_SessionID(BSTR* id) = 0;
  virtual HRESULT get_Value(BSTR name, VARIANT* value) = 0;
  virtual HRESULT put_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT putref_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT get_Timeout(LONG* minutes) = 0;
  virtual HRESULT put_Timeout(LONG minutes) = 0;
  virtual HRESULT Abandon() = 0;
  virtual HRESULT get_Contents(IVariantDictionary** contents) = 0;

 protected:
  ~ISessionObject() = default;
};

struct IApplicationObject : IDispatch {
  virtual HRESULT get_Value(BSTR name, VARIANT* value) = 0;
  virtual HRESULT put_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT putref_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT Lock() = 0;
  virtual HRESULT UnLock() = 0;
  virtual HRESULT get_Contents(IVariantDictionary** contents) = 0;

 protected:
  ~IApplicationObject() = default;
};

}  // namespace ZeltoTypeLibrary

KORLIB_IID(ZeltoTypeLibrary::IStringList, "A35DF1C9-7B4E-47FA-9297-29120D0A9BD1");
KORLIB_IID(ZeltoTypeLibrary::IRequestDictionary, "E670D265-7416-45F8-9956-C78778556E7A");
KORLIB_IID(ZeltoTypeLibrary::IVariantDictionary, "BABD6FD4-CF89-4A65-A5EB-37A7175F5482");
KORLIB_IID(ZeltoTypeLibrary::IRequest, "67E5EF05-510A-4947-A06B-BB0D1C555D0A");
KORLIB_IID(ZeltoTypeLibrary::IResponse, "1D377C41-6D61-487E-9153-EACCE11BA598");
KORLIB_IID(ZeltoTypeLibrary::IServer, "9F9CE2AE-2FB1-4D5B-8E49-6BC905B050F1");
KORLIB_IID(ZeltoTypeLibrary::ISessionObject, "45514D80-FA82-4196-9F59-F11C5755B0D8");
KORLIB_IID(ZeltoTypeLibrary::IApplicationObject, "DFE1C87D-F04B-455C-9E9B-1D2A26C3E1C4");
