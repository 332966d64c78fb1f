// The component's identifiers and dual interfaces.
//
// Scripts reach these members late-bound, by name; the typed interfaces are the same objects for C++
// callers. Every operation answers an HRESULT; where a member has raised an error with a text, the
// calling thread's error object (korlib/errorinfo.h) holds it.
//
// Ownership: [in] strings and variants stay the caller's; out-parameters receive new strings (freed
// with SysFreeString), new references and new arrays. A failed call leaves them null or VT_EMPTY unless
// the member says otherwise. Objects serve one thread at a time; their reference counts are plain.
#pragma once

#include <korlib/dispatch.h>

struct IMirt;

// The utility members, the same on IUtility and on IMirt.
//
// `charset` chooses how text and bytes relate. Encoders and digests: 0 or greater takes the string as
// UTF-8, a negative one as its raw memory (four little-endian bytes a character); a byte array is taken
// as it stands. Decoders: 0 or greater reads the bytes as UTF-8 text, -2 gives a byte array, any other
// negative value a string whose memory is the bytes.
template <class Base>
struct UtilityMembers : Base {
  // `length` characters drawn from `alphabet`, from a generator seeded with the clock: an identifier,
  // not a secret.
  virtual HRESULT MakeKey(LONG length, BSTR alphabet, BSTR* key) = 0;
  // Braced, or the bare 32 digits when `bare` is VARIANT_TRUE.
  virtual HRESULT MakeGUID(VARIANT_BOOL bare, BSTR* guid) = 0;
  virtual HRESULT Sleep(LONG milliseconds) = 0;
  virtual HRESULT MD5(VARIANT* input, LONG charset, BSTR* hex) = 0;   // RFC 1321, lower-case hexadecimal
  virtual HRESULT SHA1(VARIANT* input, LONG charset, BSTR* hex) = 0;  // FIPS 180, likewise
  // Whether two values, or arrays of values, have an element in common, compared as text.
  virtual HRESULT FindString(VARIANT* list, VARIANT* wanted, VARIANT_BOOL* found) = 0;
  virtual HRESULT HanToZen(BSTR text, BSTR* wide) = 0;
  virtual HRESULT ZenToHan(BSTR text, BSTR* narrow) = 0;
  virtual HRESULT SubmitDecode(BSTR text, BSTR* decoded) = 0;
  virtual HRESULT Trim(BSTR text, BSTR* trimmed) = 0;
  virtual HRESULT HTMLEncode(BSTR text, BSTR* encoded) = 0;
  virtual HRESULT Base64Encode(VARIANT* input, LONG charset, BSTR* encoded) = 0;  // RFC 4648, section 4
  virtual HRESULT URLEncode(VARIANT* input, LONG charset, BSTR* encoded) = 0;     // RFC 3986 percent-encoding
  virtual HRESULT Base64Decode(BSTR text, LONG charset, VARIANT* decoded) = 0;
  virtual HRESULT URLDecode(BSTR text, LONG charset, VARIANT* decoded) = 0;

 protected:
  ~UtilityMembers() = default;
};

struct IUtility : UtilityMembers<IDispatch> {
 protected:
  ~IUtility() = default;
};
KORLIB_IID(IUtility, "1C042E3B-E315-4D29-992F-4851DDF01EF1");

// One uploaded file. The client chose its names: store it under a name of your own.
struct IFormFile : IDispatch {
  virtual HRESULT get_FileName(BSTR* name) = 0;   // as the browser sent it
  virtual HRESULT get_FileName2(BSTR* name) = 0;  // behind its last '\', else its last '/': may still hold a '/'
  virtual HRESULT get_ContentType(BSTR* type) = 0;
  virtual HRESULT get_Stream(IDispatch** stream) = 0;  // the bytes, positioned at 0

 protected:
  ~IFormFile() = default;
};
KORLIB_IID(IFormFile, "B7B7E305-18A2-4190-9BF6-2E7172F8C03A");

// The stand-alone text templator.
struct ITextTemplator : IDispatch {
  virtual HRESULT putref_Script(IDispatch* script) = 0;  // adds; the last one added is asked first
  virtual HRESULT get_Script(IDispatch** script) = 0;
  virtual HRESULT putref_Stream(IUnknown* sink) = 0;
  virtual HRESULT get_Stream(IUnknown** sink) = 0;
  virtual HRESULT ProcessTemplateFile(BSTR path, BSTR charset) = 0;
  virtual HRESULT ProcessTemplate(BSTR text) = 0;
  virtual HRESULT Write(BSTR text) = 0;
  virtual HRESULT Flush(BSTR* text) = 0;  // everything written so far; nothing is removed

 protected:
  ~ITextTemplator() = default;
};
KORLIB_IID(ITextTemplator, "54709AC5-EFD1-4D7E-A2E9-378EBFB3FF17");

// The child templator of a page controller. It does not keep that alive: once it is gone, Main is E_FAIL.
struct IMirtedTemplator : IDispatch {
  virtual HRESULT putref_Script(IDispatch* script) = 0;
  virtual HRESULT get_Script(IDispatch** script) = 0;
  virtual HRESULT get_Main(IMirt** main) = 0;
  virtual HRESULT putref_Stream(IUnknown* sink) = 0;
  virtual HRESULT get_Stream(IUnknown** sink) = 0;
  virtual HRESULT ProcessTemplateFile(BSTR path, BSTR charset) = 0;
  virtual HRESULT ProcessTemplate(BSTR text) = 0;
  virtual HRESULT Write(BSTR text, VARIANT_BOOL encode) = 0;
  virtual HRESULT Flush(BSTR* text) = 0;

 protected:
  ~IMirtedTemplator() = default;
};
KORLIB_IID(IMirtedTemplator, "FBB21FA5-D144-4303-AA67-323AEE297098");

// The page controller's own members, in the order of their dispatch identifiers.
//
// Strings are copied in and out, null as null. Booleans are true only for VARIANT_TRUE; every other
// value, 1 included, is false.
struct MirtMembers : IDispatch {
  // The dictionary that outlives the request. Needs a Name and a Session, and Process to have begun.
  virtual HRESULT get_Bag(IDispatch** bag) = 0;
  virtual HRESULT putref_Script(IDispatch* script) = 0;  // as AddScript
  virtual HRESULT get_Script(IDispatch** script) = 0;    // the one added last; untouched when there is none
  // Taken from the request when empty; a script may choose another until it runs.
  virtual HRESULT put_Command(BSTR value) = 0;
  virtual HRESULT get_Command(BSTR* value) = 0;
  virtual HRESULT put_Template(BSTR value) = 0;  // DefaultTemplate when empty as drawing begins
  virtual HRESULT get_Template(BSTR* value) = 0;
  virtual HRESULT put_TemplateFolder(BSTR value) = 0;  // where template files are, and may be read
  virtual HRESULT get_TemplateFolder(BSTR* value) = 0;
  virtual HRESULT put_TemplateExt(BSTR value) = 0;  // with its dot
  virtual HRESULT get_TemplateExt(BSTR* value) = 0;
  virtual HRESULT put_TemplateCharset(BSTR value) = 0;  // "UTF-8" at first
  virtual HRESULT get_TemplateCharset(BSTR* value) = 0;
  virtual HRESULT put_DefaultTemplate(BSTR value) = 0;
  virtual HRESULT get_DefaultTemplate(BSTR* value) = 0;
  virtual HRESULT put_TemplatePermissionPath(BSTR value) = 0;  // the folder files may be read from instead
  virtual HRESULT get_TemplatePermissionPath(BSTR* value) = 0;
  virtual HRESULT put_CommandName(BSTR value) = 0;  // the request field of the command, "c" at first
  virtual HRESULT get_CommandName(BSTR* value) = 0;
  // The Response at first. A stream, a text stream or an IStream does as well; another object is
  // E_INVALIDARG and leaves no output.
  virtual HRESULT putref_Output(IUnknown* sink) = 0;
  virtual HRESULT get_Output(IUnknown** sink) = 0;
  virtual HRESULT get_View(IDispatch** view) = 0;        // E_FAIL and null outside Process
  virtual HRESULT get_Include(IDispatch** include) = 0;  // S_OK and null outside Process
  // The submitted fields: of the form for a POST of one, of the query string otherwise.
  virtual HRESULT get_Request(IDispatch** request) = 0;
  virtual HRESULT put_Name(BSTR value) = 0;  // what the page's state is kept under; pages may share it
  virtual HRESULT get_Name(BSTR* value) = 0;
  // False: the command comes in a field whose name changes with every command, so that a page from the
  // browser's history cannot repeat one.
  virtual HRESULT put_Backable(VARIANT_BOOL value) = 0;
  virtual HRESULT get_Backable(VARIANT_BOOL* value) = 0;
  virtual HRESULT put_NullIsEmpty(VARIANT_BOOL value) = 0;  // a mark's value without a text draws nothing
  virtual HRESULT get_NullIsEmpty(VARIANT_BOOL* value) = 0;
  virtual HRESULT put_SubmitDecodeOnPutInto(VARIANT_BOOL value) = 0;
  virtual HRESULT get_SubmitDecodeOnPutInto(VARIANT_BOOL* value) = 0;
  virtual HRESULT put_CacheTemplate(VARIANT_BOOL value) = 0;
  virtual HRESULT get_CacheTemplate(VARIANT_BOOL* value) = 0;
  virtual HRESULT put_SelfEncode(VARIANT_BOOL value) = 0;  // encode with HTMLEncode below, not the Server's
  virtual HRESULT get_SelfEncode(VARIANT_BOOL* value) = 0;
  virtual HRESULT AddScript(IDispatch* script) = 0;  // the one added last is asked first
  // Copy the named request field, or every field when the name is empty, to the Bag, the View or the
  // script's variables. `as_array` keeps a named field's values apart.
  virtual HRESULT PutIntoBag(BSTR name, VARIANT_BOOL as_array) = 0;
  virtual HRESULT PutIntoView(BSTR name, VARIANT_BOOL as_array) = 0;
  virtual HRESULT PutIntoProp(BSTR name, VARIANT_BOOL as_array) = 0;
  virtual HRESULT Write(BSTR text, VARIANT_BOOL encode) = 0;  // for HTML, for any value but VARIANT_FALSE
  virtual HRESULT Abandon() = 0;                              // gives up what is kept under Name
  virtual HRESULT AddLog(BSTR first, BSTR second) = 0;        // "[first:second]" to the host's log
  // Calls a function of the script with (controller, argument by reference). *exists tells whether there
  // is one, also when it fails; without one *result stays as it is.
  virtual HRESULT FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) = 0;
  virtual HRESULT AddMessage(VARIANT* message, BSTR key) = 0;  // a copy, for the message drawers
  // A VT_BSTR asks for one key, a VT_ERROR (the argument omitted) for any; others are E_INVALIDARG.
  virtual HRESULT MessageExists(VARIANT* key, VARIANT_BOOL* exists) = 0;
  virtual HRESULT ProcessTemplate(BSTR text) = 0;  // draws the text; no event of the lifecycle is fired
  virtual HRESULT Process() = 0;                   // runs the page
  // The values of a request field. One that cannot be read stays empty; a list that cannot be counted
  // is S_OK and leaves *array as it is.
  virtual HRESULT ToArray(IDispatch* collection, SAFEARRAY** array) = 0;
  virtual HRESULT ToCommand(BSTR command, BSTR* link) = 0;  // "?field=command&", URL-encoded by the Server
  virtual HRESULT ToParameter(BSTR name, BSTR value, BSTR* parameter) = 0;  // "name=value&", likewise
  virtual HRESULT Redirect(BSTR url) = 0;                                   // status and Location; the page goes on
  virtual HRESULT DrawTemplate(BSTR name) = 0;  // a file, beside the one being drawn or in TemplateFolder
  virtual HRESULT NewADOCommand(VARIANT* connection, BSTR text, LONG type, IDispatch** command) = 0;
  // For rows and other parts of the page. `prefix` begins the names of its draw functions.
  virtual HRESULT NewTemplator(BSTR prefix, IMirtedTemplator** templator) = 0;
  virtual HRESULT NewMail(BSTR server, LONG port, IDispatch** mail) = 0;  // not implemented

 protected:
  ~MirtMembers() = default;
};

struct IMirt : UtilityMembers<MirtMembers> {
 protected:
  ~IMirt() = default;
};
KORLIB_IID(IMirt, "A3B7006E-AE12-46B5-A908-98133BA64CF1");

// Exported by the module.
extern "C" {
extern KORLIB_API const CLSID CLSID_Mirt;
extern KORLIB_API const CLSID CLSID_TextTemplator;
extern KORLIB_API const CLSID CLSID_Utility;
extern KORLIB_API const IID IID_IMirt;
extern KORLIB_API const IID IID_IMirtedTemplator;
extern KORLIB_API const IID IID_IFormFile;
extern KORLIB_API const IID IID_ITextTemplator;
extern KORLIB_API const IID IID_IUtility;
}
