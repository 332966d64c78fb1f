// The intrinsic objects of a page, as a component sees them.
//
// The interfaces hold what components call early-bound; what only scripts use (Response.Clear, say) is reached
// late-bound on the same objects. Strings and values that go in are copied; out-parameters receive new
// references and new strings, the caller's to free, and are null or VT_EMPTY after a failure. Failures raise
// words (korlib/errorinfo.h).
//
// All of them belong to one request and the thread that runs it, the application object excepted, which any
// thread may use.
#pragma once

#include <korlib/dispatch.h>

namespace ZeltoTypeLibrary {

// The values of one name in a request, in the order in which they were sent.
struct IStringList : IDispatch {
  // The value at a place, the first being 1; DISP_E_BADINDEX for others. An omitted index (VT_ERROR) asks for
  // all values, joined with ", ", and gives VT_EMPTY when there is none.
  virtual HRESULT get_Item(VARIANT index, VARIANT* value) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  // The values as they are now, as an IEnumVARIANT; E_NOTIMPL and null from a component's own list.
  virtual HRESULT get__NewEnum(IUnknown** values) = 0;

 protected:
  ~IStringList() = default;
};

// A collection of a request: names, and a list of values for each. Names keep their letter case and are found
// in any, except in a component's own form, where letter case counts.
struct IRequestDictionary : IDispatch {
  // The values of a name: an IStringList, or a cookie, as VT_DISPATCH. An omitted key
  // (VT_ERROR) gives the whole text. A component's own form gives VT_EMPTY for a name that it does not have.
  virtual HRESULT get_Item(VARIANT key, VARIANT* value) = 0;
  // The names as they are now, as an IEnumVARIANT.
  virtual HRESULT get__NewEnum(IUnknown** names) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  // The name at a place, the first being 1; DISP_E_BADINDEX for others.
  virtual HRESULT get_Key(VARIANT index, VARIANT* key) = 0;

 protected:
  ~IRequestDictionary() = default;
};

// The Contents of a session or of the application: names and values of any type. An index is a name, in any
// letter case, or a place from 1; DISP_E_BADINDEX where there is none.
struct IVariantDictionary : IDispatch {
  virtual HRESULT get_Item(VARIANT index, VARIANT* value) = 0;
  // Creates or replaces. put_Item stores an object's default value, putref_Item the object.
  virtual HRESULT put_Item(VARIANT index, VARIANT value) = 0;
  virtual HRESULT putref_Item(VARIANT index, VARIANT value) = 0;
  virtual HRESULT get_Key(VARIANT index, VARIANT* key) = 0;
  virtual HRESULT get_Count(int* count) = 0;
  virtual HRESULT get__NewEnum(IUnknown** names) = 0;
  // A missing name is not an error.
  virtual HRESULT Remove(VARIANT index) = 0;
  virtual HRESULT RemoveAll() = 0;

 protected:
  ~IVariantDictionary() = default;
};

// The request that the page answers.
struct IRequest : IDispatch {
  // The first of QueryString, Form, Cookies, ClientCertificate, ServerVariables that has the name; an empty
  // IStringList when none has it, so that a field which was not sent reads as nothing. A body that was read
  // with BinaryRead holds no fields.
  virtual HRESULT get_Item(BSTR name, IDispatch** value) = 0;
  // The collections, made when they are asked for. Form is empty where the body is not one of fields; reading
  // it is an error after BinaryRead, and for a body over the host's limit.
  virtual HRESULT get_QueryString(IRequestDictionary** values) = 0;
  virtual HRESULT get_Form(IRequestDictionary** values) = 0;
  // What is known of the request besides: "CONTENT_LENGTH", "REQUEST_METHOD", "HTTP_…" for its header fields.
  virtual HRESULT get_ServerVariables(IRequestDictionary** values) = 0;
  // Without names: the host asks clients for no certificate.
  virtual HRESULT get_ClientCertificate(IRequestDictionary** values) = 0;
  // The cookies that the browser sent.
  virtual HRESULT get_Cookies(IRequestDictionary** values) = 0;
  // The length of the body. For one that is longer than a LONG can tell: the largest LONG, and the true length
  // in CONTENT_LENGTH.
  virtual HRESULT get_TotalBytes(LONG* bytes) = 0;
  // Reads up to *count bytes (a VT_I4, or a reference to one) of the body into a byte array; the number read
  // goes back in *count. Excludes Form, and Form it.
  //
  // A body over the host's limit is E_FAIL with a count of 0. A body that was read to its end is VT_NULL with a
  // count of 0, so that a component which kept what it read before goes on with that.
  virtual HRESULT BinaryRead(VARIANT* count, VARIANT* data) = 0;

 protected:
  ~IRequest() = default;
};

// What the page answers. Output is collected and sent when the page ends or asks for it; with the first bytes
// sent, status and headers are fixed, and setting them is E_FAIL.
struct IResponse : IDispatch {
  // The text of a value: nothing for VT_EMPTY and VT_NULL, the default value of an object. Nothing is encoded.
  virtual HRESULT Write(VARIANT text) = 0;
  // A byte array, as it stands.
  virtual HRESULT BinaryWrite(VARIANT bytes) = 0;
  // A header field. E_INVALIDARG for a name that is not one, and for control characters in the value. Fields
  // that frame the body (Content-Length …) are the host's and are passed over.
  virtual HRESULT AddHeader(BSTR name, BSTR value) = 0;
  // Adds text to the request's line in the host's log; control characters become blanks.
  virtual HRESULT AppendToLog(BSTR text) = 0;
  // "404 Not Found": a number from 200 to 599 and a text.
  virtual HRESULT get_Status(BSTR* status) = 0;
  virtual HRESULT put_Status(BSTR status) = 0;
  // The Windows code page of the page's text; 65001, which is UTF-8, at first. Uploads are read in it.
  virtual HRESULT get_CodePage(LONG* code_page) = 0;

 protected:
  ~IResponse() = default;
};

// Services of the host to a page.
struct IServer : IDispatch {
  // The text with references for what HTML reads as markup, and for what the page's code page cannot show.
  virtual HRESULT HTMLEncode(BSTR text, BSTR* encoded) = 0;
  // The text's bytes in the page's code page, as a query string carries them: "+" for a blank, "%" and two
  // digits for others.
  virtual HRESULT URLEncode(BSTR text, BSTR* encoded) = 0;
  // The file behind a path of the site: one that begins with "/" or "\\" counts from the site's folder, another
  // from the page's. Whether there is a file is not looked at; a path that leaves the site is E_INVALIDARG.
  virtual HRESULT MapPath(BSTR path, BSTR* physical) = 0;
  // An object of the class with that ProgID or identifier, bound to this request where the class asks for it.
  virtual HRESULT CreateObject(BSTR prog_id, IDispatch** object) = 0;

 protected:
  ~IServer() = default;
};

// What the host keeps for one visitor between requests. Requests of one session never overlap, so that no
// locking is needed; an object that is kept must work on any thread, one at a time.
struct ISessionObject : IDispatch {
  // A text that is the same for all requests of the session. Asking for it keeps the session, and so does
  // storing a value.
  virtual HRESULT get_SessionID(BSTR* id) = 0;
  // A value that is missing reads as VT_EMPTY. Values keep their type: a VT_UNKNOWN stored is a VT_UNKNOWN
  // read. put_Value stores an object's default value, putref_Value the object.
  virtual HRESULT get_Value(BSTR name, VARIANT* value) = 0;
  virtual HRESULT put_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT putref_Value(BSTR name, VARIANT value) = 0;
  // How long a session lives without a request: 1 to 1440 minutes.
  virtual HRESULT get_Timeout(LONG* minutes) = 0;
  virtual HRESULT put_Timeout(LONG minutes) = 0;
  // Ends the session when the request is over; until then its values can be read.
  virtual HRESULT Abandon() = 0;
  // All values as a collection.
  virtual HRESULT get_Contents(IVariantDictionary** contents) = 0;

 protected:
  ~ISessionObject() = default;
};

// What all requests share. Every operation is safe by itself; Lock makes several of them one. Only plain values
// and the host's dictionaries can be stored: an object that belongs to one thread is refused.
struct IApplicationObject : IDispatch {
  // As in the session.
  virtual HRESULT get_Value(BSTR name, VARIANT* value) = 0;
  virtual HRESULT put_Value(BSTR name, VARIANT value) = 0;
  virtual HRESULT putref_Value(BSTR name, VARIANT value) = 0;
  // Keeps other requests from changing the values until UnLock, or until the page ends; reading goes on. A
  // request that waits too long for another's lock is E_FAIL. Locking again what is held does nothing more.
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
