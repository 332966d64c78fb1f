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
  // `length` characters drawn from `alphabet`, from a generator seeded with the clock: an identifier, not a
  // secret. A negative length or an empty alphabet is E_INVALIDARG.
  virtual HRESULT MakeKey(LONG length, BSTR alphabet, BSTR* key) = 0;
  // A random identifier: "{XXXXXXXX-…}" with braces and dashes, or the bare 32 digits when `bare` is
  // VARIANT_TRUE.
  virtual HRESULT MakeGUID(VARIANT_BOOL bare, BSTR* guid) = 0;
  // Keeps the calling thread, and with it the request, waiting.
  virtual HRESULT Sleep(LONG milliseconds) = 0;
  // The digest of the input's bytes in lower-case hexadecimal: MD5 (RFC 1321), SHA-1 (FIPS 180). An input that
  // is neither text nor a byte array is E_INVALIDARG.
  virtual HRESULT MD5(VARIANT* input, LONG charset, BSTR* hex) = 0;
  virtual HRESULT SHA1(VARIANT* input, LONG charset, BSTR* hex) = 0;
  // Whether two values, or arrays of values, have an element in common, compared as text, letter case included.
  // A value without a text form is its conversion's failure; *found then tells what was found before it.
  virtual HRESULT FindString(VARIANT* list, VARIANT* wanted, VARIANT_BOOL* found) = 0;
  // Between half-width and full-width forms, as the host maps them; E_FAIL on a host that cannot.
  virtual HRESULT HanToZen(BSTR text, BSTR* wide) = 0;
  virtual HRESULT ZenToHan(BSTR text, BSTR* narrow) = 0;
  // Turns "&#number;" and "&#xnumber;" back into the characters that a browser could not send otherwise. The
  // result ends at the first character 0.
  virtual HRESULT SubmitDecode(BSTR text, BSTR* decoded) = 0;
  // Without the blanks (also U+3000), tabs and line ends at both ends; null when nothing remains.
  virtual HRESULT Trim(BSTR text, BSTR* trimmed) = 0;
  // With references for the four characters that HTML reads as markup: the angle brackets, the double quote and
  // the ampersand.
  virtual HRESULT HTMLEncode(BSTR text, BSTR* encoded) = 0;
  // The bytes of the input as base64 (RFC 4648, section 4) on one line, and percent-encoded (RFC 3986): every
  // byte but letters, digits and "-", "_", ".", "~" as "%" and two upper-case digits.
  virtual HRESULT Base64Encode(VARIANT* input, LONG charset, BSTR* encoded) = 0;
  virtual HRESULT URLEncode(VARIANT* input, LONG charset, BSTR* encoded) = 0;  // RFC 3986 percent-encoding
  // Back to text or bytes. What cannot be decoded is E_FAIL: base64 that is empty or unfinished, and in
  // percent-encoding any character that would have been encoded, "+" included.
  virtual HRESULT Base64Decode(BSTR text, LONG charset, VARIANT* decoded) = 0;
  virtual HRESULT URLDecode(BSTR text, LONG charset, VARIANT* decoded) = 0;

 protected:
  ~UtilityMembers() = default;
};

// The utility object, "Mirt.Utility": the members above and nothing else.
struct IUtility : UtilityMembers<IDispatch> {
 protected:
  ~IUtility() = default;
};
KORLIB_IID(IUtility, "1C042E3B-E315-4D29-992F-4851DDF01EF1");

// One uploaded file. The client chose its names: store it under a name of your own. Every property can be read
// again and again; strings are new ones.
struct IFormFile : IDispatch {
  // As the browser sent it, a path perhaps.
  virtual HRESULT get_FileName(BSTR* name) = 0;
  // What stands after its last '\', else its last '/'. It may still hold a '/', or be "..".
  virtual HRESULT get_FileName2(BSTR* name) = 0;
  // What the browser says that it is; empty when it said nothing.
  virtual HRESULT get_ContentType(BSTR* type) = 0;
  // The bytes, as an open binary stream (korlib/adostream.h) positioned at 0 when the request is read; every
  // caller gets the same one. E_FAIL where the host could not make one.
  virtual HRESULT get_Stream(IDispatch** stream) = 0;

 protected:
  ~IFormFile() = default;
};
KORLIB_IID(IFormFile, "B7B7E305-18A2-4190-9BF6-2E7172F8C03A");

// The stand-alone text templator, "Mirt.TextTemplator". A mark names a variable or function of its scripts, or
// a key of their default members; a mark that begins with a blank or a line end is a comment.
//
// A template that is malformed, "Invalid mark order.", fails when the fault is met: what stands before it has
// been drawn.
struct ITextTemplator : IDispatch {
  // Adds a script object; the last one added is asked first. Null is taken and knows no name.
  virtual HRESULT putref_Script(IDispatch* script) = 0;
  // The one added last, null when there is none.
  virtual HRESULT get_Script(IDispatch** script) = 0;
  // Where text goes: a stream in memory at first. A Response, a stream (korlib/adostream.h), a text stream or an
  // IStream does as well; null leaves none; another object is E_INVALIDARG and leaves none as well.
  virtual HRESULT putref_Stream(IUnknown* sink) = 0;
  virtual HRESULT get_Stream(IUnknown** sink) = 0;
  // Draws a file, read each time in that character set. The path is taken as it is.
  virtual HRESULT ProcessTemplateFile(BSTR path, BSTR charset) = 0;
  virtual HRESULT ProcessTemplate(BSTR text) = 0;
  // Writes the text as it is; E_FAIL without an output, as drawing.
  virtual HRESULT Write(BSTR text) = 0;
  // Everything written to the stream so far; nothing is removed. E_FAIL when the output is none.
  virtual HRESULT Flush(BSTR* text) = 0;

 protected:
  ~ITextTemplator() = default;
};
KORLIB_IID(ITextTemplator, "54709AC5-EFD1-4D7E-A2E9-378EBFB3FF17");

// The child templator of a page controller, which NewTemplator makes. It draws with the controller's data: marks
// begin with a character that says where their value comes from, and whether it is encoded.
//
// It does not keep the controller alive: once that is gone, Main is E_FAIL.
struct IMirtedTemplator : IDispatch {
  // As the text templator's. Its scripts are its own: the controller's are not asked.
  virtual HRESULT putref_Script(IDispatch* script) = 0;
  virtual HRESULT get_Script(IDispatch** script) = 0;
  // The page controller, counted.
  virtual HRESULT get_Main(IMirt** main) = 0;
  virtual HRESULT putref_Stream(IUnknown* sink) = 0;
  virtual HRESULT get_Stream(IUnknown** sink) = 0;
  virtual HRESULT ProcessTemplateFile(BSTR path, BSTR charset) = 0;
  virtual HRESULT ProcessTemplate(BSTR text) = 0;
  // Encoded for HTML for any value but VARIANT_FALSE: by the controller where its SelfEncode is set, else by the
  // Server.
  virtual HRESULT Write(BSTR text, VARIANT_BOOL encode) = 0;
  virtual HRESULT Flush(BSTR* text) = 0;

 protected:
  ~IMirtedTemplator() = default;
};
KORLIB_IID(IMirtedTemplator, "FBB21FA5-D144-4303-AA67-323AEE297098");

// The page controller's own members, in the order of their dispatch identifiers.
//
// Strings are copied in and out, null as null. Booleans are true only for VARIANT_TRUE; every other value, 1
// included, is false. Settings may be changed at any time; where a step of Process uses one, the value at that
// moment counts.
struct MirtMembers : IDispatch {
  // The dictionary that outlives the request. Needs a Name and a Session, and Process to have begun.
  virtual HRESULT get_Bag(IDispatch** bag) = 0;
  // As AddScript, and the one added last: untouched when there is none.
  virtual HRESULT putref_Script(IDispatch* script) = 0;
  virtual HRESULT get_Script(IDispatch** script) = 0;
  // The command that the page runs. Taken from the request when empty; a script may choose another until it
  // runs.
  virtual HRESULT put_Command(BSTR value) = 0;
  virtual HRESULT get_Command(BSTR* value) = 0;
  // The template that the page draws, without folder and extension; DefaultTemplate when empty as drawing
  // begins.
  virtual HRESULT put_Template(BSTR value) = 0;
  virtual HRESULT get_Template(BSTR* value) = 0;
  // The folder where template files are, and may be read.
  virtual HRESULT put_TemplateFolder(BSTR value) = 0;
  virtual HRESULT get_TemplateFolder(BSTR* value) = 0;
  // What is put after a template's name, with its dot.
  virtual HRESULT put_TemplateExt(BSTR value) = 0;
  virtual HRESULT get_TemplateExt(BSTR* value) = 0;
  // The character set of template files, "UTF-8" at first.
  virtual HRESULT put_TemplateCharset(BSTR value) = 0;
  virtual HRESULT get_TemplateCharset(BSTR* value) = 0;
  // What is drawn when no Template is set.
  virtual HRESULT put_DefaultTemplate(BSTR value) = 0;
  virtual HRESULT get_DefaultTemplate(BSTR* value) = 0;
  // The folder from which files may be read, in place of TemplateFolder.
  virtual HRESULT put_TemplatePermissionPath(BSTR value) = 0;
  virtual HRESULT get_TemplatePermissionPath(BSTR* value) = 0;
  // The request field of the command, "c" at first.
  virtual HRESULT put_CommandName(BSTR value) = 0;
  virtual HRESULT get_CommandName(BSTR* value) = 0;
  // Where the page is drawn: the Response at first. A stream, a text stream or an IStream does as well; another
  // object is E_INVALIDARG and leaves no output.
  virtual HRESULT putref_Output(IUnknown* sink) = 0;
  virtual HRESULT get_Output(IUnknown** sink) = 0;
  // The dictionaries of one run, made when Process begins and dropped when it ends: what templates show, and
  // what is the scripts' own. Outside Process View is E_FAIL and null, Include S_OK and null.
  virtual HRESULT get_View(IDispatch** view) = 0;
  virtual HRESULT get_Include(IDispatch** include) = 0;
  // The submitted fields: of the form for a POST of one, of the query string otherwise.
  virtual HRESULT get_Request(IDispatch** request) = 0;
  // What the page's state is kept under in the Session; pages may share it.
  virtual HRESULT put_Name(BSTR value) = 0;
  virtual HRESULT get_Name(BSTR* value) = 0;
  // True at first. False: the command comes in a field whose name changes with every command, so that a page
  // from the browser's history cannot repeat one.
  virtual HRESULT put_Backable(VARIANT_BOOL value) = 0;
  virtual HRESULT get_Backable(VARIANT_BOOL* value) = 0;
  // A mark's value without a text form draws nothing, where it would fail otherwise. False at first.
  virtual HRESULT put_NullIsEmpty(VARIANT_BOOL value) = 0;
  virtual HRESULT get_NullIsEmpty(VARIANT_BOOL* value) = 0;
  // Fields are passed through SubmitDecode as they are copied. False at first.
  virtual HRESULT put_SubmitDecodeOnPutInto(VARIANT_BOOL value) = 0;
  virtual HRESULT get_SubmitDecodeOnPutInto(VARIANT_BOOL* value) = 0;
  // Parsed templates are kept for all pages of the process until their file changes. True at first.
  virtual HRESULT put_CacheTemplate(VARIANT_BOOL value) = 0;
  virtual HRESULT get_CacheTemplate(VARIANT_BOOL* value) = 0;
  // Encode with HTMLEncode above, not with the Server's. False at first.
  virtual HRESULT put_SelfEncode(VARIANT_BOOL value) = 0;
  virtual HRESULT get_SelfEncode(VARIANT_BOOL* value) = 0;
  // Adds an object whose members are the page's functions and variables; it is held until the controller goes.
  // The one added last is asked first.
  virtual HRESULT AddScript(IDispatch* script) = 0;
  // Copy the named request field, or every field when the name is empty, to the Bag, the View or the script's
  // variables. `as_array` keeps a named field's values apart.
  virtual HRESULT PutIntoBag(BSTR name, VARIANT_BOOL as_array) = 0;
  virtual HRESULT PutIntoView(BSTR name, VARIANT_BOOL as_array) = 0;
  virtual HRESULT PutIntoProp(BSTR name, VARIANT_BOOL as_array) = 0;
  // Writes to the output, encoded for HTML for any value but VARIANT_FALSE.
  virtual HRESULT Write(BSTR text, VARIANT_BOOL encode) = 0;
  // Gives up what is kept under Name; the Session stays. E_FAIL where the page has no Session.
  virtual HRESULT Abandon() = 0;
  // "[first:second]" to the host's log.
  virtual HRESULT AddLog(BSTR first, BSTR second) = 0;
  // Calls a function of the script with (controller, argument by reference). *exists tells whether there is
  // one, also when it fails; without one *result stays as it is.
  virtual HRESULT FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) = 0;
  // Keeps a copy under the key, after those that are there, for the message drawers.
  virtual HRESULT AddMessage(VARIANT* message, BSTR key) = 0;
  // Whether there is a message. A VT_BSTR asks for one key, a VT_ERROR (the argument omitted) for any; others
  // are E_INVALIDARG.
  virtual HRESULT MessageExists(VARIANT* key, VARIANT_BOOL* exists) = 0;
  // Draws the text; no event of the lifecycle is fired.
  virtual HRESULT ProcessTemplate(BSTR text) = 0;
  // Runs the page: start, command, drawing, end, each with the script functions of that name. The first failure
  // ends it and is answered.
  virtual HRESULT Process() = 0;
  // The values of a request field as a new array of variants. One that cannot be read stays empty; a list that
  // cannot be counted is S_OK and leaves *array as it is.
  virtual HRESULT ToArray(IDispatch* collection, SAFEARRAY** array) = 0;
  // The beginning of a link that runs the command, "?field=command&", and a further part of it, "name=value&";
  // URL-encoded by the Server.
  virtual HRESULT ToCommand(BSTR command, BSTR* link) = 0;
  virtual HRESULT ToParameter(BSTR name, BSTR value, BSTR* parameter) = 0;
  // Sets status and Location; the page goes on.
  virtual HRESULT Redirect(BSTR url) = 0;
  // Draws a file: one beside the file that is being drawn, or in TemplateFolder.
  virtual HRESULT DrawTemplate(BSTR name) = 0;
  // A database command with connection, text and type set (korlib/dbcommand.h).
  virtual HRESULT NewADOCommand(VARIANT* connection, BSTR text, LONG type, IDispatch** command) = 0;
  // A child templator, for rows and other parts of the page. `prefix` begins the names of its draw functions.
  virtual HRESULT NewTemplator(BSTR prefix, IMirtedTemplator** templator) = 0;
  // Not implemented: E_NOTIMPL.
  virtual HRESULT NewMail(BSTR server, LONG port, IDispatch** mail) = 0;

 protected:
  ~MirtMembers() = default;
};

// The page controller, "Mirt": one for each page that is run, bound to the request in which it is made.
struct IMirt : UtilityMembers<MirtMembers> {
 protected:
  ~IMirt() = default;
};
KORLIB_IID(IMirt, "A3B7006E-AE12-46B5-A908-98133BA64CF1");

// The identifiers, exported by the module. The other two interfaces have no class that can be asked for.
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
